#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <memory>

#include <vekdb/host/timecode.h>
#include <vekdb/table.h>
#include "testing/random.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

using TextSearch::Criteria;
using TextSearch::Criterion;
using Values = std::vector<std::string>;

/// Sets a query of these search texts, one for each column.
void ask(vekdb& table, const std::vector<const char*>& texts) {
    dbrecord query(static_cast<unsigned short>(texts.size()));
    for (unsigned i = 0; i < texts.size(); ++i) {
        query.setField(static_cast<unsigned short>(i), texts[i]);
    }
    table.set_query(&query);
}

/// The shown rows that match, by their numbers.
std::vector<unsigned> matching(const vekdb& table) {
    std::vector<unsigned> rows;
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        if (table.match_record(static_cast<int>(row)) == 1) rows.push_back(row);
    }
    return rows;
}

std::vector<unsigned> tagged(const vekdb& table) {
    std::vector<unsigned> rows;
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        if (table.get_tag(row) != 0) rows.push_back(row);
    }
    return rows;
}

using RowNumbers = std::vector<unsigned>;

/// One column of a type, one row a value, asked for a text: does it match?
bool matches(DBFieldTypes::eType type, const char* value, const char* text) {
    vekdb table({{"A", type}});
    addRow(table, {value});
    ask(table, {text});
    return table.match_record(0) == 1;
}

struct Log : testing::Test {
    Log() : table(textColumns({"Reel", "Scene", "Notes"})) {
        addRow(table, {"A001", "12", "Dolly in"});
        addRow(table, {"A002", "12A", "static"});
        addRow(table, {"B001", "13", "slow dolly out"});
    }
    vekdb table;
};

// --- setting a query

TEST_F(Log, WithoutAQueryARecordHasNoAnswerAndNothingIsTagged) {
    EXPECT_EQ(none, table.match_record(0));
    EXPECT_EQ(0u, table.tag_matching_records(0));
}

TEST_F(Log, TextsAreFoundAnywhereInAValueIgnoringCase) {
    ask(table, {"", "", "DOLLY"});
    EXPECT_EQ((RowNumbers{0, 2}), matching(table));
}

TEST_F(Log, EveryColumnMustMatch) {
    ask(table, {"a0", "", "dolly"});
    EXPECT_EQ((RowNumbers{0}), matching(table));
}

TEST_F(Log, BlankSearchTextsMatchEverything) {
    ask(table, {"", "  ", ""});
    EXPECT_EQ((RowNumbers{0, 1, 2}), matching(table));
}

TEST_F(Log, ARowThatDoesNotExistHasNoAnswer) {
    ask(table, {"", "", ""});
    EXPECT_EQ(none, table.match_record(3));
    EXPECT_EQ(none, table.match_record(-1));
}

TEST_F(Log, AQueryRecordOfFewerValuesLeavesTheOldQueryInForce) {
    ask(table, {"B", "", ""});
    ask(table, {"A", ""});
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, AQueryRecordOfMoreValuesIsTaken) {
    ask(table, {"B", "", "", "what no column holds"});
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, ANullQueryRecordIsIgnored) {
    ask(table, {"B", "", ""});
    table.set_query(nullptr);
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, TheQueryRecordIsNotKept) {
    auto query = std::make_unique<dbrecord>(static_cast<unsigned short>(3));
    query->setField(0, "B");
    table.set_query(query.get());
    query.reset();
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, CriteriaAreTakenDirectly) {
    Criteria both(Criterion("o", TextSearch::eMatchContains));
    both.add(Criterion("slow", TextSearch::eMatchBegins));
    table.setQuery({Criteria(), Criteria(), both});
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, TooFewCriteriaAreIgnored) {
    ask(table, {"B", "", ""});
    table.setQuery({Criteria(Criterion("A")), Criteria()});
    EXPECT_EQ((RowNumbers{2}), matching(table));
    table.setQuery({});
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, SurplusCriteriaWaitForColumnsToCome) {
    table.setQuery({Criteria(), Criteria(), Criteria(), Criteria(Criterion("x"))});
    EXPECT_EQ((RowNumbers{0, 1, 2}), matching(table));
    table.addField({"Extra", DBFieldTypes::text});
    table.set_field(1, 3, "xyz");
    EXPECT_EQ((RowNumbers{1}), matching(table));
}

