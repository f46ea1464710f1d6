#include <gtest/gtest.h>

#include <vekdb/table.h>
#include "testing/capture_diagnostics.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

using Values = std::vector<std::string>;

std::vector<DBFieldDesc> timecodeColumn(DBFieldTypes::eType type) {
    return {{"End time", type}};
}

// --- merge_all_matching

TEST(Merge, AppendsEveryRowWithTheColumnsThatBothHave) {
    vekdb target(textColumns({"Reel", "Scene", "Notes"}));
    addRow(target, {"A1", "1", "first"});
    vekdb source(textColumns({"scene", "Take", "REEL"}));
    addRow(source, {"2", "5", "B1"});
    addRow(source, {"3", "6", "B2"});
    EXPECT_EQ(1, target.merge_all_matching(&source));
    EXPECT_EQ((Values{"A1", "B1", "B2"}), columnOf(target, 0));
    EXPECT_EQ((Values{"1", "2", "3"}), columnOf(target, 1));
    EXPECT_EQ((Values{"first", "", ""}), columnOf(target, 2));
    EXPECT_EQ(3u, target.get_num_fields());
    EXPECT_EQ(&target, target.get_record(2)->get_container());
}

namespace {

// Of a file, so that its rows stand on the text.
void loadTable(vekdb& table, const testing_support::TempDir& folder, const std::string& text) {
    folder.write("source.vek", text);
    table.set_filename(folder.widePath("source.vek"));
    table.loadFromFile(10, true);
}

}  // namespace

TEST(Merge, CopiesTheValuesOfALoadedTableWhoseColumnsStandInAnotherOrder) {
    const testing_support::TempDir folder;
    const std::string longest(300, 'x');
    vekdb source;
    loadTable(source, folder,
              "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"1\",\"1\",\"1\"\n\"text\",\"text\",\"text\"\n"
              "\"C\",\"A\",\"B\"\n\"c1\",\"a value of some length\",\"b1\"\n\"\",\"a2\",\"\"\n"
              "\"\",\"\",\"\"\n\"c4\",\"" +
                  longest + "\",\"more than sixteen bytes\"\n");
    ASSERT_EQ(source.get_num_records(), 4u);
    vekdb target(textColumns({"A", "None", "B", "C"}));
    EXPECT_EQ(1, target.merge_all_matching(&source));
    EXPECT_EQ((Values{"a value of some length", "a2", "", longest}), columnOf(target, 0));
    EXPECT_EQ((Values{"", "", "", ""}), columnOf(target, 1));
    EXPECT_EQ((Values{"b1", "", "", "more than sixteen bytes"}), columnOf(target, 2));
    EXPECT_EQ((Values{"c1", "", "", "c4"}), columnOf(target, 3));
    for (unsigned row = 0; row < 4; ++row) {
        EXPECT_EQ(target.get_record(row)->get_num_fields(), 4u);
        EXPECT_TRUE(target.get_record(row)->get_changed());
    }
}

TEST(Merge, GivesTwoColumnsOfOneNameTheSameValue) {
    const testing_support::TempDir folder;
    vekdb source;
    loadTable(source, folder,
              "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"1\",\"1\"\n\"text\",\"text\"\n"
              "\"B\",\"A\"\n\"b1\",\"a1\"\n");
    vekdb target(textColumns({"A", "B", "a"}));
    EXPECT_EQ(1, target.merge_all_matching(&source));
    EXPECT_EQ((Values{"a1"}), columnOf(target, 0));
    EXPECT_EQ((Values{"a1"}), columnOf(target, target.get_num_fields() - 1));
}

