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

}  // namespace

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