TEST_F(Log, AColumnAddedToAQueryMatchesAlways) {
    ask(table, {"B", "", ""});
    table.addField({"Extra", DBFieldTypes::text});
    EXPECT_EQ((RowNumbers{2}), matching(table));
}

TEST_F(Log, CriteriaOfColumnsThatWentAreNotAsked) {
    ask(table, {"", "", "dolly"});
    table.removeField("Reel");
    table.removeField("Scene");
    EXPECT_EQ((RowNumbers{0, 1, 2}), matching(table));
}

TEST_F(Log, FreeForgetsTheQuery) {
    ask(table, {"B", "", ""});
    table.free();
    table.addField({"Reel", DBFieldTypes::text});
    addRow(table, {"B"});
    EXPECT_EQ(none, table.match_record(0));
}

TEST(Query, ATableWithoutColumnsHasARecordMatchOnceThereIsAQuery) {
    vekdb table(static_cast<const DBFieldDesc*>(nullptr));
    table.add_records(1);
    dbrecord nothing(0);
    table.set_query(&nothing);
    EXPECT_EQ(none, table.match_record(0));  // no criteria are no query
    table.setQuery({Criteria(Criterion("x"))});
    EXPECT_EQ(1u, table.match_record(0));
}

// --- tagging

TEST_F(Log, TaggingCountsAndTagsTheMatchesAndClearsTheOthers) {
    table.set_all_tags(5);
    ask(table, {"A", "", ""});
    EXPECT_EQ(2u, table.tag_matching_records(0));
    EXPECT_EQ(1u, table.get_tag(0));
    EXPECT_EQ(1u, table.get_tag(1));
    EXPECT_EQ(0u, table.get_tag(2));
}

TEST_F(Log, TaggingMayKeepTheTagsOfTheOthers) {
    table.set_tag(1, 5);
    table.set_tag(2, 7);
    ask(table, {"", "", "static"});
    EXPECT_EQ(1u, table.tag_matching_records(1));
    EXPECT_EQ(0u, table.get_tag(0));
    EXPECT_EQ(1u, table.get_tag(1));
    EXPECT_EQ(7u, table.get_tag(2));
}

TEST_F(Log, TaggingWithAnEmptyTableAnswersZero) {
    ask(table, {"", "", ""});
    table.delete_records(0, 3);
    EXPECT_EQ(0u, table.tag_matching_records(0));
}

TEST_F(Log, TaggingLooksAtTheRowsShown) {
    table.set_tag(2, 1);
    table.set_show_tags_only(1);
    ask(table, {"", "", "dolly"});
    EXPECT_EQ(1u, table.tag_matching_records(0));
    table.set_show_tags_only(0);
    EXPECT_EQ((RowNumbers{2}), tagged(table));
}

// More rows than are looked ahead, in two pieces with values of every storage.
TEST(Query, TaggingManyRowsTagsThoseThatMatchByThemselves) {
    testing_support::Random random;
    vekdb table({{"Reel", DBFieldTypes::text},
                 {"Start time", DBFieldTypes::text},
                 {"End time", DBFieldTypes::text}});
    for (int row = 0; row < 400; ++row) {
        const std::string reel = random.text("AB1", 40);
        const std::string start = random.text("012", 3);
        const std::string end = random.text("012", 3);
        addRow(table, {reel.c_str(), start.c_str(), end.c_str()});
    }
    table.get_record(7)->resizeRecord(1, std::vector<int>(1).data(), false);
    table.get_record(390)->resizeRecord(0, std::vector<int>(1).data(), false);
    unsigned matched = 0;
    for (int round = 0; round < 50; ++round) {
        table.delete_records(static_cast<int>(random.below(table.get_num_records())), 1);
        const std::string reel = random.oneIn(3) ? "" : random.text("AB1", 3);
        const std::string time = random.oneIn(3) ? "" : random.text("012", 3);
        ask(table, {reel.c_str(), time.c_str(), ""});
        const RowNumbers expected = matching(table);
        ASSERT_EQ(expected.size(), table.tag_matching_records(0));
        ASSERT_EQ(expected, tagged(table));
        matched += static_cast<unsigned>(expected.size());
    }
    EXPECT_GT(matched, 50u);
    EXPECT_LT(matched, 50u * 390);
}

