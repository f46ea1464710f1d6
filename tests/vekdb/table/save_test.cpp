#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::joined;
using testing_support::linesOf;
using testing_support::rowsOf;
using testing_support::Strings;
using testing_support::TempDir;
using Rows = std::vector<Strings>;

class Save : public testing::Test {
protected:
    void name(vekdb& table) { table.set_filename(folder.widePath("log.vek")); }
    Strings saved() const {
        TextFile file;
        EXPECT_TRUE(file.load(folder.widePath("log.vek"), '\n', false));
        return linesOf(file);
    }
    std::unique_ptr<vekdb> reload(bool magic = true) const {
        return std::make_unique<vekdb>(folder.widePath("log.vek"), 1 << 30, magic);
    }

    TempDir folder;
};

class SaveTable : public Save {
protected:
    SaveTable() : table(textColumns({"Reel", "Tag", "Notes"})) {
        name(table);
        addRow(table, {"A001", "hello", "n\"1\""});
        addRow(table, {"A002", "", ""});
        addRow(table, {"A003", "x", "last"});
        table.clear_changed();
    }
    vekdb table;
};

// Does something once, in the middle of a save.
struct Interrupts : vekdb {
    using vekdb::set_field;
    using vekdb::vekdb;
    bool set_field(unsigned row, unsigned field, const char* text) override {
        if (auto action = std::exchange(inTheMiddle, nullptr)) action();
        return vekdb::set_field(row, field, text);
    }
    std::function<void()> inTheMiddle;
};

class SaveInterrupted : public Save {
protected:
    SaveInterrupted() : table(textColumns({"Reel", "Tag"})) {
        name(table);
        addRow(table, {"A001", ""});
        addRow(table, {"A002", ""});
        EXPECT_EQ(2, table.save_text());
        table.set_tag(1, 1);
    }
    Interrupts table;
};

TEST_F(SaveInterrupted, ARenamedTableGoesWhereItIsThenCalled) {
    const Strings before = saved();
    table.inTheMiddle = [&] { table.set_filename(folder.widePath("other.vek")); };
    EXPECT_EQ(2, table.save_text());
    EXPECT_EQ(before, saved());
    TextFile other;
    ASSERT_TRUE(other.load(folder.widePath("other.vek"), '\n', false));
    EXPECT_EQ(std::string_view("\"A002\",\"1\""), other.line(5));
}

TEST_F(SaveInterrupted, TheFileKeepsTheModeThatItThenHas) {
    using std::filesystem::perms;
    for (const bool header : {true, false}) {
        const perms mode = header ? perms::owner_all : perms::owner_read | perms::owner_write;
        table.inTheMiddle = [&] {
            std::filesystem::permissions(folder.file("log.vek"), mode);
            EXPECT_EQ((std::vector<std::string>{"log.vek"}), folder.names());
        };
        EXPECT_EQ(2, header ? table.save_text() : table.save_text_without_header());
        EXPECT_EQ(mode, std::filesystem::status(folder.file("log.vek")).permissions());
    }
}

TEST_F(Save, TheWholeLayout) {
    vekdb table({{"Reel", DBFieldTypes::text},
                 {"Scene", DBFieldTypes::text},
                 {"Take", DBFieldTypes::long_integer},
                 {"Notes", DBFieldTypes::text}});
    name(table);
    table.add_param("Project", "Night shoot");
    addRow(table, {"A001", "12", "3", "He said \"cut\"\nthen left"});
    addRow(table, {"A002", "12A", "", ""});
    EXPECT_EQ(2, table.save_text());
    EXPECT_EQ(
        "\"VEKDB:Rev 1\"\n"
        "\"Project:Night shoot\"\n"
        "\"VEKDB\"\n"
        "\"10\",\"24\",\"4\",\"100\"\n"
        "\"text\",\"text\",\"long\",\"text\"\n"
        "\"Reel\",\"Scene\",\"Take\",\"Notes\"\n"
        "\"A001\",\"12\",\"3\",\"He said \"\"cut\"\"\\nthen left\"\n"
        "\"A002\",\"12A\",\"\",\"\"\n",
        folder.read("log.vek"));
}

