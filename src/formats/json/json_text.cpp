#include "formats/json/json_text.h"

#include <bit>
#include <cstring>

#include <vekdb/host/text_util.h>
#include "formats/text/utf8.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vek::formats {

namespace {

unsigned char byteAt(const char* at) {
    return static_cast<unsigned char>(*at);
}

// Bytes that a string has as they are: of the 7-bit range, no control characters, neither what ends
// the string nor what begins an escape.
bool isPlain(char c) {
    const unsigned char byte = byteAt(&c);
    return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

#if defined(__SSE2__)

// As signed numbers all bytes beyond the 7-bit range are below the control characters.
unsigned oddOfSixteen(const char* at) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')),
                                      _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\')));
    const __m128i odd = _mm_or_si128(ends, _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)));
    return static_cast<unsigned>(_mm_movemask_epi8(odd));
}

#else

unsigned oddOfSixteen(const char* at) {
    unsigned odd = 0;
    for (unsigned i = 0; i < 16; ++i) odd |= unsigned{!isPlain(at[i])} << i;
    return odd;
}

#endif

const char* behindPlain(const char* at, const char* end) {
    for (; end - at >= 16; at += 16) {
        if (const unsigned odd = oddOfSixteen(at)) return at + std::countr_zero(odd);
    }
    while (at != end && isPlain(*at)) ++at;
    return at;
}

// The bytes at the front of a text, up to one that ends a string, begins an escape or may not
// stand in a string.
const char* behindText(const char* at, const char* end) {
    for (;;) {
        at = behindPlain(at, end);
        if (at == end || byteAt(at) < 0x80) return at;
        const std::size_t size = wideCharacterSize({at, static_cast<std::size_t>(end - at)});
        if (size == 0) return at;
        at += size;
    }
}

int valueOfDigit(char c) {
    if (isAsciiDigit(c)) return c - '0';
    const char small = asciiLower(c);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

// The number of four hexadecimal digits, -1 for others.
int unitAt(const char* at, const char* end) {
    if (end - at < 4) return -1;
    int unit = 0;
    for (int i = 0; i < 4; ++i) {
        const int digit = valueOfDigit(at[i]);
        if (digit < 0) return -1;
        unit = unit * 16 + digit;
    }
    return unit;
}

bool isHighSurrogate(int unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(int unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The bytes of an escape that begins with the backslash at `at`, 0 where there is no such one.
std::size_t sizeOfEscape(const char* at, const char* end) {
    if (end - at < 2) return 0;
    if (at[1] != 'u')
        return std::string_view("\"\\/bfnrt").find(at[1]) != std::string_view::npos ? 2 : 0;
    const int unit = unitAt(at + 2, end);
    if (unit < 0 || isLowSurrogate(unit)) return 0;
    if (!isHighSurrogate(unit)) return 6;
    const bool hasSecond = end - at >= 12 && at[6] == '\\' && at[7] == 'u';
    return hasSecond && isLowSurrogate(unitAt(at + 8, end)) ? 12 : 0;
}

char* writeUtf8(char* to, unsigned code) {
    const auto tail = [](unsigned bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (code < 0x80) {
        *to++ = static_cast<char>(code);
        return to;
    }
    if (code < 0x800) {
        *to++ = static_cast<char>(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            *to++ = static_cast<char>(0xE0 | code >> 12);
        } else {
            *to++ = static_cast<char>(0xF0 | code >> 18);
            *to++ = tail(code >> 12);
        }
        *to++ = tail(code >> 6);
    }
    *to++ = tail(code);
    return to;
}

char ofShortEscape(char c) {
    switch (c) {
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        default:
            return c;
    }
}

// Writes what an escape stands for; `at` goes behind it.
char* resolve(const char*& at, const char* end, char* to) {
    const std::size_t size = sizeOfEscape(at, end);
    const char* const escape = at;
    at += size;
    if (size == 2) {
        *to++ = ofShortEscape(escape[1]);
        return to;
    }
    const auto unit = static_cast<unsigned>(unitAt(escape + 2, end));
    if (size == 6) return writeUtf8(to, unit);
    const auto low = static_cast<unsigned>(unitAt(escape + 8, end));
    return writeUtf8(to, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
}

const char* behindDigits(const char* at, const char* end) {
    while (at != end && isAsciiDigit(*at)) ++at;
    return at;
}

}  // namespace

void JsonText::skipSomeBlanks() {
    for (; at_ != end_; ++at_) {
        if (*at_ == '\n') {
            ++line_;
        } else if (*at_ != ' ' && *at_ != '\t' && *at_ != '\r') {
            return;
        }
    }
}

void JsonText::skipBetween() {
    for (; at_ != end_ && byteAt(at_) <= ' '; ++at_) line_ += *at_ == '\n' ? 1 : 0;
}

bool JsonText::takeAgain(std::string_view text, std::size_t lines) {
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    if (!rest.starts_with(text)) return false;
    at_ += text.size();
    line_ += lines;
    return true;
}

void JsonText::takeMark() {
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    if (rest.starts_with(byteOrderMark)) at_ += byteOrderMark.size();
}

void JsonText::goTo(const char* at) {
    for (; at_ != at; ++at_) line_ += *at_ == '\n' ? 1 : 0;
}

std::optional<JsonText::String> JsonText::takeString() {
    if (!take('"')) return {};
    const char* const start = at_;
    String found;
    for (at_ = behindText(at_, end_); !take('"'); at_ = behindText(at_, end_)) {
        const std::size_t size = peek() == '\\' ? sizeOfEscape(at_, end_) : 0;
        if (size == 0) return {};
        found.hasEscapes = true;
        at_ += size;
    }
    found.raw = {start, static_cast<std::size_t>(at_ - 1 - start)};
    return found;
}

std::optional<std::string_view> JsonText::takeWord() {
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    for (std::string_view word : {"true", "false", "null"}) {
        if (!rest.starts_with(word)) continue;
        at_ += word.size();
        return rest.substr(0, word.size());
    }
    return takeNumber();
}

std::optional<std::string_view> JsonText::takeNumber() {
    const char* const start = at_;
    take('-');
    if (!take('0')) {
        const char* const digits = at_;
        at_ = behindDigits(at_, end_);
        if (at_ == digits) return {};
    }
    if (take('.')) {
        const char* const digits = at_;
        at_ = behindDigits(at_, end_);
        if (at_ == digits) return {};
    }
    if (take('e') || take('E')) {
        if (!take('+')) take('-');
        const char* const digits = at_;
        at_ = behindDigits(at_, end_);
        if (at_ == digits) return {};
    }
    return std::string_view(start, static_cast<std::size_t>(at_ - start));
}

bool standsBare(std::string_view text) {
    JsonText json(text.data(), text.data() + text.size());
    const std::optional<std::string_view> word = json.takeWord();
    return word && *word == text && text != "null";
}

bool standsAsItIs(std::string_view text) {
    const char* const end = text.data() + text.size();
    return behindText(text.data(), end) == end;
}

std::size_t resolveEscapes(char* text, std::size_t size) {
    const char* at = text;
    const char* const end = text + size;
    char* to = text;
    while (at != end) {
        const void* found = std::memchr(at, '\\', static_cast<std::size_t>(end - at));
        const char* const escape = found == nullptr ? end : static_cast<const char*>(found);
        const auto run = static_cast<std::size_t>(escape - at);
        std::memmove(to, at, run);
        to += run;
        at = escape;
        if (at != end) to = resolve(at, end, to);
    }
    return static_cast<std::size_t>(to - text);
}

}  // namespace vek::formats