TEST_F(Log, TaggingMarksNothingChanged) {
    table.clear_changed();
    ask(table, {"A", "", ""});
    table.tag_matching_records(0);
    EXPECT_FALSE(table.get_modified());
    EXPECT_FALSE(table.get_record(0)->get_changed());
}

struct SeesMatching : vekdb {
    using vekdb::vekdb;
    unsigned match_record(int row) const override {
        asked.push_back(row);
        return row == 0 ? 0 : vekdb::match_record(row);
    }
    void set_tag(unsigned row, int value) override {
        tags.push_back({row, value});
        vekdb::set_tag(row, value);
    }
    mutable std::vector<int> asked;
    std::vector<std::pair<unsigned, int>> tags;
};

TEST(Query, ASubclassSeesEveryRowMatchedAndTagged) {
    SeesMatching table(textColumns({"A"}));
    addRow(table, {"x"});
    addRow(table, {"x"});
    addRow(table, {"y"});
    ask(table, {"x"});
    EXPECT_EQ(1u, table.tag_matching_records(0));
    EXPECT_EQ((std::vector{0, 1, 2}), table.asked);
    EXPECT_EQ((std::vector<std::pair<unsigned, int>>{{0, 0}, {1, 1}, {2, 0}}), table.tags);
    table.tags.clear();
    EXPECT_EQ(1u, table.tag_matching_records(1));
    EXPECT_EQ((std::vector<std::pair<unsigned, int>>{{1, 1}}), table.tags);
}

// --- column types

TEST(QueryTypes, TimecodesCompareByTheirDigits) {
    EXPECT_TRUE(matches(DBFieldTypes::timecode, "01:00:00;10", "01.00.00:10"));
    EXPECT_TRUE(matches(DBFieldTypes::timecode, "01:00:00;10", "00,1"));
    EXPECT_FALSE(matches(DBFieldTypes::timecode, "01:00:00;10", "02:"));
}

TEST(QueryTypes, OtherTextsCompareByTheirCharacters) {
    EXPECT_FALSE(matches(DBFieldTypes::text, "01:00:00;10", "00:10"));
    EXPECT_FALSE(matches(DBFieldTypes::numeric, "1.5", "1,5"));
    EXPECT_TRUE(matches(DBFieldTypes::numeric, "1.5", "1.5"));
}

TEST(QueryTypes, CompactTimecodesAreMatchedInTheirPunctuatedForm) {
    EXPECT_TRUE(matches(DBFieldTypes::timecode_s, "01020304", "01:02:03:04"));
    EXPECT_TRUE(matches(DBFieldTypes::timecode_s, "01020304;", "02:03;04"));
    EXPECT_FALSE(matches(DBFieldTypes::timecode_s, "01020304", "010203"));
    EXPECT_TRUE(matches(DBFieldTypes::timecode_s, "see reel 4", "REEL"));
}

TEST(QueryTypes, DatesAreMatchedAsTheCLibraryPrintsThem) {
    const std::time_t when = 1000000000;
    const std::string printed = std::ctime(&when);
    EXPECT_TRUE(matches(DBFieldTypes::dos_date, "1000000000", printed.substr(0, 24).c_str()));
    EXPECT_TRUE(matches(DBFieldTypes::dos_date, " 1000000000 ", "sep"));
    EXPECT_FALSE(matches(DBFieldTypes::dos_date, "1000000000", "1000000000"));
}

