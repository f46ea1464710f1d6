#include <vekdb/formats/comparing.h>

#include "formats/comparing/compare.h"
#include "formats/face/guarded.h"
#include "formats/face/inside.h"

namespace vek {

namespace {

std::vector<std::string> namesOf(const formats::Log& log, const std::vector<unsigned>& columns) {
    std::vector<std::string> names;
    for (unsigned column : columns) names.push_back(log.columnName(column));
    return names;
}

// The rows of both logs, of which a comparison tells.
struct Compared {
    const ShownRows& a;
    const ShownRows& b;
};

RowDifference valueOf(const formats::LogComparison& all, const formats::DifferingRow& difference,
                      const Compared& logs) {
    RowDifference value;
    value.kind = difference.kind == formats::DifferingRow::removed ? RowDifference::removed
                 : difference.kind == formats::DifferingRow::added ? RowDifference::added
                                                                   : RowDifference::changed;
    if (value.kind != RowDifference::added) value.a = logs.a.indexOf(difference.a);
    if (value.kind != RowDifference::removed) value.b = logs.b.indexOf(difference.b);
    if (value.kind != RowDifference::changed) return value;
    value.key = std::string(all.keyOf(difference));
    all.forEachCell(difference, [&](const formats::DifferingCell& cell) {
        value.cells.push_back(
            {all.a.columnName(cell.columns.a), std::string(cell.before), std::string(cell.after)});
    });
    return value;
}

}  // namespace

Result<Differences> compare(const Log& first, const Log& second, std::string_view key) {
    return guarded([&]() -> Result<Differences> {
        const ShownRows a(LogInside::of(first));
        const ShownRows b(LogInside::of(second));
        formats::LogComparison found = formats::compareLogs(a.log(), b.log(), std::string(key));
        Differences differences;
        differences.onlyInFirst = namesOf(found.a, found.onlyInA);
        differences.onlyInSecond = namesOf(found.b, found.onlyInB);
        for (const formats::DifferingRow& row : found.rows) {
            differences.rows.push_back(valueOf(found, row, {a, b}));
        }
        differences.notes = std::move(found.notes);
        differences.moreNotes = found.moreNotes;
        return differences;
    });
}

}  // namespace vek
