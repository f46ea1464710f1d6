#include "formats/text/written_names.h"

#include <algorithm>
#include <charconv>

#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// Where a name of a list ends: at a comma, unless that stands between brackets.
std::size_t endOfName(std::string_view list) {
    const std::size_t start = std::min(list.find_first_not_of(' '), list.size());
    std::optional<WrittenName> name = bracketedName(list.substr(start));
    return std::min(list.find(',', name ? start + name->size : 0), list.size());
}

// Takes "#2" behind the brackets.
void takeTurn(std::string_view text, WrittenName& written) {
    if (!text.substr(written.size).starts_with('#')) return;
    const char* const digits = text.data() + written.size + 1;
    const char* const end = text.data() + text.size();
    auto [stopped, error] = std::from_chars(digits, end, written.turn);
    if (error != std::errc() || written.turn == 0) return;
    written.size = static_cast<std::size_t>(stopped - text.data());
}

}  // namespace

std::optional<WrittenName> bracketedName(std::string_view text) {
    if (!text.starts_with('[')) return {};
    WrittenName written;
    for (std::size_t at = 1; at < text.size(); ++at) {
        const bool isDoubled = text[at] == ']' && text.substr(at + 1).starts_with(']');
        if (text[at] == ']' && !isDoubled) {
            written.size = at + 1;
            takeTurn(text, written);
            return written;
        }
        written.name += text[at];
        if (isDoubled) ++at;
    }
    return {};
}

std::optional<WrittenName> unbracketed(std::string_view text) {
    std::optional<WrittenName> written = bracketedName(text);
    if (!written || written->size != text.size()) return {};
    return written;
}

std::string inBrackets(std::string_view name) {
    std::string out = "[";
    for (char c : name) out += c == ']' ? std::string("]]") : std::string(1, c);
    return out + "]";
}

std::string asWritten(const std::string& name) {
    const bool isPlain = !name.empty() && name.front() != '[' && trimmed(name) == name &&
                         name.find_first_of("=<>~!,{}|") == std::string::npos;
    return isPlain ? name : inBrackets(name);
}

std::vector<std::string_view> splitNames(std::string_view list) {
    std::vector<std::string_view> names;
    for (;;) {
        const std::size_t end = endOfName(list);
        names.push_back(list.substr(0, end));
        if (end == list.size()) return names;
        list.remove_prefix(end + 1);
    }
}

}  // namespace vek::formats