TEST(QueryTypes, DatesThatAreNoneAreTheBeginningOfTime) {
    const std::time_t beginning = 0;
    const std::string year = std::string(std::ctime(&beginning)).substr(20, 4);
    EXPECT_TRUE(matches(DBFieldTypes::dos_date, "", year.c_str()));
    EXPECT_TRUE(matches(DBFieldTypes::dos_date, "soon", year.c_str()));
    EXPECT_TRUE(matches(DBFieldTypes::dos_date, "99999999999", year.c_str()));
}

TEST(QueryTypes, TheTextOfADateHasItsNewline) {
    vekdb table({{"A", DBFieldTypes::dos_date}});
    addRow(table, {"0"});
    const std::time_t beginning = 0;
    const Criteria whole(Criterion(std::ctime(&beginning), TextSearch::eMatchWhole));
    EXPECT_EQ(1, table.matchField(table.get_record(0), 0, whole));
}

// --- the tests of one column

TEST_F(Log, MatchFieldAsksTheOneColumn) {
    ask(table, {"A", "nothing", ""});
    EXPECT_EQ(1, table.match_field(table.get_record(0), 0));
    EXPECT_EQ(0, table.match_field(table.get_record(0), 1));
    EXPECT_EQ(1, table.match_field(table.get_record(0), 2));
    EXPECT_EQ(1, table.match_field(table.get_record(0), 3));
    EXPECT_EQ(1, table.match_field(table.get_record(0), -1));
}

TEST_F(Log, MatchFieldWithCriteriaOfTheCallers) {
    EXPECT_EQ(1, table.matchField(table.get_record(0), 2, Criteria(Criterion("dolly"))));
    EXPECT_EQ(0, table.matchField(table.get_record(1), 2, Criteria(Criterion("dolly"))));
    EXPECT_EQ(1, table.matchField(table.get_record(1), 2, Criteria()));
}

TEST_F(Log, WithoutARecordNothingMatches) {
    ask(table, {"A", "", ""});
    EXPECT_EQ(0, table.matchField(nullptr, 0, Criteria(Criterion("A"))));
    EXPECT_EQ(0, table.match_field(nullptr, 0));
    EXPECT_EQ(1, table.match_field(nullptr, 1));
}

TEST_F(Log, RecordsOfTheCallersAreMatchedToo) {
    ask(table, {"A", "", ""});
    dbrecord record(3);
    record.set_field(0, "cAb");
    EXPECT_EQ(1, table.match_field(&record, 0));
}

TEST_F(Log, ARecordWithFewerValuesHasEmptyOnes) {
    ask(table, {"", "", "dolly"});
    dbrecord record(1);
    EXPECT_EQ(0, table.match_field(&record, 2));
}

// --- ranges from a start to an end

constexpr const char* pairs[][2] = {
    {"Start time", "End time"},         {"snd start", "snd end"},
    {"start 24P code", "end 24P code"}, {"start keycode", "end keycode"},
    {"start camcode", "end camcode"},   {"start inkcode", "end inkcode"},
};

bool rangeMatches(const char* start, const char* end, const char* text, unsigned column = 0) {
    vekdb table(textColumns({"Start time", "End time"}));
    addRow(table, {start, end});
    std::vector<const char*> texts(2, "");
    texts[column] = text;
    ask(table, texts);
    const bool answer = table.match_record(0) == 1;
    EXPECT_EQ(answer, table.tag_matching_records(0) == 1);
    return answer;
}

TEST(QueryRange, ATextBetweenStartAndEndMatches) {
    EXPECT_TRUE(rangeMatches("01:00:00:00", "01:00:10:00", "01:00:05"));
    EXPECT_FALSE(rangeMatches("01:00:00:00", "01:00:04:00", "01:00:05"));
    EXPECT_FALSE(rangeMatches("01:00:06:00", "01:00:10:00", "01:00:05"));
}

TEST(QueryRange, TheEndIsIncludedOverTheLengthOfTheText) {
    EXPECT_TRUE(rangeMatches("01:00:00:00", "01:00:05:00", "01:00:05"));
    EXPECT_TRUE(rangeMatches("01:00:00:00", "01:00:05:00", "01:00:05:00"));
    EXPECT_FALSE(rangeMatches("01:00:00:00", "01:00:05:00", "01:00:05:01"));
}

