#include <gtest/gtest.h>

#include <string>

#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/temp_dir.h"
#include "vekdb/record/record_access.h"

namespace {

using testing_support::headerAnd;
using testing_support::joined;
using testing_support::quotedLine;
using testing_support::Random;
using testing_support::Strings;
using testing_support::TempDir;

constexpr int all = 1 << 30;

struct RangeQueries : testing::Test {
    RangeQueries() {
        Strings lines;
        for (int i = 0; i < 300; ++i) {
            const std::string second = std::to_string(10 + i % 50);
            lines.push_back(quotedLine({"A" + std::to_string(i), "01:00:" + second + ":00",
                                        "01:01:" + second + ":00", "note"}));
        }
        folder.write("log", joined(headerAnd({"Reel", "Start time", "End time", "Notes"}, lines)));
        table.set_filename(folder.widePath("log"));
        table.loadFromFile(all, true);
    }

    void ask(const std::string& text) {
        std::vector<TextSearch::Criteria> query(table.get_num_fields());
        const unsigned start = table.get_fieldnum("Start time");
        if (start < query.size()) {
            query[start] = TextSearch::Criteria(
                TextSearch::Criterion({text.data(), text.size()}, TextSearch::eMatchContains));
        }
        table.setQuery(query);
    }
    // Asked as often as it takes for keys to be there.
    void expectTagsAreRight(const std::string& text) {
        ask(text);
        for (int i = 0; i < 3; ++i) {
            table.set_all_tags(i % 2);
            unsigned matching = 0;
            const unsigned found = table.tag_matching_records(0);
            for (unsigned row = 0; row < table.get_num_records(); ++row) {
                const bool isMatch = table.match_record(static_cast<int>(row)) != 0;
                matching += isMatch;
                ASSERT_EQ(isMatch, table.get_tag(row) != 0) << text << ", row " << row;
            }
            ASSERT_EQ(matching, found);
        }
    }

    TempDir folder;
    vekdb table;
};

TEST_F(RangeQueries, FindTheSameHoweverOftenTheyAreAsked) {
    for (const char* text : {"01:00:30:00", "01:00:30", "01:0", "01:01:05:12", "9", "\xFF"}) {
        expectTagsAreRight(text);
    }
    ask("01:00:30:00");
    EXPECT_GT(table.tag_matching_records(0), 100u);
}

TEST_F(RangeQueries, AChangedValueCounts) {
    expectTagsAreRight("01:00:30:00");
    table.get_record(7)->set_field(1, "05:00:00:00");
    table.get_record(7)->set_field(2, "06:00:00:00");
    ask("05:30:00:00");
    EXPECT_EQ(1u, table.tag_matching_records(0));
    EXPECT_EQ(1u, table.get_tag(7));
}

TEST_F(RangeQueries, ATextThatEndsAtItsFirstByteIsFoundAsBefore) {
    expectTagsAreRight(std::string("\0x", 2));
}

TEST_F(RangeQueries, AColumnThatIsTakenOutOfARecordCounts) {
    expectTagsAreRight("01:00:30:00");
    table.get_record(7)->removeField(1);
    ask("01:01:17:00");
    table.tag_matching_records(0);
    EXPECT_EQ(1u, table.get_tag(7));
}

TEST_F(RangeQueries, KeysAreMadeAnewAfterAllValuesHaveChanged) {
    expectTagsAreRight("01:00:30:00");
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        table.setField(row, 1, "01:00:01:00");
    }
    EXPECT_FALSE(RecordAccess::isKeyed(*table.get_record(0)));
    expectTagsAreRight("01:00:30:00");
    EXPECT_TRUE(RecordAccess::isKeyed(*table.get_record(0)));
}

TEST_F(RangeQueries, FindTheSameWhereThereIsNoMemoryForKeys) {
    ask("01:00:30:00");
    const unsigned found = table.tag_matching_records(0);
    unsigned again = 0;
    unsigned withoutKeys = 0;
    testing_support::failEachAllocation(
        [&] {
            again = 0;
            again = table.tag_matching_records(0);
        },
        [&] { withoutKeys += again == found; });
    EXPECT_EQ(found, again);
    EXPECT_EQ(1u, withoutKeys);
    EXPECT_FALSE(RecordAccess::isKeyed(*table.get_record(0)));
    expectTagsAreRight("01:00:30");
}

TEST_F(RangeQueries, ARecordLosesItsMarkWithEveryChangeAndWithNothingElse) {
    dbrecord& record = *table.get_record(0);
    const dbrecord other(record);
    int unread = 0;
    TextFile line;
    line.appendLine("\"a\",\"b\",\"c\",\"d\"");
    const auto keeps = [&](auto act) {
        RecordAccess::markKeyed(record);
        act();
        return RecordAccess::isKeyed(record);
    };
    EXPECT_TRUE(keeps([&] { record.get_field(1); }));
    EXPECT_TRUE(keeps([&] { record.getField(1); }));
    EXPECT_TRUE(keeps([&] { record.setField(1, record.getField(1)); }));
    EXPECT_TRUE(keeps([&] { table.set_tag(0, 1); }));
    EXPECT_FALSE(keeps([&] { record.set_field(3, "other"); }));
    EXPECT_FALSE(keeps([&] { record.removeField(0); }));
    EXPECT_FALSE(keeps([&] { record.resizeRecord(2, &unread, false); }));
    EXPECT_FALSE(keeps([&] { record.clear(); }));
    EXPECT_FALSE(keeps([&] { record = other; }));
    EXPECT_FALSE(keeps([&] { record.read(line); }));
    dbrecord& another = *table.get_record(1);
    RecordAccess::markKeyed(another);
    another.set_field(1, "02:00:11:00");
    EXPECT_FALSE(RecordAccess::isKeyed(another));
    RecordAccess::markKeyed(another);
    EXPECT_FALSE(RecordAccess::isKeyed(dbrecord(another)));
}