TEST(Merge, AppendsALoadedTableToItselfWithItsOwnRowsInOrder) {
    const testing_support::TempDir folder;
    vekdb table;
    loadTable(table, folder,
              "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"1\",\"1\"\n\"text\",\"text\"\n"
              "\"B\",\"A\"\n\"b1\",\"a1\"\n\"b2\",\"a2\"\n");
    EXPECT_EQ(1, table.merge_all_matching(&table));
    EXPECT_EQ((Values{"b1", "b2", "b1", "b2"}), columnOf(table, 0));
    EXPECT_EQ((Values{"a1", "a2", "a1", "a2"}), columnOf(table, 1));
}

TEST(Merge, WithoutACommonColumnAppendsNothingAndReturnsZero) {
    vekdb target(textColumns({"Reel"}));
    vekdb source(textColumns({"Scene"}));
    addRow(source, {"2"});
    EXPECT_EQ(0, target.merge_all_matching(&source));
    EXPECT_EQ(0u, target.get_num_records());
}

TEST(Merge, ATableWithoutColumnsSharesNone) {
    vekdb target;
    vekdb source(textColumns({"Scene"}));
    EXPECT_EQ(0, target.merge_all_matching(&source));
    EXPECT_EQ(0, source.merge_all_matching(&target));
}

TEST(Merge, ASourceWithoutRecordsIsMergedAllTheSame) {
    vekdb target(textColumns({"Reel"}));
    vekdb source(textColumns({"Reel"}));
    EXPECT_EQ(1, target.merge_all_matching(&source));
    EXPECT_EQ(0u, target.get_num_records());
}

TEST(Merge, ANullSourceIsNone) {
    vekdb target(textColumns({"Reel"}));
    EXPECT_EQ(0, target.merge_all_matching(nullptr));
}

TEST(Merge, StoresThePunctuatedTimecodeOfACompactOne) {
    vekdb target(timecodeColumn(DBFieldTypes::timecode));
    vekdb source(timecodeColumn(DBFieldTypes::timecode_s));
    addRow(source, {"01020304"});
    addRow(source, {"01020304;"});
    addRow(source, {""});
    addRow(source, {"see reel 4"});
    target.merge_all_matching(&source);
    EXPECT_EQ((Values{"01:02:03:04", "01:02:03;04", "", "see reel 4"}), columnOf(target, 0));
}

TEST(Merge, StoresTheCompactTimecodeOfAPunctuatedOne) {
    vekdb target(timecodeColumn(DBFieldTypes::timecode_s));
    vekdb source(timecodeColumn(DBFieldTypes::timecode));
    addRow(source, {"01:02:03:04"});
    addRow(source, {"01:02:03;04"});
    target.merge_all_matching(&source);
    EXPECT_EQ((Values{"01020304", "01020304;"}), columnOf(target, 0));
}

TEST(Merge, DropFrameTimecodesSurviveBothWays) {
    vekdb punctuated(timecodeColumn(DBFieldTypes::timecode));
    addRow(punctuated, {"23:59:58;29"});
    vekdb compact(timecodeColumn(DBFieldTypes::timecode_s));
    compact.merge_all_matching(&punctuated);
    vekdb back(timecodeColumn(DBFieldTypes::timecode));
    back.merge_all_matching(&compact);
    EXPECT_EQ((Values{"23:59:58;29"}), columnOf(back, 0));
}

TEST(Merge, ConvertsNothingBetweenOtherTypes) {
    for (auto types : {std::pair{DBFieldTypes::text, DBFieldTypes::timecode},
                       std::pair{DBFieldTypes::timecode, DBFieldTypes::text},
                       std::pair{DBFieldTypes::timecode_s, DBFieldTypes::timecode_s}}) {
        vekdb target(timecodeColumn(types.second));
        vekdb source(timecodeColumn(types.first));
        addRow(source, {"01020304"});
        target.merge_all_matching(&source);
        EXPECT_EQ((Values{"01020304"}), columnOf(target, 0));
    }
}

TEST(Merge, StoresAsFieldsAreStoredWithoutLeadingWhiteSpace) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A"}));
    addRow(source, {"  x "});
    target.clear_changed();
    target.merge_all_matching(&source);
    EXPECT_EQ((Values{"x "}), columnOf(target, 0));
    EXPECT_TRUE(target.get_modified());
}

