#pragma once

#include <cstddef>

#include "host/text_arrival_impl.h"

namespace testing_support {

/// While in scope, files of at least so many bytes come in pieces while they are looked at.
class ArrivalOf {
public:
    explicit ArrivalOf(std::size_t piece, std::size_t leastBytes = 1) {
        TextArrival::Terms::piece = piece;
        TextArrival::Terms::leastBytes = leastBytes;
    }
    ArrivalOf(const ArrivalOf&) = delete;
    ArrivalOf& operator=(const ArrivalOf&) = delete;
    ~ArrivalOf() {
        TextArrival::Terms::piece = piece_;
        TextArrival::Terms::leastBytes = leastBytes_;
    }

private:
    std::size_t piece_ = TextArrival::Terms::piece;
    std::size_t leastBytes_ = TextArrival::Terms::leastBytes;
};

}  // namespace testing_support
