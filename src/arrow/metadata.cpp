#include "arrow/metadata.h"

#include <cstdint>
#include <cstring>

namespace {

void appendNumber(std::string& out, std::size_t number) {
    const auto written = static_cast<std::int32_t>(number);
    char bytes[sizeof written];
    std::memcpy(bytes, &written, sizeof written);
    out.append(bytes, sizeof written);
}

void appendText(std::string& out, std::string_view text) {
    appendNumber(out, text.size());
    out += text;
}

std::int32_t takeNumber(const char*& from) {
    std::int32_t number;
    std::memcpy(&number, from, sizeof number);
    from += sizeof number;
    return number;
}

bool takeText(const char*& from, std::string& text) {
    const std::int32_t length = takeNumber(from);
    if (length < 0) return false;
    text.assign(from, static_cast<std::size_t>(length));
    from += length;
    return true;
}

}  // namespace

bool decodeMetadata(const char* metadata, ArrowPairs& pairs) {
    pairs.clear();
    if (metadata == nullptr) return true;
    const std::int32_t count = takeNumber(metadata);
    for (std::int32_t i = 0; i < count; ++i) {
        ArrowPair& pair = pairs.emplace_back();
        if (!takeText(metadata, pair.key) || !takeText(metadata, pair.value)) return false;
    }
    return count >= 0;
}

const std::string* findPair(const ArrowPairs& pairs, std::string_view key) {
    for (const ArrowPair& pair : pairs) {
        if (pair.key == key) return &pair.value;
    }
    return nullptr;
}

std::string encodedMetadata(const ArrowPairs& pairs) {
    std::string out;
    if (pairs.empty()) return out;
    appendNumber(out, pairs.size());
    for (const ArrowPair& pair : pairs) {
        appendText(out, pair.key);
        appendText(out, pair.value);
    }
    return out;
}