TEST(Merge, ReadsTheRowsThatTheSourceShows) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A"}));
    addRow(source, {"x"});
    addRow(source, {"y"});
    source.set_tag(1, 1);
    source.set_show_tags_only(1);
    target.merge_all_matching(&source);
    EXPECT_EQ((Values{"y"}), columnOf(target, 0));
}

TEST(Merge, WhileOnlyTaggedRowsAreShownAppendsNothing) {
    vekdb target(textColumns({"A"}));
    addRow(target, {"x"});
    target.set_show_tags_only(1);
    vekdb source(textColumns({"A"}));
    addRow(source, {"y"});
    EXPECT_EQ(1, target.merge_all_matching(&source));
    target.set_show_tags_only(0);
    EXPECT_EQ((Values{"x"}), columnOf(target, 0));
}

TEST(Merge, ATableMergedIntoItselfDoubles) {
    vekdb table(textColumns({"A"}));
    addRow(table, {"x"});
    addRow(table, {"y"});
    EXPECT_EQ(1, table.merge_all_matching(&table));
    EXPECT_EQ((Values{"x", "y", "x", "y"}), columnOf(table, 0));
}

struct SeesMerging : vekdb {
    using vekdb::set_field;
    using vekdb::vekdb;
    unsigned add_records(int n) override {
        added.push_back(n);
        return added.size() > most ? none : vekdb::add_records(n);
    }
    bool set_field(unsigned row, unsigned field, const char* text) override {
        stored.push_back(text);
        return vekdb::set_field(row, field, text);
    }
    std::vector<int> added;
    Values stored;
    std::size_t most = 100;
};

TEST(Merge, ASubclassSeesEachRowAppendedAndEachValueStored) {
    SeesMerging target(textColumns({"A", "B", "C"}));
    vekdb source(textColumns({"C", "A"}));
    addRow(source, {"c1", "a1"});
    addRow(source, {"c2", "a2"});
    target.merge_all_matching(&source);
    EXPECT_EQ((std::vector{1, 1}), target.added);
    EXPECT_EQ((Values{"a1", "c1", "a2", "c2"}), target.stored);
}

TEST(Merge, StopsAtARowThatIsRefused) {
    SeesMerging target(textColumns({"A"}));
    target.most = 1;
    vekdb source(textColumns({"A"}));
    addRow(source, {"a1"});
    addRow(source, {"a2"});
    addRow(source, {"a3"});
    EXPECT_EQ(1, target.merge_all_matching(&source));
    EXPECT_EQ((Values{"a1"}), columnOf(target, 0));
    EXPECT_EQ(2u, target.added.size());
}

struct SeesReading : vekdb {
    using vekdb::vekdb;
    LightweightString<char> getField(unsigned row, unsigned field) const override {
        asked.push_back({row, field});
        return vekdb::getField(row, field);
    }
    mutable std::vector<std::pair<unsigned, unsigned>> asked;
};

TEST(Merge, ReadsTheSourceThroughItsInterface) {
    vekdb target(textColumns({"A", "B"}));
    SeesReading source(textColumns({"X", "B"}));
    addRow(source, {"x", "1"});
    addRow(source, {"x", "2"});
    target.merge_all_matching(&source);
    EXPECT_EQ((std::vector<std::pair<unsigned, unsigned>>{{0, 1}, {1, 1}}), source.asked);
}

// A table of a file, whose rows stand on its text.
struct Loaded {
    explicit Loaded(const std::string& rows) {
        folder.write("log.vek",
                     "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"timecode\"\n"
                     "\"A\",\"B\"\n" +
                         rows);
        table.set_filename(folder.widePath("log.vek"));
        table.loadFromFile(100, true);
    }
    const testing_support::TempDir folder;
    vekdb table;
};