TEST_F(RangeQueries, RowsThatWereAppendedCount) {
    expectTagsAreRight("01:00:30:00");
    const unsigned row = table.add_records(1);
    table.get_record(row)->set_field(1, "05:00:00:00");
    table.get_record(row)->set_field(2, "06:00:00:00");
    ask("05:30:00:00");
    EXPECT_EQ(1u, table.tag_matching_records(0));
}

TEST_F(RangeQueries, AnotherQueryAtTheSameTimeCounts) {
    ask("01:00:30:00");
    std::vector<TextSearch::Criteria> query(table.get_num_fields());
    query[0] = TextSearch::Criteria(TextSearch::Criterion("A7", TextSearch::eMatchContains));
    query[1] =
        TextSearch::Criteria(TextSearch::Criterion("01:00:30:00", TextSearch::eMatchContains));
    table.setQuery(query);
    const unsigned first = table.tag_matching_records(0);
    EXPECT_GT(first, 0u);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(first, table.tag_matching_records(0));
}

TEST_F(RangeQueries, OfATableThatWasLoadedAnewAreOfItsNewRows) {
    expectTagsAreRight("01:00:30:00");
    folder.write("log", joined(headerAnd({"Start time", "End time"},
                                         {quotedLine({"07:00:00:00", "08:00:00:00"})})));
    table.loadFromFile(all, true);
    ask("07:30:00:00");
    for (int i = 0; i < 4; ++i) EXPECT_EQ(1u, table.tag_matching_records(0));
}

// One of the many ways in which rows and their values change.
void changeSomething(Random& random, vekdb& table) {
    const unsigned rows = table.get_num_records();
    const auto row = static_cast<unsigned>(random.below(rows));
    dbrecord* record = table.get_record(row);
    const auto column = static_cast<unsigned short>(random.below(table.get_num_fields()));
    const std::string value = "01:00:" + std::to_string(random.between(10, 59)) + ":00";
    int unread = 0;
    int byReel[] = {static_cast<int>(random.below(table.get_num_fields())), -1};
    switch (rows == 0 ? 0 : random.below(18)) {
        case 0:
            table.add_records(1 + static_cast<int>(random.below(3)));
            return;
        case 1:
            return table.insert_records(row, 1);
        case 2:
            return table.delete_records(row, 1 + static_cast<int>(random.below(3)));
        case 3:
            table.set_sortfields(byReel);
            table.sort(0, 0);
            return;
        case 4:
            return record->clear();
        case 5:
            *record = *table.get_record(static_cast<unsigned>(random.below(rows)));
            return;
        case 6:
            return record->removeField(column);
        case 7:
            return record->resizeRecord(static_cast<int>(random.below(6)), &unread, false);
        case 8: {
            TextFile line;
            line.appendLine(quotedLine({"B", value, "01:01:00:00", "x"}));
            record->read(line);
            return;
        }
        case 9:
            return table.copy_record(row, table.get_record(0));
        case 10:
            table.addField({"Extra", DBFieldTypes::text});
            return;
        case 11:
            return table.removeField(random.oneIn(2) ? "Extra" : "Notes");
        case 12:
            return table.set_show_tags_only(random.oneIn(2));
        case 13:
            record->setField(column, value.c_str());
            return;
        case 14:
            for (unsigned i = 0; i < rows; ++i) table.setField(i, column, value.c_str());
            return;
        default:
            record->set_field(column, value.c_str());
    }
}

TEST_F(RangeQueries, FindWhatEachRowAnswersWhateverChangesBetweenThem) {
    Random random;
    for (int i = 0; i < 1500; ++i) {
        for (std::size_t changes = random.below(4); changes > 0; --changes) {
            changeSomething(random, table);
        }
        const std::string text = "01:00:" + std::to_string(random.between(10, 59)) + ":00";
        if (random.oneIn(2)) {
            ASSERT_NO_FATAL_FAILURE(
                expectTagsAreRight(text.substr(0, 1 + random.below(text.size()))));
        } else {
            ask(text);
            table.tag_matching_records(0);
        }
    }
}

TEST_F(RangeQueries, OfTaggedRowsAloneFindTheSame) {
    expectTagsAreRight("01:00:30:00");
    for (unsigned row = 0; row < 300; ++row) table.set_tag(row, row % 3);
    table.set_show_tags_only(1);
    expectTagsAreRight("01:00:30:00");
    expectTagsAreRight("01:00:59:00");
}

}  // namespace
