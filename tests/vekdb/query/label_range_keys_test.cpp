#include "vekdb/query/label_range_keys.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "testing/random.h"

namespace {

using testing_support::Random;

// Little that differs, and bytes at both ends of what a byte can be.
std::string someText(Random& random) {
    static const std::string stems[] = {"", "01:00:0", "01:00:00:0",
                                        "\xFF\xFF\xFF\xFF\xFF\xFF\xFF"};
    return random.pick(stems) + random.text("01:\x01\xFF", 3);
}

struct RangeFilters : testing::Test {
    // What the filter says of a record with the key of these values.
    static bool rulesOut(std::string_view start, std::string_view end, std::string_view text) {
        const RangeKey key = RangeKey::of(start, end);
        dbrecord record(0);
        RecordAccess::markKeyed(record);
        return RangeFilter(&key, text).rulesOut(record, 0);
    }
};

TEST_F(RangeFilters, RulesOutWhatItsFirstEightBytesTell) {
    EXPECT_TRUE(rulesOut("02:00:00:00", "02:00:10:00", "01:00:00:00"));
    EXPECT_TRUE(rulesOut("02:00:00:00", "02:00:10:00", "03:00:00:00"));
    EXPECT_FALSE(rulesOut("02:00:00:00", "02:00:10:00", "02:00:05:00"));
    EXPECT_TRUE(rulesOut("", "02:00:10:00", "01:00:00:00"));
    EXPECT_TRUE(rulesOut("01:00:00:00", "", "01:00:01:00"));
    EXPECT_TRUE(rulesOut("02", "03", "04:00"));
    EXPECT_FALSE(rulesOut("02", "04", "04"));
}

TEST_F(RangeFilters, LeavesToTheValuesWhatThoseDoNotTell) {
    EXPECT_FALSE(rulesOut("02:00:00:10", "02:00:00:20", "02:00:00:05"));
    EXPECT_FALSE(rulesOut("02:00:00:00", "", "02:00"));
}

TEST_F(RangeFilters, RulesNothingOutThatHoldsTheText) {
    Random random;
    unsigned ruledOut = 0;
    for (int i = 0; i < 200000; ++i) {
        const std::string start = someText(random);
        const std::string end = someText(random);
        std::string text = someText(random);
        if (text.empty()) text = "0";
        if (!rulesOut(start, end, text)) continue;
        ++ruledOut;
        ASSERT_FALSE(rangeHolds(start, end, text)) << start << ' ' << end << ' ' << text;
    }
    EXPECT_GT(ruledOut, 20000u);
}

// Rows that stand in order, each of two values.
struct StandingRows {
    explicit StandingRows(unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            made.push_back(std::make_unique<dbrecord>(2));
            records.push_back(made.back().get());
        }
    }
    // As two runs, the second from `at` on.
    RowsInOrder inOrder(unsigned at = 0) const {
        const auto count = static_cast<unsigned>(records.size());
        return {{{records.data(), at}, {records.data() + at, count - at}}, order};
    }

    std::vector<std::unique_ptr<dbrecord>> made;
    std::vector<dbrecord*> records;
    std::uint64_t order = 0;
};

TEST(LabelRangeKeys, AreMadeForTheSecondTimeThatTheSameIsAsked) {
    StandingRows rows(10);
    LabelRangeKeys keys;
    const RangeQuestion starts = {{0, 1}, "01"};
    EXPECT_FALSE(keys.filterFor(&starts, rows.inOrder()).isOn());
    EXPECT_TRUE(keys.filterFor(&starts, rows.inOrder()).isOn());
    EXPECT_FALSE(keys.filterFor(nullptr, rows.inOrder()).isOn());
    EXPECT_TRUE(keys.filterFor(&starts, rows.inOrder()).isOn());
    const RangeQuestion others = {{1, 0}, "01"};
    EXPECT_FALSE(keys.filterFor(&others, rows.inOrder()).isOn());
    EXPECT_TRUE(keys.filterFor(&others, rows.inOrder()).isOn());
    ++rows.order;
    EXPECT_FALSE(keys.filterFor(&others, rows.inOrder()).isOn());
    EXPECT_TRUE(keys.filterFor(&others, rows.inOrder()).isOn());
}

TEST(LabelRangeKeys, AreThoseOfTheirRowsInBothRuns) {
    StandingRows rows(10);
    for (unsigned row = 0; row < 10; ++row) {
        const std::string start = "0" + std::to_string(row) + ":00";
        rows.records[row]->set_field(0, start.c_str());
        rows.records[row]->set_field(1, start.c_str());
    }
    LabelRangeKeys keys;
    const RangeQuestion asked = {{0, 1}, "07:00"};
    keys.filterFor(&asked, rows.inOrder(4));
    RangeFilter filter = keys.filterFor(&asked, rows.inOrder(4));
    for (unsigned row = 0; row < 10; ++row) {
        EXPECT_EQ(row != 7, filter.rulesOut(*rows.records[row], row)) << row;
    }
}

TEST(LabelRangeKeys, AreGivenUpWhereTooManyRowsHaveChanged) {
    StandingRows rows(80);
    LabelRangeKeys keys;
    const RangeQuestion asked = {{0, 1}, "01"};
    keys.filterFor(&asked, rows.inOrder());
    for (const unsigned changed : {10u, 11u}) {
        RangeFilter filter = keys.filterFor(&asked, rows.inOrder());
        ASSERT_TRUE(filter.isOn());
        for (unsigned row = 0; row < changed; ++row) rows.records[row]->set_field(0, "02");
        for (unsigned row = 0; row < 80; ++row) {
            EXPECT_EQ(row >= changed, filter.rulesOut(*rows.records[row], row));
        }
        keys.note(filter, 80);
        EXPECT_EQ(changed == 10, keys.filterFor(&asked, rows.inOrder()).isOn());
    }
}

}  // namespace