TEST(Merge, TakesLoadedRowsAsSetFieldWouldStoreThem) {
    Loaded source("\"a\",\"1\"\n\"  b \",\"2\"\n\"c\"\"d\",\"3\"\ne,4\n\"\",\"\"\n");
    using Names = std::vector<const char*>;
    for (const Names& names : {Names{"A", "B"}, Names{"B", "A"}, Names{"A"}}) {
        vekdb target(textColumns(names));
        vekdb expected(textColumns(names));
        EXPECT_EQ(1, target.merge_all_matching(&source.table));
        for (unsigned row = 0; row < source.table.get_num_records(); ++row) {
            expected.add_records(1);
            for (unsigned i = 0; i < names.size(); ++i) {
                const unsigned from = source.table.get_fieldnum(names[i]);
                expected.set_field(row, i, source.table.getField(row, from).c_str());
            }
        }
        for (unsigned i = 0; i < names.size(); ++i) {
            EXPECT_EQ(columnOf(expected, i), columnOf(target, i));
        }
        EXPECT_TRUE(target.get_record(0)->get_changed());
        EXPECT_TRUE(target.get_modified());
    }
}

TEST(Merge, ABlankThatWasPutBeforeALoadedValueIsDropped) {
    Loaded source("\"abc\",\"1\"\n");
    source.table.get_record(0)->set_field(0, " bc", false);
    vekdb target(textColumns({"A", "B"}));
    target.merge_all_matching(&source.table);
    EXPECT_EQ((Values{"bc"}), columnOf(target, 0));
}

TEST(Merge, AValueEndsAtItsFirstNul) {
    vekdb source(textColumns({"A", "B"}));
    addRow(source, {"", "y"});
    source.setField(0, 0, LightweightString<char>("a\0b", 3));
    vekdb target(textColumns({"A", "B"}));
    target.merge_all_matching(&source);
    EXPECT_EQ((Values{"a"}), columnOf(target, 0));
    EXPECT_EQ((Values{"y"}), columnOf(target, 1));
}

// --- add_vekdb

TEST(AddTable, AppendsCopiesOfAllRecords) {
    vekdb target(textColumns({"A", "B"}));
    addRow(target, {"1", "x"});
    vekdb source(textColumns({"A", "B"}));
    addRow(source, {"2", " y"});
    addRow(source, {"3", ""});
    EXPECT_EQ(2u, target.add_vekdb(&source));
    EXPECT_EQ((Values{"1", "2", "3"}), columnOf(target, 0));
    EXPECT_EQ((Values{"x", " y", ""}), columnOf(target, 1));
    EXPECT_EQ(2u, source.get_num_records());
}

TEST(AddTable, CopiesBelongToTheTableButAreNeitherTaggedNorChanged) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A"}));
    addRow(source, {"x"});
    source.set_tag(0, 1);
    target.add_vekdb(&source);
    EXPECT_EQ(&target, target.get_record(0)->get_container());
    EXPECT_EQ(0u, target.get_tag(0));
    EXPECT_FALSE(target.get_record(0)->get_changed());
    EXPECT_FALSE(target.get_modified());
    target.set_field(0, 0, "z");
    EXPECT_TRUE(target.get_modified());
    EXPECT_STREQ("x", source.getField(0, 0).c_str());
}

TEST(AddTable, SendsNoNotice) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A"}));
    addRow(source, {"x"});
    NoticeTexts changes(target, "recordsChanged");
    NoticeTexts deletions(target, "recordsDeleted");
    target.add_vekdb(&source);
    EXPECT_TRUE(changes.texts.empty());
    EXPECT_TRUE(deletions.texts.empty());
}

TEST(AddTable, RefusesAColumnOfTheSameNameAndAnotherType) {
    vekdb target(textColumns({"A", "B", "C"}));
    vekdb source(
        {{"A", DBFieldTypes::text}, {"B", DBFieldTypes::text}, {"C", DBFieldTypes::numeric}});
    addRow(source, {"x"});
    EXPECT_EQ(none, target.add_vekdb(&source));
    EXPECT_EQ(0u, target.get_num_records());
}