TEST(QueryRange, AQueryOnTheEndMatchesTheSameRecords) {
    for (unsigned column : {0u, 1u}) {
        EXPECT_TRUE(rangeMatches("01:00:00:00", "01:00:10:00", "01:00:05", column));
        EXPECT_FALSE(rangeMatches("01:00:00:00", "01:00:04:00", "01:00:05", column));
        EXPECT_FALSE(rangeMatches("", "01:00:05:00", "01:00:05", column));
    }
}

TEST(QueryRange, AnEmptyStartNeverMatches) {
    EXPECT_FALSE(rangeMatches("", "01:00:05", "01:00:05"));
    EXPECT_FALSE(rangeMatches("", "", "01:00:05"));
}

TEST(QueryRange, AStartThatBeginsWithTheTextMatchesWhateverTheEnd) {
    EXPECT_TRUE(rangeMatches("01:00:05:10", "", "01:00:05"));
    EXPECT_TRUE(rangeMatches("01:00:05:10", "00:00:00:00", "01:00:05"));
    EXPECT_FALSE(rangeMatches("01:00:00:00", "", "01:00:05"));
}

TEST(QueryRange, AShortStartIsBelowALongerText) {
    EXPECT_TRUE(rangeMatches("01", "02", "01:30"));
    EXPECT_FALSE(rangeMatches("01", "01", "01:30"));
}

TEST(QueryRange, ComparesWithCaseAndBytesAsUnsigned) {
    EXPECT_FALSE(rangeMatches("KJ 10", "KJ 20", "kj 15"));
    EXPECT_TRUE(rangeMatches("a", "\xFF", "\xE9"));
}

TEST(QueryRange, AnEmptyQueryTextMatches) {
    EXPECT_TRUE(rangeMatches("", "", ""));
    EXPECT_TRUE(rangeMatches("", "", "   "));
}

TEST(QueryRange, OnlyTheTextOfTheFirstCriterionCounts) {
    vekdb table(textColumns({"Start time", "End time"}));
    addRow(table, {"01", "05"});
    Criteria criteria(Criterion("03", TextSearch::eMatchWhole));
    criteria.add(Criterion("99", TextSearch::eMatchWhole));
    table.setQuery({criteria, Criteria()});
    EXPECT_EQ(1u, table.match_record(0));
    EXPECT_EQ(1u, table.tag_matching_records(0));
}

TEST(QueryRange, AnEmptyFirstCriterionBeforeAnotherAsksOnlyForAStart) {
    vekdb table(textColumns({"Start time", "End time"}));
    addRow(table, {"01", "05"});
    addRow(table, {"", "05"});
    Criteria criteria{Criterion("")};
    criteria.add(Criterion("99"));
    table.setQuery({criteria, Criteria()});
    EXPECT_EQ(1u, table.tag_matching_records(0));
    EXPECT_EQ((RowNumbers{0}), tagged(table));
}

TEST(QueryRange, HoldsForEveryPair) {
    for (const auto& pair : pairs) {
        vekdb table(textColumns({"Other", pair[1], pair[0]}));
        EXPECT_TRUE(table.isSpecialLabelField(1));
        EXPECT_TRUE(table.isSpecialLabelField(2));
        EXPECT_FALSE(table.isSpecialLabelField(0));
        addRow(table, {"", "09", "01"});
        ask(table, {"", "05", ""});
        EXPECT_EQ(1u, table.match_record(0)) << pair[0];
        ask(table, {"", "", "05"});
        EXPECT_EQ(1u, table.match_record(0)) << pair[0];
        ask(table, {"", "", "10"});
        EXPECT_EQ(0u, table.match_record(0)) << pair[0];
    }
}

