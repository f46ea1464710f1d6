#pragma once

#include <cstddef>
#include <memory>

#include "host/posix/large_pages.h"

/// Room for `n` items of a sort, which is about to fill it.
template <class Item>
std::unique_ptr<Item[]> makeSortRoom(std::size_t n) {
    auto room = std::make_unique_for_overwrite<Item[]>(n);
    expectFilling(room.get(), n * sizeof(Item));
    return room;
}
