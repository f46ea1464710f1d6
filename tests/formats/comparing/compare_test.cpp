#include "formats/comparing/compare.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "testing/logs.h"

using testing::ElementsAre;
using testing_support::logOf;
using namespace vek::formats;

namespace {

// "-1" for a row that is only in A, "+2" for one only in B, "1>2" for one that
// changed.
std::vector<std::string> rowsOf(const LogComparison& comparison) {
    std::vector<std::string> rows;
    for (const DifferingRow& row : comparison.rows) {
        const std::string a = std::to_string(row.a);
        const std::string b = std::to_string(row.b);
        if (row.kind == DifferingRow::changed)
            rows.push_back(a + ">" + b);
        else
            rows.push_back(row.kind == DifferingRow::removed ? "-" + a : "+" + b);
    }
    return rows;
}

}  // namespace

TEST(Compare, FindsNothingInLogsThatAreEqual) {
    const Log a = logOf("Name,Note\nA,x\nB,y\n");
    const Log b = logOf("name,NOTE\nA,x\nB,y\n");
    EXPECT_TRUE(compareLogs(a, b, "").isEmpty());
    EXPECT_TRUE(compareLogs(a, b, "Name").isEmpty());
}

TEST(Compare, ByAKeyMatchesRowsWhereverTheyStand) {
    const Log a = logOf("Name,Note\nA,x\nB,y\nC,z\n");
    const Log b = logOf("Name,Note\nC,z\nA,other\nD,new\n");
    const LogComparison comparison = compareLogs(a, b, "Name");
    EXPECT_THAT(rowsOf(comparison), testing::UnorderedElementsAre("0>1", "-1", "+2"));
}

TEST(Compare, NamesTheCellsOfAChangedRow) {
    const Log a = logOf("Name,Note,Take\nA,x,1\n");
    const Log b = logOf("Name,Note,Take\nA,y,1\n");
    const LogComparison comparison = compareLogs(a, b, "Name");
    ASSERT_THAT(rowsOf(comparison), ElementsAre("0>0"));
    EXPECT_EQ("A", comparison.keyOf(comparison.rows[0]));
    std::vector<std::string> cells;
    comparison.forEachCell(comparison.rows[0], [&](const DifferingCell& cell) {
        cells.push_back(a.columnName(cell.columns.a) + ": " + std::string(cell.before) + ">" +
                        std::string(cell.after));
    });
    EXPECT_THAT(cells, ElementsAre("Note: x>y"));
}

TEST(Compare, TellsColumnsThatOnlyOneHas) {
    const Log a = logOf("Name,Old\nA,x\n");
    const Log b = logOf("New,Name\ny,A\n");
    const LogComparison comparison = compareLogs(a, b, "");
    EXPECT_THAT(comparison.onlyInA, ElementsAre(1));
    EXPECT_THAT(comparison.onlyInB, ElementsAre(0));
    EXPECT_EQ(1u, comparison.shared.size());
}