TEST_F(Save, EveryTypeHasItsWrittenName) {
    std::vector<DBFieldDesc> fields;
    for (const char letter : std::string("aAtTdDMflncxq\xE9")) {
        fields.push_back(
            {"f", static_cast<DBFieldTypes::eType>(static_cast<unsigned char>(letter))});
    }
    vekdb table(fields);
    table.addField({"none", DBFieldTypes::none});
    TextFile file;
    table.save_column_header(file, false);
    EXPECT_EQ(
        "\"text\",\"text_s\",\"timecode\",\"timecode_s\",\"date\",\"time_of_day\","
        "\"dos_date\",\"double\",\"long\",\"numeric\",\"c\",\"x\",\"q\",\"\xE9\",\"\"",
        linesOf(file)[2]);
}

TEST_F(Save, WidthsAreTheLargerOfTheLongestValueAndTheNamesMinimum) {
    vekdb table(textColumns({"Scene", "Unknown", "Take"}));
    addRow(table, {"short", "123456789", "\xC3\xA9\xC3\xA9\xC3\xA9"});
    addRow(table, {std::string(30, 'x').c_str(), "", ""});
    TextFile file;
    table.save_column_header(file, false);
    EXPECT_EQ("\"30\",\"9\",\"6\"", linesOf(file)[1]);
}

TEST_F(Save, WidthsCountRowsThatAreNotShown) {
    vekdb table(textColumns({"Unknown"}));
    addRow(table, {"1234567"});
    table.set_show_tags_only(1);
    TextFile file;
    table.save_column_header(file, false);
    EXPECT_EQ("\"7\"", linesOf(file)[1]);
}

class OwnSizes : public vekdb {
public:
    using vekdb::vekdb;
    unsigned get_fieldsize(unsigned field) const override { return 1000 + field; }
    const char* get_fieldname(unsigned) const override { return "Notes"; }
};

TEST_F(Save, WidthsComeThroughTheInterfaceNamesAsTheyAreStored) {
    OwnSizes table(textColumns({"A", "B"}));
    TextFile file;
    table.save_column_header(file, false);
    EXPECT_EQ((Strings{"\"VEKDB\"", "\"1000\",\"1001\"", "\"text\",\"text\"", "\"A\",\"B\""}),
              linesOf(file));
}

TEST_F(Save, SizesAskedForAfterwardsAreThoseOfTheRowsThen) {
    vekdb table(textColumns({"A"}));
    addRow(table, {"12"});
    TextFile file;
    table.save_column_header(file, false);
    table.set_field(0, 0, "12345");
    EXPECT_EQ(5u, table.get_fieldsize(0));
}

TEST_F(Save, WidthsAreThoseOfTheLongestValuesHoweverManyColumnsThereAre) {
    testing_support::Random random;
    for (unsigned columns = 1; columns < 40; ++columns) {
        Strings lines;
        for (std::size_t i = random.below(9); i > 0; --i) {
            Strings values(columns);
            for (std::string& value : values) value = random.text("a", random.oneIn(9) ? 3000 : 9);
            if (random.oneIn(3)) values[0] += "\\\\";  // no plainly quoted line
            lines.push_back(testing_support::quotedLine(values));
        }
        folder.write("in", joined(testing_support::headerAnd(Strings(columns, "c"), lines)));
        vekdb table(folder.widePath("in"), 100, true);
        ASSERT_EQ(lines.size(), table.get_num_records());
        if (table.get_num_records() > 2) table.set_field(1, columns - 1, "now a string");
        std::string widths;
        for (unsigned i = 0; i < columns; ++i) {
            const auto least = static_cast<unsigned>(vekdb::getMinFieldSize("c"));
            const unsigned width = std::max(least, table.get_fieldsize(i));
            widths += (i > 0 ? ",\"" : "\"") + std::to_string(width) + "\"";
        }
        TextFile file;
        table.save_column_header(file, false);
        ASSERT_EQ(widths, linesOf(file)[1]);
    }
}

TEST_F(Save, NamesOnlyIsOneLine) {
    vekdb table(textColumns({"A", "", "C"}));
    TextFile file;
    table.save_column_header(file, true);
    EXPECT_EQ(Strings{"\"A\",\"\",\"C\""}, linesOf(file));
}

