#include <vekdb/host/strxcmp.h>

#include <vekdb/host/text_util.h>

#include <algorithm>

namespace {

int sign(std::ptrdiff_t difference) {
    return difference < 0 ? -1 : difference > 0 ? 1 : 0;
}

int compareBytes(char a, char b) {
    return int(static_cast<unsigned char>(asciiLower(a))) -
           int(static_cast<unsigned char>(asciiLower(b)));
}

int compareIgnoringCase(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (const int order = compareBytes(a[i], b[i]); order != 0) {
            return sign(order);
        }
    }
    return sign(std::ptrdiff_t(a.size()) - std::ptrdiff_t(b.size()));
}

// Takes the run of digits at the front off the text, without the zeros that
// lead it: the longer of two such runs is the greater number.
std::string_view takeNumber(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
    std::string_view digits = text.substr(0, end);
    text.remove_prefix(end);
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

int compareNumbers(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return a.size() < b.size() ? -1 : 1;
    }
    return sign(a.compare(b));
}

// Takes what is compared as one, a number or a character, off both fronts.
int compareFronts(std::string_view& a, std::string_view& b) {
    if (isAsciiDigit(a.front()) && isAsciiDigit(b.front())) {
        const std::string_view number = takeNumber(a);
        return compareNumbers(number, takeNumber(b));
    }
    const int order = sign(compareBytes(a.front(), b.front()));
    a.remove_prefix(1);
    b.remove_prefix(1);
    return order;
}

std::string_view textOf(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace

int compareAsRead(std::string_view a, std::string_view b) noexcept {
    while (!a.empty() && !b.empty()) {
        if (const int order = compareFronts(a, b); order != 0) {
            return order;
        }
    }
    return int(!a.empty()) - int(!b.empty());
}

int strxcmp(const char* a, const char* b) noexcept {
    return strxcmp(textOf(a), textOf(b));
}

int strxcmp(std::string_view a, std::string_view b) noexcept {
    const int order = compareAsRead(a, b);
    return order != 0 ? order : compareIgnoringCase(a, b);
}
