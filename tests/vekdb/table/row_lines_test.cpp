#include <vekdb/row_lines.h>

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/table.h>
#include "testing/temp_dir.h"

namespace {

constexpr const char* heading =
    "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"A\",\"B\"\n";

class RowLinesOfATable : public testing::Test {
protected:
    void load(const std::string& rows) {
        folder.write("log.vek", heading + rows);
        table.set_filename(folder.widePath("log.vek"));
        table.loadFromFile(100000, true);
    }
    std::string lines(const std::vector<unsigned>& rows, std::size_t bytes = 1 << 20) const {
        TextFile text;
        done = RowLines(table).append(rows.data(), rows.size(), bytes, text);
        return text.block() ? std::string(text.block()->data(), text.textSize()) : std::string();
    }

    const testing_support::TempDir folder;
    vekdb table;
    mutable std::size_t done = 0;
};

}  // namespace

TEST_F(RowLinesOfATable, StandInTheOrderThatIsAskedFor) {
    load("\"a1\",\"b1\"\n\"a2\",\"\"\n\"a3\",\"b3\"\n");
    EXPECT_EQ(lines({2, 0, 1, 0}), "\"a3\",\"b3\"\n\"a1\",\"b1\"\n\"a2\",\"\"\n\"a1\",\"b1\"\n");
    EXPECT_EQ(done, 4u);
}

TEST_F(RowLinesOfATable, EndWhereThereAreEnoughBytes) {
    load("\"a1\",\"b1\"\n\"a2\",\"b2\"\n\"a3\",\"b3\"\n");
    EXPECT_EQ(lines({0, 1, 2}, 12), "\"a1\",\"b1\"\n\"a2\",\"b2\"\n");
    EXPECT_EQ(done, 2u);
    EXPECT_EQ(lines({}), "");
}

TEST_F(RowLinesOfATable, AreTheSameForManyRowsInAnyOrder) {
    constexpr unsigned count = 1000;
    std::string rows;
    for (unsigned i = 0; i < count; ++i) rows += "\"" + std::to_string(i) + "\",\"b\"\n";
    load(rows);
    std::vector<unsigned> order(count);
    std::iota(order.begin(), order.end(), 0u);
    EXPECT_EQ(lines(order), rows);
    std::swap(order.front(), order.back());
    EXPECT_EQ(lines(order).substr(0, 10), "\"999\",\"b\"\n");
}

TEST_F(RowLinesOfATable, LeaveWhatIsMarkedAsChanged) {
    load("\"a1\",\"b1\"\n\"a2\",\"b2\"\n");
    table.clear_changed();
    table.set_field(0, 1u, "c1");
    EXPECT_EQ(lines({0, 1}), "\"a1\",\"c1\"\n\"a2\",\"b2\"\n");
    EXPECT_TRUE(table.get_record(0)->get_changed());
    EXPECT_FALSE(table.get_record(1)->get_changed());
}

TEST_F(RowLinesOfATable, AreKnownInAdvanceForRowsOfPlainlyQuotedLines) {
    load(
        "\"a1\",\"b1\"\n\"a2\",b2\n\" a3\",\"b3\"\n\"a\"\"4\",\"b4\"\n\"a5\",\"\\n\"\n\"\",\"\"\n");
    const std::size_t sizes[] = {9, 0, 0, 0, 0, 5};
    for (unsigned i = 0; i < 6; ++i) {
        EXPECT_EQ(RowLines::sizeAsRead(*table.get_record(i)), sizes[i]) << i;
        EXPECT_EQ(RowLines::isAsRead(*table.get_record(i)), sizes[i] != 0) << i;
    }
}

TEST_F(RowLinesOfATable, AreNotKnownOfARowThatWasChanged) {
    load("\"a1\",\"b1\"\n\"a2\",\"b2\"\n\"a3\",\"b3\"\n");
    table.set_field(0, 0u, "x1");
    table.set_field(1, 0u, "longer");
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_FALSE(RowLines::isAsRead(*table.get_record(i))) << i;
        EXPECT_EQ(RowLines::sizeAsRead(*table.get_record(i)), 0u) << i;
    }
    EXPECT_EQ(RowLines::sizeAsRead(*table.get_record(2)), 9u);
}

TEST_F(RowLinesOfATable, AreLongerThanThatWhereAColumnWasAdded) {
    load("\"a1\",\"b1\"\n");
    table.addField({"C", DBFieldTypes::text});
    EXPECT_TRUE(RowLines::isAsRead(*table.get_record(0)));
    EXPECT_EQ(RowLines::sizeAsRead(*table.get_record(0)), 0u);
    EXPECT_EQ(lines({0}), "\"a1\",\"b1\",\"\"\n");
}

TEST_F(RowLinesOfATable, KnowWhereTheirLineBeganInTheFile) {
    const std::string rows[] = {"\"a1\",\"b1\"\n", " a2,b2\r\n", "\"a\"\"3\",\"b3\"\n",
                                "\"a4\",\"b4\""};
    load(rows[0] + rows[1] + rows[2] + rows[3]);
    std::size_t place = std::string(heading).size();
    for (unsigned i = 0; i < 4; ++i) {
        EXPECT_EQ(RowLines::placeAsRead(*table.get_record(i)), place) << i;
        place += rows[i].size();
    }
    table.insert_records(0, 1);
    EXPECT_EQ(RowLines::placeAsRead(*table.get_record(0)), std::nullopt);
}