TEST_F(Save, OneColumnIsWrittenWithoutCommas) {
    vekdb table(textColumns({"A"}));
    TextFile file;
    table.save_column_header(file, false);
    EXPECT_EQ((Strings{"\"VEKDB\"", "\"4\"", "\"text\"", "\"A\""}), linesOf(file));
}

TEST_F(Save, LongNamesAreShortenedSoThatTheirEntriesFitAndTheFileLoads) {
    const std::string longName(300, 'x');
    vekdb table(textColumns({longName.c_str(), longName.c_str()}));
    name(table);
    table.add_param("P", "p");
    addRow(table, {"a", "b"});
    EXPECT_EQ(1, table.save_text());
    const std::string x251(251, 'x');
    EXPECT_EQ("\"" + x251 + "\",\"" + x251 + "x\"", saved()[5]);
    EXPECT_EQ((Rows{{"a", "b"}}), rowsOf(*reload()));
}

TEST_F(Save, ParametersAreWrittenInTheirOrderAndUnescaped) {
    vekdb table(textColumns({"A"}));
    table.add_param("b", "two \"words\"");
    table.add_param("a", "x:y");
    table.add_param("empty", "");
    TextFile file;
    table.save_params(file);
    EXPECT_EQ((Strings{"\"VEKDB:Rev 1\"", "\"b:two \"words\"\"", "\"a:x:y\"", "\"empty:\""}),
              linesOf(file));
}

TEST_F(Save, ATableWithoutParametersIsWrittenWithoutABlockAndDoesNotLoad) {
    vekdb table(textColumns({"A"}));
    name(table);
    addRow(table, {"a"});
    EXPECT_EQ(1, table.save_text());
    EXPECT_EQ("\"VEKDB\"", saved()[0]);
    EXPECT_FALSE(reload()->get_valid());
    dberror error;
    EXPECT_FALSE(reload()->read_error_info(error));
}

TEST_F(Save, AnEmptyTableAnswersZeroAndWritesItsHeader) {
    vekdb table(textColumns({"A"}));
    name(table);
    table.add_param("P", "p");
    EXPECT_EQ(0, table.save_text());
    EXPECT_EQ(6u, saved().size());
    EXPECT_TRUE(reload()->get_valid());
    EXPECT_EQ(1u, reload()->get_num_fields());
}

TEST_F(Save, ATableWithoutColumnsSavesAndLoads) {
    vekdb table;
    name(table);
    table.add_param("P", "p");
    EXPECT_EQ(0, table.save_text());
    auto again = reload();
    EXPECT_TRUE(again->get_valid());
    EXPECT_EQ(0u, again->get_num_fields());
}

TEST_F(Save, ADamagedHeadersTableCanBeSaved) {
    folder.write("log.vek", "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"1\",\"2\"\n\"text\"\n");
    auto table = reload();
    ASSERT_FALSE(table->get_valid());
    EXPECT_EQ(0, table->save_text());
    EXPECT_EQ((Strings{"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"4\",\"4\"", "\"\",\"\"", "\"\",\"\""}),
              saved());
}

TEST_F(Save, ANameWithALineFeedOrAQuoteIsWrittenAsItIs) {
    vekdb table(textColumns({"5\" reel", "B"}));
    name(table);
    table.add_param("P", "p");
    table.save_text();
    EXPECT_STREQ("5 reel", reload()->get_fieldname(0));
    table.set_fieldname(0, "a\",b");
    table.save_text();
    dberror error;
    ASSERT_TRUE(reload()->read_error_info(error));
    EXPECT_EQ(4, error.values[1]);
    table.set_fieldname(0, "a\nb");
    table.save_text();
    EXPECT_FALSE(reload()->get_valid());
}

TEST_F(SaveTable, SaveTextStoresTheTagsWhateverTheColumnHeld) {
    table.set_tag(0, 1);
    table.set_tag(2, 200);
    EXPECT_EQ(3, table.save_text());
    EXPECT_EQ((Strings{"1", "0", "200"}), columnOf(table, 1));
    EXPECT_EQ("\"A001\",\"1\",\"n\"\"1\"\"\"", saved()[4]);
    EXPECT_EQ("\"A002\",\"0\",\"\"", saved()[5]);
    EXPECT_EQ("\"A003\",\"200\",\"last\"", saved()[6]);
}

