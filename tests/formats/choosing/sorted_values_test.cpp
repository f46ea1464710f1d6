#include "formats/choosing/sorted_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include <vekdb/views/view_rep.h>
#include "formats/choosing/select.h"
#include "formats/input/input.h"
#include "formats/reading/open_log.h"

using namespace vek::formats;

namespace {

Log logOf(const std::string& text) {
    const Opening opening;
    Input input("log.csv", text, opening);
    return openLog(input, "log.csv", opening);
}

std::vector<unsigned> sortedByProgram(const Log& log, const std::string& column) {
    Selection selection;
    selection.sort = column;
    const VDBView view = selectRows(log, selection).view;
    std::vector<unsigned> rows;
    for (unsigned i = 0; i < log.rowCount(); ++i) rows.push_back(view->baseIndex(i));
    return rows;
}

// The order of rows that the values give: rows without any value last, rows of one rank as they
// stand.
std::vector<unsigned> sortedByValues(const Log& log, unsigned column) {
    const SortedValues values = sortedValues(log, column);
    std::vector<unsigned> ranks(values.values.size());
    for (std::size_t i = 1; i < ranks.size(); ++i) {
        ranks[i] = ranks[i - 1] + (values.isSameAsBefore[i] ? 0 : 1);
    }
    std::vector<unsigned> rows(log.rowCount());
    std::iota(rows.begin(), rows.end(), 0u);
    std::stable_sort(rows.begin(), rows.end(), [&](unsigned a, unsigned b) {
        const bool isBlankA = log.table->get_record(a)->is_blank();
        const bool isBlankB = log.table->get_record(b)->is_blank();
        if (isBlankA != isBlankB) return isBlankB;
        return ranks[values.placeOf[a]] < ranks[values.placeOf[b]];
    });
    return rows;
}

}  // namespace

TEST(SortedValues, EveryValueStandsOnceAndEachRowKnowsItsOwn) {
    const Log log = logOf("Scene,Take\n10,1\n2,1\n10,2\n,3\n2A,1\n");
    const SortedValues values = sortedValues(log, 0);
    const std::vector<std::string_view> expected = {"2", "2A", "10", ""};
    EXPECT_EQ(values.values, expected);
    EXPECT_EQ(values.placeOf, (std::vector<std::uint32_t>{2, 0, 2, 3, 1}));
}

TEST(SortedValues, ValuesThatASortTakesForTheSameAreMarked) {
    const Log log = logOf("Scene,Take\nab,1\n AB,2\nac,3\n  ,4\n,5\n");
    const SortedValues values = sortedValues(log, 0);
    std::size_t same = 0;
    for (std::size_t i = 0; i < values.values.size(); ++i) same += values.isSameAsBefore[i];
    EXPECT_EQ(same, 2u);
    EXPECT_EQ(sortedByValues(log, 0), sortedByProgram(log, "Scene"));
}

TEST(SortedValues, GiveTheOrderOfASortWhateverTheValuesAre) {
    const char* pieces[] = {"",  " ", "1",  "01", "10", "2",       "a",
                            "A", "b", "2a", "2A", "-",  "\xC3\xA9"};
    std::mt19937 chance(7);
    for (int log = 0; log < 40; ++log) {
        std::string text = "One,Two\n";
        for (int row = 0; row < 60; ++row) {
            for (int cell = 0; cell < 2; ++cell) {
                for (unsigned n = chance() % 4; n > 0; --n) text += pieces[chance() % 13];
                text += cell == 0 ? ',' : '\n';
            }
        }
        const Log read = logOf(text);
        EXPECT_EQ(sortedByValues(read, 0), sortedByProgram(read, "One")) << text;
        EXPECT_EQ(sortedByValues(read, 1), sortedByProgram(read, "Two")) << text;
    }
}

TEST(SortedValues, AColumnOfTimecodesIsSortedAsSuch) {
    const std::string text =
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"12\",\"4\"\n\"timecode\",\"text\"\n\"Start\",\"Note\"\n"
        "\"01:00:00;10\",\"a\"\n\"01:00:00:10\",\"b\"\n\"01:00:00:09\",\"c\"\n\"\",\"\"\n\"\","
        "\"d\"\n";
    const Opening opening;
    Input input("log.vek", text, opening);
    const Log log = openLog(input, "log.vek", opening);
    EXPECT_EQ(sortedByValues(log, 0), sortedByProgram(log, "Start"));
    EXPECT_TRUE(sortedValues(log, 0).isSameAsBefore[2]);
}