TEST(QueryRange, NamesOfAnotherCaseAreMatchedAsText) {
    vekdb table(textColumns({"start time", "End time"}));
    EXPECT_FALSE(table.isSpecialLabelField(0));
    addRow(table, {"01:00:00:00", "01:00:10:00"});
    ask(table, {"01:00:05", ""});
    EXPECT_EQ(0u, table.match_record(0));
    ask(table, {"00:00", ""});
    EXPECT_EQ(1u, table.match_record(0));
}

TEST(QueryRange, WithoutAnEndColumnOnlyTheStartIsCompared) {
    vekdb table(textColumns({"Start time"}));
    addRow(table, {"01:00:05:10"});
    addRow(table, {"01:00:00:00"});
    ask(table, {"01:00:05"});
    EXPECT_EQ((RowNumbers{0}), matching(table));
    EXPECT_EQ(1u, table.tag_matching_records(0));
}

TEST(QueryRange, WithoutAStartColumnNothingMatches) {
    vekdb table(textColumns({"End time"}));
    addRow(table, {"01:00:05:10"});
    ask(table, {"01:00:05"});
    EXPECT_EQ(0u, table.match_record(0));
    EXPECT_EQ(0u, table.tag_matching_records(0));
}

TEST(QueryRange, ARenamedColumnKeepsItsMarkAndMatchesAnything) {
    vekdb table(textColumns({"Start time", "Notes"}));
    addRow(table, {"01:00", "x"});
    table.set_fieldname(0, "Clock");
    ask(table, {"99", ""});
    EXPECT_EQ(1u, table.match_record(0));
    EXPECT_EQ(1u, table.tag_matching_records(0));
}

TEST(QueryRange, AColumnRenamedToALabelIsNotMarked) {
    vekdb table(textColumns({"Clock", "End time"}));
    addRow(table, {"01:00", "03:00"});
    table.set_fieldname(0, "Start time");
    ask(table, {"02:00", ""});
    EXPECT_EQ(0u, table.match_record(0));
    EXPECT_EQ(0u, table.tag_matching_records(0));
}

TEST(QueryRange, MarksStayWhereTheyAreWhenAColumnIsRemoved) {
    vekdb table(textColumns({"Reel", "Start time", "Notes"}));
    addRow(table, {"A", "01:00", "x"});
    table.removeField("Reel");
    ask(table, {"1:0", ""});  // Start time goes as a text now
    EXPECT_EQ(1u, table.match_record(0));
    ask(table, {"", "nothing"});  // and Notes has its mark
    EXPECT_EQ(1u, table.match_record(0));
    EXPECT_EQ(1u, table.tag_matching_records(0));
}

TEST(QueryRange, AColumnAddedIsMarked) {
    vekdb table(textColumns({"Start time"}));
    table.addField({"End time", DBFieldTypes::text});
    addRow(table, {"01", "05"});
    ask(table, {"", "03"});
    EXPECT_EQ(1u, table.match_record(0));
}

TEST(QueryRange, ColumnsOfALoadedTableAreMarkedButThoseOfAPlainCsvAreNot) {
    const testing_support::TempDir folder;
    folder.write("log.odb",
                 "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n"
                 "\"Start time\",\"End time\"\n\"01\",\"05\"\n");
    folder.write("log.csv", "Start time,End time\n01,05\n");
    for (auto [name, expected] : {std::pair{"log.odb", 1u}, {"log.csv", 0u}}) {
        vekdb table(folder.widePath(name), 10, true);
        ASSERT_EQ(1u, table.get_num_records()) << name;
        EXPECT_TRUE(table.isSpecialLabelField(0));
        ask(table, {"03", ""});
        EXPECT_EQ(expected, table.match_record(0)) << name;
        EXPECT_EQ(expected, table.tag_matching_records(0)) << name;
    }
}

TEST(QueryRange, IsAnsweredForOneColumn) {
    vekdb table(textColumns({"Start time", "End time", "Notes"}));
    addRow(table, {"01", "05", "x"});
    ask(table, {"03", "", "y"});
    dbrecord* record = table.get_record(0);
    EXPECT_EQ(1, table.found_in_special_label_field(record, 0));
    EXPECT_EQ(1, table.found_in_special_label_field(record, 1));  // not asked for anything
    EXPECT_EQ(1, table.found_in_special_label_field(record, 2));  // in no pair
    EXPECT_EQ(0, table.found_in_special_label_field(nullptr, 0));
    EXPECT_EQ(0, table.match_field(record, 2));
}

