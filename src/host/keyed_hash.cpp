#include <vekdb/host/keyed_hash.h>

#include "host/folded_product.h"
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

std::uint64_t wordAt(const char* at, std::size_t bytes) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, at, bytes);
    return word;
}

}  // namespace

std::uint64_t Quor::keyedHash(std::string_view text) noexcept {
    static const Key key = drawKey();
    std::uint64_t hash = foldedProduct(key.words[0] ^ text.size(), key.words[1]);
    for (; text.size() >= 8; text.remove_prefix(8)) {
        hash = foldedProduct(hash ^ wordAt(text.data(), 8) ^ key.words[2], key.words[1]) +
               key.words[0];
    }
    if (!text.empty()) {
        hash = foldedProduct(hash ^ wordAt(text.data(), text.size()), key.words[2]) + key.words[1];
    }
    return foldedProduct(hash ^ key.words[0], key.words[2]);
}
