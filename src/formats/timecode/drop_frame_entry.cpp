#include "formats/timecode/drop_frame_entry.h"

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

struct Words {
    const char* drop;
    const char* nonDrop;
};

constexpr Words pairs[] = {
    {"TRUE", "FALSE"}, {"YES", "NO"},        {"ON", "OFF"},
    {"Y", "N"},        {"T", "F"},           {"1", "0"},
    {"DF", "NDF"},     {"DROP", "NON-DROP"}, {"DROP FRAME", "NON-DROP FRAME"}};

const Words* wordsOf(std::string_view value) {
    const auto has = [&](const Words& words) {
        return sameText(value, words.drop) || sameText(value, words.nonDrop);
    };
    const Words* const words = std::find_if(std::begin(pairs), std::end(pairs), has);
    return words == std::end(pairs) ? nullptr : words;
}

bool isSmall(char c) {
    return c >= 'a' && c <= 'z';
}

// "True" and "true" where the old one was written so.
std::string inLettersOf(std::string_view old, std::string text) {
    const bool hasSmallFirst = isSmall(old.front());
    const bool hasSmallLast = isSmall(old.back());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == 0 ? hasSmallFirst : hasSmallLast) text[i] = asciiLower(text[i]);
    }
    return text;
}

}  // namespace

std::optional<bool> saysDropFrame(std::string_view value) {
    const Words* const words = wordsOf(trimmed(value));
    if (words == nullptr) return {};
    return sameText(trimmed(value), words->drop);
}

std::optional<std::string> dropFrameValue(std::string_view old, bool drops) {
    const Words* const words = wordsOf(trimmed(old));
    if (words == nullptr) return {};
    if (saysDropFrame(old) == drops) return std::string(old);
    return inLettersOf(trimmed(old), drops ? words->drop : words->nonDrop);
}

}  // namespace vek::formats