TEST(AddTable, RefusesNamesThatDifferIfOnlyInCase) {
    vekdb target(textColumns({"A", "B"}));
    vekdb source(textColumns({"A", "b"}));
    EXPECT_EQ(none, target.add_vekdb(&source));
}

TEST(AddTable, RefusesAnotherNumberOfColumns) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A", "B"}));
    EXPECT_EQ(none, target.add_vekdb(&source));
    EXPECT_EQ(none, source.add_vekdb(&target));
}

TEST(AddTable, RefusesAnotherRevision) {
    testing_support::CaptureDiagnostics said;
    const testing_support::TempDir folder;
    folder.write("log.odb", "\"VEKDB:Rev 2\"\n\"VEKDB\"\n\"4\"\n\"text\"\n\"A\"\n\"x\"\n");
    vekdb other(folder.widePath("log.odb"), 10, true);
    ASSERT_EQ(1u, other.get_num_records());
    vekdb target(textColumns({"A"}));
    EXPECT_EQ(none, target.add_vekdb(&other));
    EXPECT_EQ(none, other.add_vekdb(&target));
    EXPECT_EQ(0u, target.get_num_records());
    EXPECT_EQ(1, target.merge_all_matching(&other));
}

TEST(AddTable, RefusesWhileOnlyTaggedRowsAreShown) {
    vekdb target(textColumns({"A"}));
    target.set_show_tags_only(1);
    vekdb source(textColumns({"A"}));
    addRow(source, {"x"});
    EXPECT_EQ(none, target.add_vekdb(&source));
    target.set_show_tags_only(0);
    EXPECT_EQ(0u, target.get_num_records());
}

TEST(AddTable, RefusesNull) {
    vekdb target(textColumns({"A"}));
    EXPECT_EQ(none, target.add_vekdb(nullptr));
}

TEST(AddTable, ASourceWithoutRecordsAddsNone) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A"}));
    EXPECT_EQ(0u, target.add_vekdb(&source));
}

TEST(AddTable, GrowsTheCapacityInChunks) {
    vekdb target(textColumns({"A"}));
    target.add_records(300);
    vekdb source(textColumns({"A"}));
    source.add_records(900);
    EXPECT_EQ(900u, target.add_vekdb(&source));
    EXPECT_EQ(1200u, target.get_num_records());
    EXPECT_EQ(1500u, target.get_capacity());
}

TEST(AddTable, CopiesHiddenRowsOfTheSourceToo) {
    vekdb target(textColumns({"A"}));
    vekdb source(textColumns({"A"}));
    addRow(source, {"x"});
    addRow(source, {"y"});
    source.set_tag(1, 1);
    source.set_show_tags_only(1);
    EXPECT_EQ(2u, target.add_vekdb(&source));
    EXPECT_EQ((Values{"x", "y"}), columnOf(target, 0));
}

TEST(AddTable, ATableAddedToItselfDoubles) {
    vekdb table(textColumns({"A"}));
    for (int i = 0; i < 400; ++i) addRow(table, {"x"});
    EXPECT_EQ(400u, table.add_vekdb(&table));
    EXPECT_EQ(800u, table.get_num_records());
    EXPECT_EQ(Values(800, "x"), columnOf(table, 0));
}

// --- tag_all_different

vekdb& filled(vekdb& table, const Values& values) {
    for (const std::string& value : values) addRow(table, {value.c_str(), "other"});
    return table;
}

unsigned tagDifferent(const Values& values) {
    vekdb table(textColumns({"A", "B"}));
    return filled(table, values).tag_all_different(0);
}