struct SeesColumnsLookedUp : vekdb {
    using vekdb::vekdb;
    unsigned get_fieldnum(LightweightString<char> name) const override {
        asked.push_back(name.c_str());
        return vekdb::get_fieldnum(name);
    }
    mutable Values asked;
};

TEST(QueryRange, ASubclassSeesTheColumnsOfThePairLookedUp) {
    SeesColumnsLookedUp table(textColumns({"Start time", "End time"}));
    addRow(table, {"01", "05"});
    ask(table, {"", "03"});
    table.asked.clear();
    EXPECT_EQ(1u, table.match_record(0));
    EXPECT_EQ((Values{"Start time", "End time"}), table.asked);
}

// --- a random query against a scan written another way

std::string folded(std::string text, bool timecode) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
        if (timecode && std::strchr(";.,", c) != nullptr && c != '\0') c = ':';
    }
    return text;
}

bool isBlank(const std::string& text) {
    return text.find_first_not_of(" \t\n\v\f\r") == std::string::npos;
}

bool scanText(const std::string& value, const std::string& text, DBFieldTypes::eType type) {
    const bool timecode = type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s;
    std::string shown = value;
    if (type == DBFieldTypes::timecode_s) {
        shown = time_def(value.c_str(), label_timecode).get_punctuated_str().c_str();
    }
    return folded(shown, timecode).find(folded(text, timecode)) != std::string::npos;
}

bool scanRange(const std::string& start, const std::string& end, const std::string& text) {
    auto front = [&](const std::string& value) { return value.substr(0, text.size()); };
    if (start.empty()) return false;
    if (front(start) == text) return true;
    return !end.empty() && front(start) < text && text <= front(end);
}

TEST(RandomQuery, AgreesWithAScanWrittenAnotherWay) {
    testing_support::Random random;
    const std::vector<DBFieldDesc> columns = {
        {"Notes", DBFieldTypes::text},     {"Start time", DBFieldTypes::timecode},
        {"Reel", DBFieldTypes::text},      {"End time", DBFieldTypes::timecode},
        {"Clock", DBFieldTypes::timecode}, {"Compact", DBFieldTypes::timecode_s}};
    unsigned matched = 0;
    for (int round = 0; round < 300; ++round) {
        vekdb table(columns);
        std::vector<Values> rows(random.below(30));
        for (Values& row : rows) {
            for (std::size_t i = 0; i < columns.size(); ++i) {
                row.push_back(random.text(i % 2 == 0 ? "aAb:;" : "01:;", 8));
            }
            std::vector<const char*> texts;
            for (const std::string& value : row) texts.push_back(value.c_str());
            addRow(table, texts);
        }
        Values query;
        std::vector<const char*> texts;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            query.push_back(random.oneIn(2) ? "" : random.text(i % 2 == 0 ? "abB: " : "01;", 2));
        }
        for (const std::string& text : query) texts.push_back(text.c_str());
        ask(table, texts);

        RowNumbers expected;
        for (unsigned row = 0; row < rows.size(); ++row) {
            bool all = true;
            for (std::size_t i = 0; i < columns.size(); ++i) {
                if (isBlank(query[i])) continue;
                all = all && (i == 1 || i == 3 ? scanRange(rows[row][1], rows[row][3], query[i])
                                               : scanText(rows[row][i], query[i], columns[i].type));
            }
            if (all) expected.push_back(row);
        }
        matched += static_cast<unsigned>(expected.size());
        ASSERT_EQ(expected, matching(table));
        ASSERT_EQ(expected.size(), table.tag_matching_records(0));
        ASSERT_EQ(expected, tagged(table));
    }
    EXPECT_GT(matched, 0u);
}

}  // namespace
