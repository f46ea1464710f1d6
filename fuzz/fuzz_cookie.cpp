// Any bytes as the text of an identity: it is one exactly where it is 38 digits between white
// space, and what is read, written and read again is the same.

#include <vekdb/host/cookie.h>
#include <vekdb/host/text_util.h>
#include "target.h"

namespace {

std::string withoutSpace(std::string_view text) {
    while (!text.empty() && isAsciiSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isAsciiSpace(text.back())) text.remove_suffix(1);
    std::string lower;
    for (char c : text) lower += c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

bool isText(const std::string& text) {
    return text.size() == 38 && text.find_first_not_of("0123456789abcdef") == text.npos;
}

std::string check(const std::string& text) {
    const Cookie cookie(text.c_str(), false);
    const std::string written(cookie.asString(false).view());
    const std::string expected = withoutSpace(text);
    if (isText(expected) && written != expected) return "another identity: " + written;
    if (!isText(expected) && !(cookie == Cookie())) return "an identity of no text: " + written;
    return Cookie(written.c_str(), true) == cookie ? "" : "not read again: " + written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(fuzz::textOf(data, size));
    fuzz::require(check(text.substr(0, text.find('\0'))));
    return 0;
}
