#include "host/names.h"

#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/text_util.h>

#include <algorithm>
#include <cstdint>

std::size_t NameHash::operator()(std::string_view name) const {
    constexpr std::size_t atOnce = 64;
    std::uint64_t hash = name.size();
    for (; !name.empty(); name.remove_prefix(std::min(atOnce, name.size()))) {
        char lower[atOnce];
        const std::string_view piece = name.substr(0, atOnce);
        std::transform(piece.begin(), piece.end(), lower, [](char c) { return asciiLower(c); });
        hash = hash * 31 + Quor::keyedHash({lower, piece.size()});
    }
    return static_cast<std::size_t>(hash);
}

bool NameEqual::same(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return asciiLower(x) == asciiLower(y); });
}
