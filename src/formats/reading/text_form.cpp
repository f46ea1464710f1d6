#include "formats/reading/text_form.h"

#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr std::pair<const char*, char> named[] = {
    {"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"pipe", '|'}, {"\\t", '\t'}};

}  // namespace

ReadingWishes& readingWishes() {
    static ReadingWishes wishes;
    return wishes;
}

char delimiterNamed(const std::string& name) {
    for (const auto& [known, delimiter] : named) {
        if (name == known) return delimiter;
    }
    const bool isUsable = name.size() == 1 && name != "\"" && name != "\n" && name != "\r" &&
                          static_cast<unsigned char>(name[0]) < 0x80;
    if (isUsable) return name[0];
    throw Failure{
        wrongUsage,
        "--delimiter takes comma, semicolon, tab, pipe or one character, not " + inQuotes(name)};
}

std::string delimiterName(char delimiter) {
    for (const auto& [known, own] : named) {
        if (own == delimiter) return known;
    }
    return inQuotes(std::string(1, delimiter));
}

}  // namespace vek::formats
