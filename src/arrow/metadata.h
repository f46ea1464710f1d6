#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The names of what the metadata says, the same for handing over and for taking back.
namespace arrow_key {
inline constexpr std::string_view parameter = "vekdb.parameter:";  // its name stands behind
inline constexpr std::string_view type = "vekdb.type";
inline constexpr std::string_view name = "vekdb.name";
inline constexpr std::string_view tag = "vekdb.tag";
}  // namespace arrow_key

struct ArrowPair {
    std::string key;
    std::string value;
};
using ArrowPairs = std::vector<ArrowPair>;

/// The pairs that the format's bytes mean; null means none. False where their lengths cannot be.
bool decodeMetadata(const char* metadata, ArrowPairs& pairs);

/// The value of the first pair with this key, or null.
const std::string* findPair(const ArrowPairs& pairs, std::string_view key);

/// The pairs as the format writes them: how many, then each text with its length before it, in the
/// machine's own order of bytes. "" for none at all.
std::string encodedMetadata(const ArrowPairs& pairs);
