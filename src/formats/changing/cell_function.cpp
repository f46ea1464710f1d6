#include "formats/changing/cell_function.h"

#include <algorithm>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

bool isLetter(char c) {
    const char small = asciiLower(c);
    return small >= 'a' && small <= 'z';
}

std::string_view takeWord(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), isLetter);
    const std::string_view word = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(word.size());
    return word;
}

// Up to the next sign that parts a substitution, which is taken, too; with a backslash in front
// the sign stands for itself. Nothing where there is none.
std::optional<std::string> takePart(std::string_view& text, char sign) {
    std::string part;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == sign) {
            text.remove_prefix(at + 1);
            return part;
        }
        const bool isPair = text[at] == '\\' && at + 1 < text.size();
        if (isPair && text[at + 1] != sign) part += text[at];
        if (isPair) ++at;
        part += text[at];
    }
    return {};
}

Substitution::Manner mannerOf(std::string_view flags) {
    Substitution::Manner manner;
    for (char flag : flags) {
        manner.everywhere = manner.everywhere || flag == 'g';
        manner.ignoresCase = manner.ignoresCase || flag == 'i';
        if (flag == 'g' || flag == 'i') continue;
        throw Failure{wrongUsage, concat("there is no flag ", inQuotes(std::string(1, flag)),
                                         " of a substitution, expected g (each place) or i (case "
                                         "ignored)")};
    }
    return manner;
}

template <class Add>
void replaceBy(std::string& text, Add add) {
    std::string out;
    out.reserve(text.size());
    add(out, text);
    text = std::move(out);
}

}  // namespace

bool CellFunction::isSubstitution(std::string_view text) {
    if (text.size() < 2 || text[0] != 's') return false;
    const char sign = text[1];
    return sign > ' ' && sign < '\x7F' && !isLetter(sign) && !isAsciiDigit(sign) && sign != '\\';
}

std::optional<CellFunction> CellFunction::takeNamed(std::string_view& text) {
    std::string_view rest = text;
    const std::string_view word = takeWord(rest);
    for (auto [name, kind] : {std::pair{"upper", Kind::upper}, std::pair{"lower", Kind::lower},
                              std::pair{"trim", Kind::trim}}) {
        if (!sameText(word, name)) continue;
        text = rest;
        return CellFunction(kind);
    }
    return {};
}

CellFunction CellFunction::takeSubstitution(std::string_view& text) {
    const std::string_view whole = text;
    const char sign = text[1];
    text.remove_prefix(2);
    std::optional<std::string> expression = takePart(text, sign);
    std::optional<std::string> with = expression ? takePart(text, sign) : std::nullopt;
    if (!with) {
        throw Failure{wrongUsage, concat(inQuotes(whole), ": expected s", std::string(1, sign),
                                         "EXPRESSION", std::string(1, sign), "TEXT",
                                         std::string(1, sign), ", all three signs")};
    }
    CellFunction function(Kind::substitute);
    function.substitution_.emplace(*expression, *with, mannerOf(takeWord(text)));
    return function;
}

CellFunction CellFunction::take(std::string_view& text) {
    if (std::optional<CellFunction> named = takeNamed(text)) return std::move(*named);
    if (isSubstitution(text)) return takeSubstitution(text);
    const std::string_view name = trimmed(text.substr(0, text.find_first_of("|}")));
    throw Failure{wrongUsage, concat("there is no function ", inQuotes(name),
                                     ", expected upper, lower, trim or s/EXPRESSION/TEXT/")};
}

CellFunction CellFunction::parse(std::string_view text) {
    std::string_view rest = text;
    CellFunction function = take(rest);
    if (rest.empty()) return function;
    throw Failure{wrongUsage, concat(inQuotes(text), ": did not expect ", inQuotes(rest),
                                     " behind the function")};
}

void CellFunction::apply(std::string& text) const {
    switch (kind_) {
        case Kind::upper:
            return replaceBy(text, addUpper);
        case Kind::lower:
            return replaceBy(text, addLower);
        case Kind::trim:
            return replaceBy(
                text, [](std::string& out, const std::string& from) { out = trimmed(from); });
        case Kind::substitute:
            return substitution_->apply(text);
    }
}

}  // namespace vek::formats
