#include <vekdb/host/keyed_hash.h>

#include "host/posix/chance.h"

#include <cstring>
#include <iterator>

namespace {

struct Key {
    std::uint64_t words[3];
};

Key drawKey() noexcept {
    Key key;
    drawByChance(key.words, std::size(key.words));
    for (std::uint64_t& word : key.words) word |= 1;
    return key;
}

// Both halves of the product of 128 bits, so that every bit of a factor counts.
std::uint64_t mix(std::uint64_t a, std::uint64_t b) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

std::uint64_t wordAt(const char* at, std::size_t bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, at, bytes);
    return word;
}

}  // namespace

std::uint64_t Quor::keyedHash(std::string_view text) noexcept {
    static const Key key = drawKey();
    std::uint64_t hash = mix(key.words[0] ^ text.size(), key.words[1]);
    for (; text.size() >= 8; text.remove_prefix(8)) {
        hash = mix(hash ^ wordAt(text.data(), 8) ^ key.words[2], key.words[1]) + key.words[0];
    }
    if (!text.empty()) {
        hash = mix(hash ^ wordAt(text.data(), text.size()), key.words[2]) + key.words[1];
    }
    return mix(hash ^ key.words[0], key.words[2]);
}
