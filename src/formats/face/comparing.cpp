#include <vekdb/formats/comparing.h>

#include "formats/comparing/compare.h"
#include "formats/face/guarded.h"
#include "formats/face/inside.h"

namespace vek {

namespace {

RowDifference valueOf(formats::RowDifference& difference) {
    RowDifference value;
    value.kind = difference.kind == formats::RowDifference::removed ? RowDifference::removed
                 : difference.kind == formats::RowDifference::added ? RowDifference::added
                                                                    : RowDifference::changed;
    value.a = difference.a;
    value.b = difference.b;
    value.key = std::move(difference.key);
    for (formats::CellDifference& cell : difference.cells) {
        value.cells.push_back(
            {std::move(cell.column), std::move(cell.before), std::move(cell.after)});
    }
    return value;
}

void refuseRemoved(const LogInside& inside) {
    if (!inside.kept || inside.kept->size() == inside.log.rowCount()) return;
    throw formats::Failure{
        formats::wrongUsage,
        inside.log.name,
        {0, "", "rows were removed", "a log as it was opened", "write it to a text and open that"}};
}

}  // namespace

Result<Differences> compare(const Log& first, const Log& second, std::string_view key) {
    return guarded([&]() -> Result<Differences> {
        refuseRemoved(LogInside::of(first));
        refuseRemoved(LogInside::of(second));
        formats::Differences found = formats::compareLogs(
            LogInside::of(first).log, LogInside::of(second).log, std::string(key));
        Differences differences;
        differences.onlyInFirst = std::move(found.onlyInA);
        differences.onlyInSecond = std::move(found.onlyInB);
        for (formats::RowDifference& row : found.rows) differences.rows.push_back(valueOf(row));
        differences.notes = std::move(found.notes);
        return differences;
    });
}

}  // namespace vek
