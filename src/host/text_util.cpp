#include <vekdb/host/text_util.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

static_assert(sizeof(wchar_t) == 4, "wide strings hold UTF-32");

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

std::string_view withoutLeadingSpace(std::string_view text) {
    while (!text.empty() && isAsciiSpace(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    text = withoutLeadingSpace(text);
    while (!text.empty() && isAsciiSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Takes a sign off the front of the text and says whether it was a minus.
bool takeSign(std::string_view& text) {
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) {
        text.remove_prefix(1);
    }
    return negative;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return asciiLower(x) == asciiLower(y);
           });
}

}  // namespace

LightweightString<char> BoolAsString(bool value) {
    return value ? "true" : "false";
}

bool BoolFromString(const LightweightString<char>& text, bool& value) {
    for (const char* word : {"true", "t", "1"}) {
        if (equalsIgnoringCase(text.view(), word)) {
            value = true;
            return true;
        }
    }
    for (const char* word : {"false", "f", "0"}) {
        if (equalsIgnoringCase(text.view(), word)) {
            value = false;
            return true;
        }
    }
    return false;
}

unsigned UIntFromString(const LightweightString<char>& text, unsigned otherwise) {
    return parseUInt(text.view(), otherwise);
}

unsigned parseUInt(std::string_view text, unsigned otherwise) noexcept {
    const std::string_view digits = trimmed(text);
    const char* end = digits.data() + digits.size();
    unsigned number = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && stop == end ? number : otherwise;
}

LightweightString<char> StringFromInteger(int number) {
    LightweightString<char> text;
    text += number;
    return text;
}

LightweightString<char> StringFromDouble(double number) {
    // Room for the sign, 309 digits, the point and 8 digits.
    char digits[320];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, 8).ptr;
    return LightweightString<char>(digits, static_cast<std::size_t>(end - digits));
}

int parseInt(std::string_view text) noexcept {
    text = withoutLeadingSpace(text);
    const bool negative = takeSign(text);
    long long number = 0;
    for (std::size_t i = 0; i < text.size() && isAsciiDigit(text[i]); ++i) {
        number = std::min(number * 10 + (text[i] - '0'), 1LL << 40);
    }
    number = negative ? -number : number;
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

namespace {

bool startsHexadecimal(std::string_view text) {
    const auto isHexDigit = [](char c) {
        return isAsciiDigit(c) || (asciiLower(c) >= 'a' && asciiLower(c) <= 'f');
    };
    if (text.size() < 3 || text[0] != '0' || asciiLower(text[1]) != 'x') {
        return false;
    }
    return isHexDigit(text[2]) || (text[2] == '.' && text.size() > 3 && isHexDigit(text[3]));
}

// Tells a number too great for a double from one too small, which from_chars
// reports alike: by the place of its first digit that counts.
bool isAboveOne(std::string_view text, char exponentLetter) {
    long long place = 0;
    bool started = false;
    bool inFraction = false;
    std::size_t i = 0;
    for (; i < text.size() && asciiLower(text[i]) != exponentLetter; ++i) {
        if (text[i] == '.') {
            inFraction = true;
        } else {
            started = started || text[i] != '0';
            place += inFraction ? (started ? 0 : -1) : (started ? 1 : 0);
        }
    }
    const long long digitWeight = exponentLetter == 'p' ? 4 : 1;
    const long long exponent = i < text.size() ? parseInt(text.substr(i + 1)) : 0;
    return place * digitWeight + exponent > 0;
}

// False for what begins with no digits.
bool parseMagnitude(std::string_view text, double& number) {
    const bool hexadecimal = startsHexadecimal(text);
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    const auto [stop, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, format);
    if (error == std::errc::result_out_of_range) {
        const std::string_view used(text.data(), static_cast<std::size_t>(stop - text.data()));
        number = isAboveOne(used, hexadecimal ? 'p' : 'e') ? HUGE_VAL : 0.0;
    }
    return error != std::errc::invalid_argument;
}

}  // namespace

double parseDouble(std::string_view text) noexcept {
    text = withoutLeadingSpace(text);
    const bool negative = takeSign(text);
    double number = 0;
    // A second sign is no number, though from_chars would take a minus.
    if (text.empty() || text.front() == '-' || !parseMagnitude(text, number)) {
        return 0;
    }
    return negative ? -number : number;
}

bool isEssentiallyEmpty(const LightweightString<char>& text) {
    return isEssentiallyEmpty(text.view());
}

bool isEssentiallyEmpty(std::string_view text) noexcept {
    return withoutLeadingSpace(text).empty();
}

void toLower(LightweightString<char>& text) {
    const auto isUpper = [](char c) { return asciiLower(c) != c; };
    const std::string_view now = text.view();
    if (std::none_of(now.begin(), now.end(), isUpper)) {
        return;
    }
    char* characters = text.mutableData();
    std::transform(characters, characters + text.length(), characters, asciiLower<char>);
}

namespace {

bool isCodePoint(char32_t c) {
    return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}

// How many bytes a character takes that begins with this byte, and the bits of
// it that the byte holds; no bytes for one that begins no character.
struct LeadByte {
    unsigned length;
    char32_t bits;
    char32_t smallest;
};

LeadByte leadByte(unsigned char byte) {
    if (byte < 0x80) {
        return {1, byte, 0};
    }
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {2, byte & 0x1Fu, 0x80};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {3, byte & 0x0Fu, 0x800};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {4, byte & 0x07u, 0x10000};
    }
    return {0, 0, 0};
}

// Takes one character off the front. A byte that begins no whole character is
// taken alone, so what follows it is read afresh; oddByte says what it becomes.
template <class OddByte>
char32_t takeCharacter(std::string_view& text, OddByte oddByte) {
    const char first = text[0];
    const LeadByte lead = leadByte(static_cast<unsigned char>(text[0]));
    char32_t character = lead.bits;
    bool whole = lead.length != 0 && lead.length <= text.size();
    for (unsigned i = 1; whole && i < lead.length; ++i) {
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        whole = (byte & 0xC0) == 0x80;
        character = (character << 6) | (byte & 0x3Fu);
    }
    whole = whole && character >= lead.smallest && isCodePoint(character);
    text.remove_prefix(whole ? lead.length : 1);
    return whole ? character : oddByte(first);
}

template <class OddByte>
LightweightString<wchar_t> decoded(std::string_view text, OddByte oddByte) {
    std::size_t count = 0;
    for (std::string_view rest = text; !rest.empty(); ++count) {
        takeCharacter(rest, oddByte);
    }
    LightweightString<wchar_t> wide;
    wide.resizeFor(count);
    wchar_t* out = wide.mutableData();
    for (std::string_view rest = text; !rest.empty();) {
        *out++ = static_cast<wchar_t>(takeCharacter(rest, oddByte));
    }
    return wide;
}

// A byte of a path that is part of no character.
char32_t unitOfByte(char byte) {
    return 0xDC00 + static_cast<unsigned char>(byte);
}

bool isUnitOfByte(char32_t c) {
    return c >= 0xDC80 && c <= 0xDCFF;
}

unsigned encodedLength(char32_t c) {
    return c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
}

char* encode(char32_t c, char* out) {
    const unsigned length = encodedLength(c);
    if (length == 1) {
        *out++ = static_cast<char>(c);
        return out;
    }
    static constexpr unsigned leadMarks[] = {0, 0, 0xC0, 0xE0, 0xF0};
    unsigned shift = 6 * (length - 1);
    *out++ = static_cast<char>(leadMarks[length] | (c >> shift));
    while (shift != 0) {
        shift -= 6;
        *out++ = static_cast<char>(0x80 | ((c >> shift) & 0x3F));
    }
    return out;
}

char32_t codePointOf(wchar_t c) {
    const char32_t character = static_cast<char32_t>(c);
    return isCodePoint(character) ? character : replacementCharacter;
}

}  // namespace

