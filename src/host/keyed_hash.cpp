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

template <class Word>
Word wordAt(const char* at) noexcept {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

std::uint64_t byteAt(const char* at) noexcept {
    return static_cast<unsigned char>(*at);
}

// Fewer than 8 bytes, some perhaps twice: texts of one length that differ give different words.
std::uint64_t fewAt(const char* at, std::size_t bytes) noexcept {
    if (bytes >= 4) {
        return wordAt<std::uint32_t>(at) | std::uint64_t{wordAt<std::uint32_t>(at + bytes - 4)}
                                               << 32;
    }
    return byteAt(at) | byteAt(at + bytes / 2) << 8 | byteAt(at + bytes - 1) << 16;
}

}  // namespace

std::uint64_t Quor::keyedHash(std::string_view text) noexcept {
    static const Key key = drawKey();
    std::uint64_t hash = foldedProduct(key.words[0] ^ text.size(), key.words[1]);
    for (; text.size() >= 8; text.remove_prefix(8)) {
        hash =
            foldedProduct(hash ^ wordAt<std::uint64_t>(text.data()) ^ key.words[2], key.words[1]) +
            key.words[0];
    }
    if (!text.empty()) {
        hash = foldedProduct(hash ^ fewAt(text.data(), text.size()), key.words[2]) + key.words[1];
    }
    return foldedProduct(hash ^ key.words[0], key.words[2]);
}
