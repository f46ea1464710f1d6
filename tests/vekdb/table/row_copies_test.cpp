#include <vekdb/row_copies.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <vekdb/table.h>
#include "testing/capture_diagnostics.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

using Views = std::vector<std::string_view>;

// Of a file, so that its rows stand on its text.
class RowCopying : public testing::Test {
protected:
    RowCopying() {
        folder.write("log.vek",
                     "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\",\"4\"\n\"text\",\"text\",\"text\"\n"
                     "\"A\",\"B\",\"C\"\n\"a1\",\"b1\",\"c1\"\n\"a2\",\"b2\",\"c2\"\n");
        source.set_filename(folder.widePath("log.vek"));
        source.loadFromFile(10, true);
    }
    Views row(const vekdb& table, unsigned row) const {
        Views values;
        const dbrecord& record = *table.get_record(row);
        for (unsigned i = 0; i < record.get_num_fields(); ++i)
            values.push_back(record.fieldView(i));
        return values;
    }

    const testing_support::TempDir folder;
    vekdb source;
};

}  // namespace

TEST_F(RowCopying, RowsShareTheTextOfThoseTheyCameFrom) {
    vekdb table(textColumns({"A", "B", "C"}));
    RowCopies copies(table);
    EXPECT_TRUE(copies.append(*source.get_record(1)));
    EXPECT_EQ(row(table, 0), (Views{"a2", "b2", "c2"}));
    EXPECT_EQ(table.get_record(0)->fieldView(0).data(), source.get_record(1)->fieldView(0).data());
    EXPECT_EQ(table.get_record(0)->get_container(), &table);
}

TEST_F(RowCopying, ARowKeepsTheTextWhoseTableWent) {
    vekdb table(textColumns({"A", "B", "C"}));
    RowCopies(table).append(*source.get_record(0));
    source.free();
    EXPECT_EQ(row(table, 0), (Views{"a1", "b1", "c1"}));
}

TEST_F(RowCopying, ANarrowTableTakesTheFirstValuesAndAWideOneHasEmptyOnesBehind) {
    vekdb narrow(textColumns({"A", "B"}));
    RowCopies(narrow).append(*source.get_record(0));
    EXPECT_EQ(row(narrow, 0), (Views{"a1", "b1"}));
    vekdb wide(textColumns({"A", "B", "C", "D"}));
    RowCopies copies(wide);
    copies.append(*source.get_record(0));
    copies.append(*source.get_record(1), 1);
    EXPECT_EQ(row(wide, 0), (Views{"a1", "b1", "c1", ""}));
    EXPECT_EQ(row(wide, 1), (Views{"a2", "", "", ""}));
}

TEST_F(RowCopying, ChangingOneOfTwoRowsLeavesTheOther) {
    vekdb table(textColumns({"A", "B", "C"}));
    RowCopies(table).append(*source.get_record(0));
    table.set_field(0, 1, "zz");
    source.set_field(0, 0, "yy");
    EXPECT_EQ(row(table, 0), (Views{"a1", "zz", "c1"}));
    EXPECT_EQ(row(source, 0), (Views{"yy", "b1", "c1"}));
}

TEST_F(RowCopying, ValuesOfOwnStringsAreCopied) {
    source.set_field(0, 0, "longer than before");
    vekdb table(textColumns({"A", "B", "C"}));
    RowCopies(table).append(*source.get_record(0));
    EXPECT_EQ(row(table, 0), (Views{"longer than before", "b1", "c1"}));
}

TEST_F(RowCopying, ValuesOfAnySizesAreKeptByteForByte) {
    vekdb table(textColumns({"A"}));
    RowCopies copies(table);
    std::string text;
    for (unsigned size = 0; size < 80; ++size) {
        const std::string_view value = text;
        copies.append(&value, 1);
        EXPECT_EQ(row(table, size).front(), text);
        EXPECT_STREQ(table.get_record(size)->get_field(0), text.c_str());
        text += static_cast<char>('!' + size);
    }
}

TEST_F(RowCopying, AValueThatIsLongerThanSlicesReachIsAString) {
    vekdb table(textColumns({"A", "B"}));
    const std::string text(70000, 'x');
    const std::string_view values[] = {"a", text};
    RowCopies(table).append(values, 2);
    EXPECT_EQ(row(table, 0), (Views{"a", text}));
}

TEST_F(RowCopying, ARowMayBeMadeAnewOfItsOwnValues) {
    const dbrecord& record = *source.get_record(0);
    const std::string_view values[] = {record.fieldView(2), "new", record.fieldView(0)};
    EXPECT_TRUE(RowCopies(source).replace(0, values, 3));
    EXPECT_EQ(row(source, 0), (Views{"c1", "new", "a1"}));
    EXPECT_FALSE(RowCopies(source).replace(2, values, 3));
}

TEST_F(RowCopying, MarksRowsAsChangedThatWereThereAlone) {
    vekdb table(textColumns({"A", "B", "C"}));
    RowCopies copies(table);
    copies.append(*source.get_record(0));
    const std::string_view value = "x";
    copies.append(&value, 1);
    EXPECT_FALSE(table.get_modified());
    EXPECT_FALSE(table.get_record(1)->get_changed());
    copies.replace(0, &value, 1);
    EXPECT_TRUE(table.get_modified());
    EXPECT_TRUE(table.get_record(0)->get_changed());
}

TEST_F(RowCopying, WhileOnlyTaggedRowsAreShownAppendsNothing) {
    vekdb table(textColumns({"A"}));
    table.set_show_tags_only(1);
    const std::string_view value = "x";
    EXPECT_FALSE(RowCopies(table).append(&value, 1));
    EXPECT_FALSE(RowCopies(table).append(*source.get_record(0)));
    table.set_show_tags_only(0);
    EXPECT_EQ(table.get_num_records(), 0u);
}