TEST(TagDifferent, TagsOneRowForEachValueIgnoringCase) {
    vekdb table(textColumns({"A", "B"}));
    EXPECT_EQ(2u, filled(table, {"b", "A", "B", "a"}).tag_all_different(0));
    EXPECT_EQ((Values{"A", "a", "b", "B"}), columnOf(table, 0));
    EXPECT_EQ(1u, table.get_tag(0));
    EXPECT_EQ(0u, table.get_tag(1));
    EXPECT_EQ(1u, table.get_tag(2));
    EXPECT_EQ(0u, table.get_tag(3));
}

TEST(TagDifferent, WhereEveryValueIsEmptyTagsNothing) {
    EXPECT_EQ(0u, tagDifferent({"", "", ""}));
}

TEST(TagDifferent, OneOfTheEmptyValuesBehindOthersIsTagged) {
    EXPECT_EQ(2u, tagDifferent({"", "A", ""}));
}

TEST(TagDifferent, ValuesOfMoreThan255CharactersNeverEqualTheCopy) {
    const std::string text(255, 'x');
    EXPECT_EQ(1u, tagDifferent({text, text}));
    EXPECT_EQ(2u, tagDifferent({text + "y", text + "y"}));
}

TEST(TagDifferent, ClearsOldTagsAndShowsAllRows) {
    vekdb table(textColumns({"A", "B"}));
    filled(table, {"a", "a", "b"});
    table.set_all_tags(7);
    table.set_show_tags_only(1);
    EXPECT_EQ(2u, table.tag_all_different(0));
    EXPECT_EQ(0u, table.get_show_tags_only());
    EXPECT_EQ(3u, table.get_num_records());
    EXPECT_EQ(0u, table.get_tag(1));
}

TEST(TagDifferent, LeavesTheColumnAsTheSortField) {
    vekdb table(textColumns({"A", "B"}));
    addRow(table, {"1", "b"});
    addRow(table, {"2", "a"});
    table.tag_all_different(1);
    EXPECT_EQ((Values{"2", "1"}), columnOf(table, 0));
    EXPECT_EQ(1, table.sortPrepare(1, 0)[0]);
}

TEST(TagDifferent, AColumnThatIsNoneTagsNothing) {
    vekdb table(textColumns({"A", "B"}));
    filled(table, {"a", "b"});
    EXPECT_EQ(0u, table.tag_all_different(2));
    EXPECT_EQ(0u, table.tag_all_different(-1));
}

TEST(TagDifferent, TheSortOffsetAppliesToTheOrder) {
    vekdb table(textColumns({"A", "B"}));
    filled(table, {"2x", "1y", "3x"});
    table.set_sort_offset(1);
    EXPECT_EQ(3u, table.tag_all_different(0));
    EXPECT_EQ((Values{"2x", "3x", "1y"}), columnOf(table, 0));
}

struct SeesTagging : vekdb {
    using vekdb::vekdb;
    void set_tag(unsigned row, int value) override {
        calls.push_back({row, value});
        vekdb::set_tag(row, value);
    }
    void set_all_tags(int value) override {
        ++clearings;
        vekdb::set_all_tags(value);
    }
    void sort(int direction, int forceNormal) override {
        sorts.push_back({direction, forceNormal});
        calls.clear();
        vekdb::sort(direction, forceNormal);
    }
    std::vector<std::pair<unsigned, int>> calls;
    std::vector<std::pair<int, int>> sorts;
    int clearings = 0;
};

TEST(TagDifferent, ASubclassSeesTheSortAndTheTags) {
    SeesTagging table(textColumns({"A"}));
    addRow(table, {"b"});
    addRow(table, {"a"});
    addRow(table, {"B"});
    EXPECT_EQ(2u, table.tag_all_different(0));
    EXPECT_EQ(1, table.clearings);
    EXPECT_EQ((std::vector<std::pair<int, int>>{{1, 0}}), table.sorts);
    EXPECT_EQ((std::vector<std::pair<unsigned, int>>{{0, 1}, {1, 1}}), table.calls);
}

}  // namespace
