#include <vekdb/host/cookie.h>

#include <vekdb/host/text_util.h>

namespace {

constexpr std::size_t fieldAt = 2 * sizeof(Quor::UUID::bytes);
constexpr std::size_t typeAt = fieldAt + 4;
constexpr std::size_t textLength = typeAt + 2;

// -1 for what is no hexadecimal digit.
int digitValue(char c) {
    if (isAsciiDigit(c)) {
        return c - '0';
    }
    c = asciiLower(c);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool isSpace(wchar_t c) {
    return c > 0 && c < 0x80 && isAsciiSpace(static_cast<char>(c));
}

bool isHexadecimal(std::string_view text) {
    for (const char c : text) {
        if (digitValue(c) < 0) {
            return false;
        }
    }
    return true;
}

std::uint8_t byteAt(const char* digits) {
    return static_cast<std::uint8_t>(digitValue(digits[0]) * 16 + digitValue(digits[1]));
}

void writeByte(std::uint8_t byte, char* out) {
    static constexpr char digits[] = "0123456789abcdef";
    out[0] = digits[byte >> 4];
    out[1] = digits[byte & 15];
}

template <class C>
std::basic_string_view<C> trimmed(std::basic_string_view<C> text) {
    while (!text.empty() && isSpace(static_cast<wchar_t>(text.front()))) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(static_cast<wchar_t>(text.back()))) {
        text.remove_suffix(1);
    }
    return text;
}

Cookie fromDigits(const char* digits) {
    Cookie cookie;
    for (std::size_t i = 0; i < sizeof cookie.uuid.bytes; ++i) {
        cookie.uuid.bytes[i] = byteAt(digits + 2 * i);
    }
    cookie.field =
        static_cast<std::uint16_t>(byteAt(digits + fieldAt) << 8 | byteAt(digits + fieldAt + 2));
    cookie.type = byteAt(digits + typeAt);
    return cookie;
}

// Characters past the 7-bit ones are no digits, so they may not be cut to bytes.
Cookie fromWideText(std::wstring_view text) {
    text = trimmed(text);
    char digits[textLength];
    if (text.size() != textLength) {
        return Cookie();
    }
    for (std::size_t i = 0; i < textLength; ++i) {
        digits[i] = text[i] > 0 && text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    }
    return Cookie::fromText(std::string_view(digits, textLength));
}

}  // namespace

Cookie::Cookie(const char* text, bool)
    : Cookie(fromText(text == nullptr ? std::string_view() : std::string_view(text))) {}

Cookie::Cookie(const LightweightString<wchar_t>& text, bool) : Cookie(fromWideText(text.view())) {}

Cookie Cookie::fromText(std::string_view text) noexcept {
    text = trimmed(text);
    const bool isCookie = text.size() == textLength && isHexadecimal(text);
    return isCookie ? fromDigits(text.data()) : Cookie();
}

LightweightString<char> Cookie::asString(bool) const {
    char text[textLength];
    for (std::size_t i = 0; i < sizeof uuid.bytes; ++i) {
        writeByte(uuid.bytes[i], text + 2 * i);
    }
    writeByte(static_cast<std::uint8_t>(field >> 8), text + fieldAt);
    writeByte(static_cast<std::uint8_t>(field & 0xFF), text + fieldAt + 2);
    writeByte(type, text + typeAt);
    return LightweightString<char>(text, textLength);
}

int Cookie::compare(const Cookie& other) const noexcept {
    if (const int order = uuid.compare(other.uuid); order != 0) {
        return order;
    }
    return field != other.field ? int(field) - int(other.field) : int(type) - int(other.type);
}

Cookie convertCookie(const Cookie& cookie, CookieType type, unsigned char field) {
    Cookie converted = cookie;
    converted.type = type;
    if (field != 255) {
        converted.field = field;
    }
    return converted;
}