TEST_F(SaveTable, WidthsAreWrittenBeforeTheTagsAreStored) {
    table.set_tag(0, 1);
    TextFile file;
    table.save_column_header(file, false);
    const std::string before = linesOf(file)[1];
    EXPECT_EQ("\"10\",\"5\",\"100\"", before);
    table.save_text();
    EXPECT_EQ(before, saved()[1]);
    table.save_text();
    EXPECT_NE(before, saved()[1]);
}

TEST_F(SaveTable, TagsAreNotRestoredByLoading) {
    table.add_param("P", "p");
    table.set_all_tags(1);
    table.save_text();
    auto again = reload();
    EXPECT_EQ((Strings{"1", "1", "1"}), columnOf(*again, 1));
    EXPECT_EQ(0u, again->get_num_tags());
}

TEST_F(SaveTable, TheModifiedFlagStaysAsItWas) {
    ASSERT_FALSE(table.get_modified());
    table.save_text();
    EXPECT_FALSE(table.get_modified());
    table.save_text_without_header();
    EXPECT_FALSE(table.get_modified());
    table.set_field(0, 0, "new");
    table.save_text();
    EXPECT_TRUE(table.get_modified());
    table.save_tags();
    EXPECT_TRUE(table.get_modified());
}

TEST_F(SaveTable, ChangedFlagsAreClearedAlsoWhenTheSaveFails) {
    for (const bool fails : {false, true}) {
        table.set_field(1, 0, "new");
        if (fails) table.set_filename(folder.widePath("missing/log.vek"));
        EXPECT_EQ(fails ? 0 : 3, table.save_text());
        EXPECT_FALSE(table.get_record(1)->get_changed());
    }
    EXPECT_EQ(0, table.save_text_without_header());
    EXPECT_EQ(0, table.save_tags());
    EXPECT_EQ((Strings{"log.vek"}), folder.names());
}

TEST_F(SaveTable, ATableWithoutAFileNameIsNotSaved) {
    table.set_filename(nullptr);
    EXPECT_EQ(0, table.save_text());
    EXPECT_EQ(0, table.save_tags());
}

TEST_F(SaveTable, HiddenRowsAreSavedWithTheirOwnTags) {
    table.set_tag(1, 2);
    table.set_show_tags_only(1);
    ASSERT_EQ(1u, table.get_num_records());
    EXPECT_EQ(3, table.save_text());
    table.set_show_tags_only(0);
    EXPECT_EQ((Strings{"0", "2", "0"}), columnOf(table, 1));
    EXPECT_EQ("\"A003\",\"0\",\"last\"", saved()[6]);
}

class CountsStores : public vekdb {
public:
    using vekdb::set_field;
    using vekdb::vekdb;
    bool set_field(unsigned row, unsigned field, const char* text) override {
        stored.push_back(std::to_string(row) + ":" + std::to_string(field) + "=" + text);
        return vekdb::set_field(row, field, text);
    }
    unsigned get_fieldnum(LightweightString<char> name) const override {
        lookedUp += name == "Tag";
        return vekdb::get_fieldnum(name);
    }
    Strings stored;
    mutable unsigned lookedUp = 0;
};

TEST_F(Save, TagsAreStoredThroughTheTable) {
    CountsStores table(textColumns({"A", "tag"}));
    name(table);
    table.add_records(2);
    table.set_tag(1, 1);
    EXPECT_EQ(2, table.save_text());
    EXPECT_EQ((Strings{"0:1=0", "1:1=1"}), table.stored);
    EXPECT_EQ(1u, table.lookedUp);
    EXPECT_EQ(2, table.save_text_without_header());
    EXPECT_EQ(4u, table.stored.size());
    EXPECT_EQ(3u, table.lookedUp);
}

TEST_F(SaveTable, ARowThatBelongsToAnotherTableTellsThatOneOfItsTag) {
    vekdb other(textColumns({"A"}));
    table.set_field(1, 1, "0");
    table.get_record(1)->set_container(&other);
    EXPECT_FALSE(other.get_modified());
    EXPECT_EQ(3, table.save_text());
    EXPECT_TRUE(other.get_modified());
    EXPECT_STREQ("0", table.get_record(1)->get_field(1));
}

