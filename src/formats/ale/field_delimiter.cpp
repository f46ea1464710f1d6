#include "formats/ale/field_delimiter.h"

#include <utility>

#include "formats/reading/delimiters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// "PIPE" of "PIPES", "SLASH" of "SLASHES".
bool isNameOf(std::string_view text, std::string_view name) {
    if (!sameText(text.substr(0, name.size()), name)) return false;
    const std::string_view rest = text.substr(name.size());
    return rest.empty() || sameText(rest, "S") || sameText(rest, "ES");
}

}  // namespace

std::optional<char> aleDelimiter(std::string_view name) {
    static constexpr std::pair<std::string_view, char> known[] = {
        {"TAB", '\t'},       {"COMMA", ','},      {"SEMICOLON", ';'},    {"SEMI-COLON", ';'},
        {"PIPE", '|'},       {"BAR", '|'},        {"VERTICAL BAR", '|'}, {"COLON", ':'},
        {"SPACE", ' '},      {"BLANK", ' '},      {"CARET", '^'},        {"TILDE", '~'},
        {"SLASH", '/'},      {"BACKSLASH", '\\'}, {"HASH", '#'},         {"ASTERISK", '*'},
        {"UNDERSCORE", '_'}, {"DASH", '-'},       {"HYPHEN", '-'},       {"DOT", '.'},
        {"PERIOD", '.'},     {"PLUS", '+'},       {"EQUAL", '='},        {"AMPERSAND", '&'},
        {"AT", '@'},         {"DOLLAR", '$'},     {"PERCENT", '%'},      {"\\t", '\t'}};
    const std::string_view text = trimmed(name);
    for (const auto& [word, delimiter] : known) {
        if (isNameOf(text, word)) return delimiter;
    }
    const std::string_view mark = text.empty() ? name : text;
    const bool isOne = mark.size() == 1 && isMark(mark[0]);
    return isOne ? std::optional<char>(mark[0]) : std::nullopt;
}

}  // namespace vek::formats
