#include <vekdb/host/timecode.h>

#include <vekdb/host/text_util.h>

namespace {

constexpr unsigned kPairs = 4;

bool isSeparator(char c) {
    return c == ':' || c == ';' || c == '.' || c == ',';
}

// The digits of a timecode, two of each pair.
struct Digits {
    char digits[2 * kPairs];
    bool isDropFrame = false;

    const char* pair(unsigned i) const { return digits + 2 * i; }
    bool isBelowSixty(unsigned i) const { return pair(i)[0] < '6'; }
    bool isTime() const { return isBelowSixty(1) && isBelowSixty(2); }
};

bool takePair(std::string_view& rest, char* to) {
    if (rest.size() < 2 || !isAsciiDigit(rest[0]) || !isAsciiDigit(rest[1])) {
        return false;
    }
    to[0] = rest[0];
    to[1] = rest[1];
    rest.remove_prefix(2);
    return true;
}

// Hours may come as one digit.
bool takeHours(std::string_view& rest, char* to) {
    if (rest.size() >= 2 && isAsciiDigit(rest[0]) && isSeparator(rest[1])) {
        to[0] = '0';
        to[1] = rest[0];
        rest.remove_prefix(1);
        return true;
    }
    return takePair(rest, to);
}

// HH:MM:SS:FF; the last separator says whether frames are dropped.
bool parsePunctuated(std::string_view text, Digits& out) {
    if (!takeHours(text, out.digits)) {
        return false;
    }
    for (unsigned i = 1; i < kPairs; ++i) {
        if (text.empty() || !isSeparator(text[0])) {
            return false;
        }
        out.isDropFrame = text[0] == ';';
        text.remove_prefix(1);
        if (!takePair(text, out.digits + 2 * i)) {
            return false;
        }
    }
    return text.empty();
}

// HHMMSSFF, or HHMMSSFF; where frames are dropped.
bool parseCompact(std::string_view text, Digits& out) {
    for (unsigned i = 0; i < kPairs; ++i) {
        if (!takePair(text, out.digits + 2 * i)) {
            return false;
        }
    }
    out.isDropFrame = text == ";";
    return text.empty() || out.isDropFrame;
}

bool parse(std::string_view text, Digits& out) {
    return (parsePunctuated(text, out) || parseCompact(text, out)) && out.isTime();
}

}  // namespace

time_def::time_def(const char* text, label_t label) : text_(text) {
    Digits parsed;
    isTimecode_ = label == label_timecode && parse(text_.view(), parsed);
    isDropFrame_ = parsed.isDropFrame;
}

LightweightString<char> time_def::get_database_str() const {
    char buffer[maxForm];
    return isTimecode_ ? LightweightString<char>(databaseForm(text_.view(), buffer)) : text_;
}

LightweightString<char> time_def::get_punctuated_str() const {
    char buffer[maxForm];
    return isTimecode_ ? LightweightString<char>(punctuatedForm(text_.view(), buffer)) : text_;
}

std::string_view time_def::databaseForm(std::string_view text, char (&buffer)[maxForm]) {
    Digits parsed;
    if (!parse(text, parsed)) {
        return text;
    }
    const unsigned length = 2 * kPairs;
    std::string_view(parsed.digits, length).copy(buffer, length);
    buffer[length] = ';';
    return std::string_view(buffer, parsed.isDropFrame ? length + 1 : length);
}

std::string_view time_def::punctuatedForm(std::string_view text, char (&buffer)[maxForm]) {
    Digits parsed;
    if (!parse(text, parsed)) {
        return text;
    }
    for (unsigned i = 0; i < kPairs; ++i) {
        buffer[3 * i] = parsed.pair(i)[0];
        buffer[3 * i + 1] = parsed.pair(i)[1];
    }
    buffer[2] = buffer[5] = ':';
    buffer[8] = parsed.isDropFrame ? ';' : ':';
    return std::string_view(buffer, maxForm);
}