TEST_F(SaveTable, SaveTagsWritesTheTaggedRecordsAsTheyAre) {
    table.set_tag(0, 1);
    table.set_tag(2, 2);
    table.set_field(1, 0, "new");
    table.set_field(2, 0, "new");
    EXPECT_EQ(1, table.save_tags());
    const Strings lines = saved();
    EXPECT_EQ((Strings{"\"A001\",\"hello\",\"n\"\"1\"\"\"", "\"new\",\"x\",\"last\""}),
              Strings(lines.begin() + 4, lines.end()));
    EXPECT_TRUE(table.get_record(1)->get_changed());
    EXPECT_FALSE(table.get_record(2)->get_changed());
}

TEST_F(SaveTable, SaveTagsWithoutTaggedRecordsWritesTheHeader) {
    table.add_param("P", "p");
    EXPECT_EQ(1, table.save_tags());
    EXPECT_EQ((Strings{"\"VEKDB:Rev 1\"", "\"P:p\"", "\"VEKDB\"", "\"10\",\"5\",\"100\"",
                       "\"text\",\"text\",\"text\"", "\"Reel\",\"Tag\",\"Notes\""}),
              saved());
}

TEST_F(SaveTable, WithoutHeaderTheNamesFollowTheParameters) {
    table.add_param("P", "p");
    EXPECT_EQ(3, table.save_text_without_header());
    EXPECT_EQ((Strings{"\"VEKDB:Rev 1\"", "\"P:p\"", "\"Reel\",\"Tag\",\"Notes\"",
                       "\"A001\",\"0\",\"n\"\"1\"\"\"", "\"A002\",\"0\",\"\"",
                       "\"A003\",\"0\",\"last\""}),
              saved());
    EXPECT_FALSE(reload(true)->get_valid());
    EXPECT_EQ(rowsOf(table), rowsOf(*reload(false)));
}

TEST_F(Save, ARecordOfAnotherLengthIsWrittenAndEndsTheLoadingThere) {
    vekdb table(textColumns({"A"}));
    name(table);
    table.add_param("P", "p");
    addRow(table, {"a"});
    addRow(table, {"b"});
    const int unread = 0;
    table.get_record(1)->resizeRecord(2, &unread, false);
    EXPECT_EQ(2, table.save_text());
    EXPECT_EQ("\"b\",\"\"", saved()[7]);
    EXPECT_EQ(Rows{{"a"}}, rowsOf(*reload()));
}

TEST_F(Save, ACsvIsSavedAsATableFileUnderItsName) {
    folder.write("log.csv", "A,B\n1,2\n");
    vekdb table(folder.widePath("log.csv"), 10, true);
    EXPECT_EQ(1, table.save_text());
    vekdb again(folder.widePath("log.csv"), 10, true);
    EXPECT_STREQ("\"VEKDB\"", again.get_fieldname(0));
}

TEST_F(Save, ALoadedTableIsSavedAsItWasRead) {
    const std::string text =
        "\"VEKDB:Rev 1\"\n\"A:b\"\n\"VEKDB\"\n\"10\",\"5\"\n"
        "\"text\",\"timecode\"\n\"Reel\",\"B\"\n"
        "\"a\",\"b\"\n\"\",\"c\"\"d\\ne\"\n\"x,y\",\"\"\n";
    folder.write("log.vek", text);
    EXPECT_EQ(3, reload()->save_text());
    EXPECT_EQ(text, folder.read("log.vek"));
}

TEST_F(SaveTable, ASaveWithoutMemoryLeavesTableAndFileAsTheyWere) {
    table.add_param("P", "p");
    table.save_text();
    table.clear_changed();
    const std::string before = folder.read("log.vek");
    const std::vector<Strings> rows = rowsOf(table);
    table.set_tag(1, 1);
    const unsigned failures =
        testing_support::failEachAllocation([&] { table.save_text(); },
                                            [&] {
                                                EXPECT_EQ(before, folder.read("log.vek"));
                                                EXPECT_FALSE(table.get_modified());
                                            });
    EXPECT_GT(failures, 2u);
    EXPECT_EQ("1", std::string(table.getField(1, 1).c_str()));
    EXPECT_EQ(rows.size(), rowsOf(table).size());
}

}  // namespace