LightweightString<wchar_t> fromUTF8(const LightweightString<char>& text) {
    return decoded(text.view(), [](char) { return replacementCharacter; });
}

LightweightString<char> toUTF8(const LightweightString<wchar_t>& text) {
    std::size_t count = 0;
    for (const wchar_t c : text.view()) {
        count += encodedLength(codePointOf(c));
    }
    LightweightString<char> bytes;
    bytes.resizeFor(count);
    char* out = bytes.mutableData();
    for (const wchar_t c : text.view()) {
        out = encode(codePointOf(c), out);
    }
    return bytes;
}

LightweightString<wchar_t> pathFromBytes(const LightweightString<char>& bytes) {
    return decoded(bytes.view(), unitOfByte);
}

bool pathToUTF8(const LightweightString<wchar_t>& path, LightweightString<char>& bytes) {
    std::size_t count = 0;
    bool hasUnits = false;
    for (const wchar_t c : path.view()) {
        const char32_t character = static_cast<char32_t>(c);
        hasUnits = hasUnits || isUnitOfByte(character);
        if (c == 0 || !(isCodePoint(character) || isUnitOfByte(character))) {
            return false;
        }
        count += isUnitOfByte(character) ? 1 : encodedLength(character);
    }
    if (count == 0) {
        return false;
    }
    LightweightString<char> encoded;
    encoded.resizeFor(count);
    char* out = encoded.mutableData();
    for (const wchar_t c : path.view()) {
        const char32_t character = static_cast<char32_t>(c);
        out = isUnitOfByte(character) ? (*out = static_cast<char>(character & 0xFF), out + 1)
                                      : encode(character, out);
    }
    if (hasUnits && pathFromBytes(encoded).view() != path.view()) {
        return false;
    }
    bytes = encoded;
    return true;
}

LightweightString<wchar_t> Quor::WStringFromAscii(const char* text) {
    const std::string_view bytes = text == nullptr ? std::string_view() : text;
    LightweightString<wchar_t> wide;
    wide.resizeFor(bytes.size());
    std::transform(bytes.begin(), bytes.end(), wide.mutableData(),
                   [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    return wide;
}
