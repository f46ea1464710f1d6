#include "formats/writing/table_values.h"

#include <algorithm>

#include <vekdb/byte_marks.h>
#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include "formats/log/log.h"
#include "formats/text/text_lines.h"
#include "formats/writing/cell_run.h"

namespace vek::formats {

namespace {

bool isInk(char c) {
    return static_cast<unsigned char>(c) > ' ';
}

inline bool isBlankAtEdge(std::string_view value) {
    if (value.empty() || (isInk(value.front()) && isInk(value.back()))) return false;
    return isAsciiSpace(value.front()) || isAsciiSpace(value.back());
}

// Whether a value may be another one on its way through a table file. Looks at all bytes, so that
// many can be looked at together.
bool mayChange(std::string_view value) {
    bool has = isBlankAtEdge(value);
    for (char c : value) has |= c == '\r' || c == '\\' || c == '\0';
    return has;
}

// Whether values that stand one behind the other are certain to be read as they are: no byte that
// a table file changes, no NUL but those between them, no blank at an edge.
bool areKept(const CellRun& run, const std::string_view* values, std::size_t count) {
    const char* const begin = run.text.data();
    const char* const end = begin + run.text.size();
    if (ByteMarks::count(begin, end, {'\r', '\\', '\0', '\0'}) != run.gaps) return false;
    return std::all_of(values, values + count, [](std::string_view value) {
        return value.size() <= longestTableValue && !isBlankAtEdge(value);
    });
}

}  // namespace

std::string afterTableFile(std::string_view value) {
    TextFile line;
    {
        dbrecord written(1);  // a long value is not there thrice
        written.setField(0, cellText(value));
        written.write(line);
    }
    dbrecord read(1);
    read.read(line);
    return std::string(read.fieldView(0));
}

bool areSurelyKept(const std::string_view* values, std::size_t count) {
    if (const std::optional<CellRun> run = CellRun::of(values, count)) {
        return areKept(*run, values, count);
    }
    return std::none_of(values, values + count, [](std::string_view value) {
        return value.size() > longestTableValue || mayChange(value);
    });
}

TableLoss tableFileLoss(std::string_view value) {
    if (!mayChange(value) || afterTableFile(value) == value) return TableLoss::none;
    if (trimmed(value) != value) return TableLoss::blanks;
    if (value.find('\r') != value.npos) return TableLoss::carriageReturns;
    return value.find('\\') != value.npos ? TableLoss::backslash : TableLoss::other;
}

}  // namespace vek::formats
