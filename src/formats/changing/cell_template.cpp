#include "formats/changing/cell_template.h"

#include <algorithm>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"

namespace vek::formats {

namespace {

std::string choices(const Log& log) {
    constexpr std::size_t most = 20;
    std::string list;
    for (unsigned i = 0; i < log.columnCount() && i < most; ++i) {
        list += concat(i == 0 ? "" : ", ", log.columnName(i));
    }
    return log.columnCount() > most ? list + ", ..." : list;
}

unsigned columnInBraces(const Log& log, std::string_view name) {
    try {
        return log.requireColumn(trimmed(name));
    } catch (const Failure& failure) {
        throw Failure{failure.kind, concat(failure.text, " (in braces stands a column: ",
                                           choices(log), "; a brace itself is written {{ or }})")};
    }
}

// Reads what stands between braces, up to the one that closes them, which it takes, too.
class BraceReader {
public:
    BraceReader(const Log& log, std::string_view& rest) : log_(log), rest_(rest), whole_(rest) {}

    void read(CellTemplate::Part& part) {
        readName(part);
        while (rest_.starts_with('|')) {
            rest_.remove_prefix(1);
            skipBlanks();
            part.functions.push_back(CellFunction::take(rest_));
            skipBlanks();
        }
        if (!rest_.starts_with('}')) refuse();
        rest_.remove_prefix(1);
        const bool changesNumber = part.isNumber && !part.functions.empty();
        if (changesNumber) throw Failure{wrongUsage, "{#} takes no functions"};
    }

private:
    void readName(CellTemplate::Part& part) {
        skipBlanks();
        std::optional<WrittenName> bracketed = bracketedName(rest_);
        const std::size_t close = rest_.find('}');
        if (close == std::string_view::npos) refuse();
        std::size_t size = close;
        if (bracketed)
            size = bracketed->size;
        else if (log_.findColumn(trimmed(rest_.substr(0, close))) == noColumn)
            size = std::min(close, rest_.find('|'));
        const std::string_view name = rest_.substr(0, size);
        rest_.remove_prefix(size);
        skipBlanks();
        part.isNumber = trimmed(name) == "#";
        if (!part.isNumber) part.column = columnInBraces(log_, name);
    }

    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size())); }

    [[noreturn]] void refuse() const {
        throw Failure{wrongUsage, concat(inQuotes(concat("{", whole_)),
                                         ": the brace is not closed, expected {COLUMN} or "
                                         "{COLUMN|FUNCTION}; a brace itself is written {{")};
    }

    const Log& log_;
    std::string_view& rest_;
    std::string_view whole_;
};

// Takes what stands in front of the next pair of braces.
std::string takeText(std::string_view& rest) {
    std::string text;
    while (!rest.empty()) {
        const bool isDoubled = rest.starts_with("{{") || rest.starts_with("}}");
        if (rest.front() == '{' && !isDoubled) break;
        text += rest.front();
        rest.remove_prefix(isDoubled ? 2 : 1);
    }
    return text;
}

}  // namespace

CellTemplate::CellTemplate(const Log& log, std::string_view text) {
    do {
        Part& part = parts_.emplace_back();
        part.text = takeText(text);
        if (text.empty()) return;
        text.remove_prefix(1);
        BraceReader(log, text).read(part);
    } while (!text.empty());
}

bool CellTemplate::counts() const {
    return std::any_of(parts_.begin(), parts_.end(),
                       [](const Part& part) { return part.isNumber; });
}

void CellTemplate::addCell(std::string& out, const Part& part, std::string_view cell) {
    if (part.functions.empty()) {
        out += cell;
        return;
    }
    std::string text(cell);
    for (const CellFunction& function : part.functions) function.apply(text);
    out += text;
}

}  // namespace vek::formats
