#include <vekdb/host/keyed_hash.h>

#include <unistd.h>

#include <chrono>
#include <cstring>

namespace {

struct Key {
    std::uint64_t words[3];
};

// Without a source of chance the clock and the place of things in memory have to do.
Key drawKey() noexcept {
    Key key = {};
    if (::getentropy(&key, sizeof key) != 0) {
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        key.words[0] = static_cast<std::uint64_t>(now);
        key.words[1] = reinterpret_cast<std::uintptr_t>(&key);
        key.words[2] = static_cast<std::uint64_t>(::getpid());
    }
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
