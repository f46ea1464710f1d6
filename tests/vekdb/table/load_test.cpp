#include <gtest/gtest.h>

#include <string>

#include "testing/capture_diagnostics.h"
#include "testing/table_files.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::CaptureDiagnostics;
using testing_support::errorOf;
using testing_support::headerAnd;
using testing_support::headerOf;
using testing_support::joined;
using testing_support::linesOf;
using testing_support::quotedLine;
using testing_support::rowsOf;
using testing_support::Strings;
using testing_support::TempDir;
using testing_support::valuesOf;
using Messages = std::vector<std::string>;
using Rows = std::vector<Strings>;
using Error = std::vector<int>;

constexpr int all = 1 << 30;
const Messages notAllFilled = {"vekdb::add_text: returning because not all fields filled\n"};
const Messages noMoreLines = {"vekdb::add_text: returning because no more lines\n"};

class Load : public testing::Test {
protected:
    std::unique_ptr<vekdb> load(const Strings& lines, int maxRecords = all, bool magic = true) {
        return loadBytes(joined(lines), maxRecords, magic);
    }
    std::unique_ptr<vekdb> loadBytes(const std::string& bytes, int maxRecords = all,
                                     bool magic = true, const char* name = "log.vek") {
        folder.write(name, bytes);
        return std::make_unique<vekdb>(folder.widePath(name), maxRecords, magic);
    }

    TempDir folder;
    CaptureDiagnostics said;
};

TEST_F(Load, FillsColumnsParametersAndRows) {
    auto table =
        load({"\"VEKDB:Rev 1\"", "\"Project:Night shoot\"", "\"VEKDB\"", "\"6\",\"5\",\"4\",\"12\"",
              "\"text\",\"text\",\"long\",\"text\"", "\"Reel\",\"Scene\",\"Take\",\"Notes\"",
              "\"A001\",\"12\",\"3\",\"He said \"\"cut\"\"\\nthen left\"",
              "\"A002\",\"12A\",\"\",\"\""});
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ(1, table->get_revision());
    EXPECT_EQ(4u, table->get_num_fields());
    EXPECT_STREQ("Notes", table->get_fieldname(3));
    EXPECT_EQ(DBFieldTypes::long_integer, table->get_field_type(2));
    EXPECT_STREQ("Night shoot", table->get_param_val("Project"));
    EXPECT_EQ((Rows{{"A001", "12", "3", "He said \"cut\"\nthen left"}, {"A002", "12A", "", ""}}),
              rowsOf(*table));
    EXPECT_EQ(Error{}, errorOf(*table));
    EXPECT_EQ(Messages{}, said.messages);
}

TEST_F(Load, HeaderAloneIsAValidTableWithoutRecords) {
    auto table = load(headerOf({"A", "B"}));
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ(2u, table->get_num_fields());
    EXPECT_EQ(0u, table->get_num_records());
    EXPECT_EQ(500u, table->get_capacity());
    EXPECT_EQ(0, table->get_modification_time());
}

TEST_F(Load, NothingIsChangedOrModifiedAfterwards) {
    const std::time_t before = std::time(nullptr);
    auto table = load(headerAnd({"A"}, {"\"a\"", " b ", "\"c\"\"\""}));
    ASSERT_EQ(3u, table->get_num_records());
    EXPECT_FALSE(table->get_modified());
    EXPECT_LE(before, table->get_modification_time());
    for (unsigned row = 0; row < 3; ++row) {
        EXPECT_FALSE(table->get_record(row)->get_changed());
        EXPECT_EQ(table.get(), table->get_record(row)->get_container());
        EXPECT_EQ(0u, table->get_tag(row));
    }
}

TEST_F(Load, AChangeOfALoadedRecordModifiesItsTable) {
    auto table = load(headerAnd({"A", "B"}, {"\"a\",\"b\"", "\"c\",\"d\""}));
    EXPECT_TRUE(table->set_field(1, 0, "new"));
    EXPECT_TRUE(table->get_modified());
    EXPECT_EQ((Rows{{"a", "b"}, {"new", "d"}}), rowsOf(*table));
}

TEST_F(Load, MaximumOfRecords) {
    const Strings lines = headerAnd({"A"}, {"\"a\"", "\"b\"", "\"c\""});
    EXPECT_EQ((Rows{{"a"}, {"b"}}), rowsOf(*load(lines, 2)));
    EXPECT_EQ(Rows{}, rowsOf(*load(lines, 0)));
    EXPECT_EQ(Rows{}, rowsOf(*load(lines, -5)));
    EXPECT_TRUE(load(lines, 0)->get_valid());
}

TEST_F(Load, LinesBehindTheMaximumAreNotLookedAt) {
    const Strings lines = headerAnd({"A"}, {"\"a\"", "\"b\"", "\"c\",\"d\""});
    auto table = load(lines, 2);
    EXPECT_EQ((Rows{{"a"}, {"b"}}), rowsOf(*table));
    EXPECT_EQ(Error{}, errorOf(*table));
    EXPECT_EQ((Error{1, 2, 0, 0}), errorOf(*load(lines, 3)));
    EXPECT_EQ(notAllFilled, said.logged);
}

TEST_F(Load, RecordsEndAtABlankLine) {
    for (const char* blank : {"", " ", "\t \v\f"}) {
        auto table = load(headerAnd({"A"}, {"\"a\"", blank, "\"b\""}));
        EXPECT_EQ(Rows{{"a"}}, rowsOf(*table));
        EXPECT_EQ(Error{}, errorOf(*table));
    }
    EXPECT_EQ(Messages{}, said.messages);
}

TEST_F(Load, ALineOfTheWrongLengthEndsTheRecordsWithAnError) {
    auto table =
        load(headerAnd({"A", "B"}, {"\"a\",\"b\"", "\"c\",\"d\"", "\"e\"", "\"f\",\"g\""}));
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ((Rows{{"a", "b"}, {"c", "d"}}), rowsOf(*table));
    EXPECT_EQ((Error{1, 2, 0, 0}), errorOf(*table));
    EXPECT_EQ(notAllFilled, said.logged);
    EXPECT_EQ(notAllFilled, said.messages);
    EXPECT_FALSE(table->get_modified());
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(*load(headerAnd({"A"}, {"\"a\",\"b\""}))));
}

TEST_F(Load, AnOverlongValueEndsTheRecordsUnlessTheCountHappensToFit) {
    const std::string x(4096, 'x');
    auto table = load(headerAnd({"A", "B", "C"}, {quotedLine({x, "b", "c"})}));
    EXPECT_EQ((Rows{{x.substr(1), ",b", "c"}}), rowsOf(*table));
    auto refused = load(headerAnd({"A", "B"}, {quotedLine({x.substr(1), "b"})}));
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(*refused));
}

TEST_F(Load, ALineOfAControlCharacterIsNotTheEnd) {
    auto table = load(headerAnd({"A"}, {"\"a\"", "\x01"}));
    EXPECT_EQ((Error{1, 1, 0, 0}), errorOf(*table));
}

TEST_F(Load, CarriageReturnsBeforeLineFeedsBelongToTheEndOfLine) {
    auto table = loadBytes(joined(headerAnd({"A", "B"}, {"\"a\",\"b\"", "c,d"}), "\r\n"));
    EXPECT_EQ((Rows{{"a", "b"}, {"c", "d"}}), rowsOf(*table));
}

TEST_F(Load, TheLastLineNeedsNoEndOfLine) {
    const std::string header = joined(headerOf({"A", "B"}));
    for (const char* last : {"\"a\",\"b\"", "a,b", "\"a\",\"b\"\r", " a, b"}) {
        EXPECT_EQ((Rows{{"a", "b"}}), rowsOf(*loadBytes(header + last))) << last;
    }
}

TEST_F(Load, ALineEndsAtItsNul) {
    const std::string header = joined(headerOf({"A", "B"}));
    auto table = loadBytes(header + std::string("\"a\",\"b\"\0,\"c\"\n\"d\",\"e\"\n", 21));
    EXPECT_EQ((Rows{{"a", "b"}, {"d", "e"}}), rowsOf(*table));
    auto damaged = loadBytes(header + std::string("\"a\",\"b\"\n\"c\0d\",\"e\"\n", 18));
    EXPECT_EQ((Rows{{"a", "b"}}), rowsOf(*damaged));
    EXPECT_EQ((Error{1, 1, 0, 0}), errorOf(*damaged));
}

TEST_F(Load, CapacityGrowsUntilThereIsAFreeSlot) {
    EXPECT_EQ(500u, load(headerAnd({"A"}, Strings(499, "\"a\"")))->get_capacity());
    auto table = load(headerAnd({"A"}, Strings(500, "\"a\"")));
    EXPECT_EQ(500u, table->get_num_records());
    EXPECT_EQ(1000u, table->get_capacity());
}

TEST_F(Load, UnreadableFilesGiveAnInvalidTableAndNoError) {
    for (const char* name : {"missing.vek", ".", "missing/log.vek"}) {
        vekdb table(folder.widePath(name), all, false);
        EXPECT_FALSE(table.get_valid());
        EXPECT_EQ(Error{}, errorOf(table));
    }
    vekdb unnamed(nullptr, all, false);
    EXPECT_FALSE(unnamed.get_valid());
    EXPECT_EQ(Messages{}, said.messages);
}

TEST_F(Load, NoParameterBlockIsInvalidWithoutAnError) {
    for (const Strings& lines :
         {Strings{}, Strings{""}, Strings{"\"VEKDB\""}, Strings{"\"A\",\"B\"", "\"1\",\"2\""},
          Strings{"", "\"VEKDB:Rev 1\"", "\"VEKDB\""}, Strings{"\xEF\xBB\xBF\"VEKDB:Rev 1\""},
          Strings{"\x01"}, Strings{"VEKDB Rev:1"}}) {
        auto table = load(lines, all, false);
        EXPECT_FALSE(table->get_valid());
        EXPECT_EQ(Error{}, errorOf(*table));
        EXPECT_EQ(0u, table->get_num_params());
        EXPECT_EQ(0u, table->get_capacity());
    }
}

TEST_F(Load, TruncatedHeaders) {
    auto magicOnly = load({"\"VEKDB:Rev 1\"", "\"VEKDB\""});
    EXPECT_TRUE(magicOnly->get_valid());
    EXPECT_EQ(0u, magicOnly->get_num_fields());
    EXPECT_EQ(Error{}, errorOf(*magicOnly));
    auto widthsOnly = load({"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"6\",\"5\""});
    EXPECT_FALSE(widthsOnly->get_valid());
    EXPECT_EQ((Error{3, 3, 0, 0}), errorOf(*widthsOnly));
    EXPECT_EQ(2u, widthsOnly->get_num_fields());
}

TEST_F(Load, ATypesLineOfAnotherLengthIsAnError) {
    auto table = load(
        {"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"6\",\"5\"", "\"text\"", "\"A\",\"B\"", "\"a\",\"b\""});
    EXPECT_FALSE(table->get_valid());
    EXPECT_EQ((Error{3, 3, 0, 0}), errorOf(*table));
    EXPECT_EQ(2u, table->get_num_fields());
    EXPECT_EQ(0u, table->get_num_records());
    EXPECT_STREQ("", table->get_fieldname(1));
    EXPECT_EQ(DBFieldTypes::none, table->get_field_type(1));
    EXPECT_FALSE(table->set_fieldname(1, "x"));
}

TEST_F(Load, ANamesLineOfAnotherLengthIsAnError) {
    auto table =
        load({"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"6\",\"5\"", "\"text\",\"text\"", "\"A\""});
    EXPECT_FALSE(table->get_valid());
    EXPECT_EQ((Error{3, 4, 0, 0}), errorOf(*table));
    EXPECT_EQ(2u, table->get_num_fields());
}

TEST_F(Load, UnknownTypesBecomeTextWithAnErrorThatABadLineReplaces) {
    const Strings header = {"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"6\",\"5\",\"5\"",
                            "\"text\",\"integer\",\"x\"", "\"A\",\"B\",\"C\""};
    auto table = load(header);
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ(DBFieldTypes::text, table->get_field_type(1));
    EXPECT_EQ('x', static_cast<char>(table->get_field_type(2)));
    EXPECT_EQ((Error{2, 3, 0, 0}), errorOf(*table));
    Strings lines = header;
    lines.push_back("\"a\"");
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(*load(lines)));
}

TEST_F(Load, OfColumnsOfTheSameNameTheLastIsFoundAndAmpersandsGo) {
    auto table = load(headerOf({"Reel", "reel", "R&D"}));
    EXPECT_EQ(1u, table->get_fieldnum("REEL"));
    EXPECT_STREQ("RD", table->get_fieldname(2));
}

TEST_F(Load, SpecialLabelsAreFlaggedAndTheFirstColumnSorts) {
    auto table = load(headerAnd({"B", "Start time"}, {"\"b\",\"x\"", "\"a\",\"y\""}));
    EXPECT_TRUE(table->isSpecialLabelField(1));
    table->sort(1, 0);
    EXPECT_EQ((Strings{"a", "b"}), columnOf(*table, 0));
}

TEST_F(Load, ParametersInEveryAcceptedForm) {
    auto table =
        load({"vekdb:  Rev 1,junk", "\"  A :b:c \"", "\":skipped\"", "\" : too\"", "\"Empty:\"",
              "\"A :second\"", "VekDB,junk", "\"4\"", "\"text\"", "\"Reel\""});
    ASSERT_TRUE(table->get_valid());
    ASSERT_EQ(4u, table->get_num_params());
    EXPECT_STREQ("vekdb", table->get_param_name(0));
    EXPECT_STREQ("Rev 1", table->get_param_text(0));
    EXPECT_STREQ("A ", table->get_param_name(1));
    EXPECT_STREQ("b:c", table->get_param_text(1));
    EXPECT_STREQ("", table->get_param_text(2));
    EXPECT_STREQ("second", table->get_param_text(3));
    EXPECT_STREQ("b:c", table->get_param_val("a "));
    EXPECT_EQ(1, table->get_revision());
}

TEST_F(Load, AFirstLineInLowerCaseIsAParameterBlock) {
    Strings lines = headerAnd({"A"}, {"\"a\""});
    lines[0] = "\"vekdb:Rev 1\"";
    EXPECT_EQ(Rows{{"a"}}, rowsOf(*load(lines)));
}

TEST_F(Load, FortyParametersAreKept) {
    Strings lines = {"\"VEKDB:Rev 1\""};
    for (int i = 1; i < 45; ++i) lines.push_back("\"p" + std::to_string(i) + ":x\"");
    lines.insert(lines.end(), {"\"VEKDB\"", "\"4\"", "\"text\"", "\"A\"", "\"a\""});
    auto table = load(lines);
    EXPECT_EQ(40u, table->get_num_params());
    EXPECT_STREQ("p39", table->get_param_name(39));
    EXPECT_EQ(Rows{{"a"}}, rowsOf(*table));
}

TEST_F(Load, OtherRevisionsAreWarnedOfAndLoad) {
    const auto revisionOf = [this](const std::string& value) {
        Strings lines = headerAnd({"A"}, {"\"a\""});
        lines[0] = "\"VEKDB:" + value + "\"";
        auto table = load(lines);
        EXPECT_EQ(Rows{{"a"}}, rowsOf(*table));
        return table->get_revision();
    };
    EXPECT_EQ(2, revisionOf("Rev 2"));
    EXPECT_EQ((Messages{"vekdb::read_text:  Warning: vekdb is revision 2, "
                        "current level is 1\n"}),
              said.debugged);
    EXPECT_EQ(3, revisionOf("Rev -3"));
    EXPECT_EQ(0, revisionOf("none"));
    EXPECT_EQ(12, revisionOf("a12b3"));
    EXPECT_EQ(INT32_MAX, revisionOf("99999999999999999999"));
    EXPECT_EQ(5u, said.debugged.size());
    EXPECT_EQ(Messages{}, said.logged);
    EXPECT_EQ(1, revisionOf("1"));
    EXPECT_EQ(5u, said.debugged.size());
}

TEST_F(Load, ABlockThatReachesTheEndOfTheFileIsALoadFailure) {
    for (const bool magic : {true, false}) {
        for (const Strings& lines :
             {Strings{"\"VEKDB:Rev 1\""}, Strings{"\"VEKDB:Rev 1\"", "\"A:b\""}}) {
            auto table = load(lines, all, magic);
            EXPECT_FALSE(table->get_valid());
            EXPECT_EQ(Error{}, errorOf(*table));
            EXPECT_EQ(0u, table->get_num_fields());
        }
    }
}

TEST_F(Load, ALineWithoutAColonBeforeAMagicLineIsALoadFailure) {
    for (const bool magic : {true, false}) {
        auto table = load({"\"VEKDB:Rev 1\"", "\"no colon\"", "\"A:b\"", "", "\"vekdb\",x", "\"4\"",
                           "\"text\"", "\"A\""},
                          all, magic);
        EXPECT_FALSE(table->get_valid());
        EXPECT_EQ(Error{}, errorOf(*table));
        EXPECT_EQ(0u, table->get_num_fields());
        EXPECT_EQ(0u, table->get_num_records());
    }
}

const Strings withoutHeader = {"\"VEKDB:Rev 1\"", "\"Reel\",\"START\",\"Sender\",\"Notes\"",
                               "\"a\",\"b\",\"c\",\"d\""};

TEST_F(Load, AFileWithoutAHeaderIsRefusedWhereTheMagicLineIsRequired) {
    auto table = load(withoutHeader, all, true);
    EXPECT_FALSE(table->get_valid());
    EXPECT_EQ(Error{}, errorOf(*table));
    EXPECT_EQ(0u, table->get_num_fields());
}

TEST_F(Load, AFileWithoutAHeaderGetsItsTypesFromItsNames) {
    auto table = load(withoutHeader, all, false);
    ASSERT_TRUE(table->get_valid());
    EXPECT_STREQ("START", table->get_fieldname(1));
    EXPECT_EQ(DBFieldTypes::text, table->get_field_type(0));
    EXPECT_EQ(DBFieldTypes::timecode, table->get_field_type(1));
    EXPECT_EQ(DBFieldTypes::timecode, table->get_field_type(2));
    EXPECT_EQ(DBFieldTypes::text, table->get_field_type(3));
    EXPECT_EQ((Rows{{"a", "b", "c", "d"}}), rowsOf(*table));
    EXPECT_EQ(1u, table->get_fieldnum("start"));
}

TEST_F(Load, ABlankNamesLineIsATableWithoutColumns) {
    auto table = load({"\"VEKDB:Rev 1\"", ""}, all, false);
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ(0u, table->get_num_fields());
    EXPECT_FALSE(load({"\"VEKDB:Rev 1\"", ""}, all, true)->get_valid());
}

TEST_F(Load, ALineWithoutAColonEndsTheBlockAlsoBehindTheFortiethParameter) {
    Strings lines = {"\"VEKDB:Rev 1\""};
    for (int i = 1; i < 45; ++i) lines.push_back("\"p" + std::to_string(i) + ":x\"");
    lines.insert(lines.end(), {"\"A\",\"B\"", "\"a\",\"b\""});
    EXPECT_FALSE(load(lines, all, true)->get_valid());
    EXPECT_EQ((Rows{{"a", "b"}}), rowsOf(*load(lines, all, false)));
}

TEST_F(Load, AMagicLineAmongTheRecordsIsReachedInTablesOfOneColumn) {
    auto table = load(headerAnd({"A"}, {"\"a\"", "\"vekdb\"", "\"x\"", "\"y\"", "\"z\"", "\"w\""}));
    EXPECT_EQ((Rows{{"a"}, {"z"}, {"w"}}), rowsOf(*table));
    EXPECT_EQ(Error{}, errorOf(*table));
    auto blankBetween = load(headerAnd({"A"}, {"\"VEKDB\"", "", "\"y\"", "\"z\""}));
    EXPECT_EQ(Rows{{"z"}}, rowsOf(*blankBetween));
    EXPECT_EQ(Messages{}, said.messages);
}

TEST_F(Load, TheLineThatTakesAMagicLinesPlaceMayHaveAnyLength) {
    auto table = load(headerAnd({"A"}, {"\"VEKDB\"", "\"x\"", "\"y\"", "\"1\",\"2\",\"3\""}));
    EXPECT_EQ((Rows{{"1", "2", "3"}}), rowsOf(*table));
    EXPECT_EQ(Error{}, errorOf(*table));
}

TEST_F(Load, AMagicLineWithNothingBehindItEndsTheRecords) {
    auto table = load(headerAnd({"A"}, {"\"a\"", "\"VEKDB\"", "\"x\"", "\"y\""}));
    EXPECT_EQ(Rows{{"a"}}, rowsOf(*table));
    EXPECT_EQ(noMoreLines, said.debugged);
    EXPECT_EQ(Messages{}, said.logged);
    EXPECT_EQ(Error{}, errorOf(*table));
}

TEST_F(Load, InWiderTablesAMagicLineHasTheWrongLength) {
    auto table = load(headerAnd({"A", "B"}, {"\"VEKDB\"", "\"a\",\"b\""}));
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(*table));
    auto fitting =
        load(headerAnd({"A", "B"}, {"\"VEKDB\",\"b\"", "\"x\"", "\"y\"", "\"c\",\"d\""}));
    EXPECT_EQ((Rows{{"c", "d"}}), rowsOf(*fitting));
}

TEST_F(Load, MoreColumnsThanThereCanBe) {
    const std::string header = "\"VEKDB:Rev 1\"\n\"VEKDB\"\n" + std::string(65538, ',') + "\n" +
                               std::string(65538, ',') + "\n" + std::string(65538, ',') + "\n";
    auto table = loadBytes(header + std::string(65535, ',') + "\n" + std::string(65538, ','));
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ(65535u, table->get_num_fields());
    EXPECT_EQ(1u, table->get_num_records());
    EXPECT_EQ((Error{1, 1, 0, 0}), errorOf(*table));
}

TEST_F(Load, ALineOfManyMoreValuesThanColumnsDoesNotPassForAShortOne) {
    auto table = loadBytes(joined(headerOf({"A", "B"})) + std::string(65538, ',') + "\n");
    EXPECT_EQ(0u, table->get_num_records());
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(*table));
}

TEST_F(Load, LinesTooLongForSlicesLoadToo) {
    Strings names;
    Strings values;
    for (int i = 0; i < 40; ++i) {
        names.push_back("c" + std::to_string(i));
        values.push_back(std::string(4000, static_cast<char>('a' + i % 26)));
    }
    auto table = load(headerAnd(names, {quotedLine(values), quotedLine(values)}));
    EXPECT_EQ((Rows{values, values}), rowsOf(*table));
}

TEST_F(Load, LoadingAgainForgetsWhatWas) {
    folder.write("other", joined(headerAnd({"X"}, {"\"x\""})));
    auto table = load(headerAnd({"A", "B"}, {"\"a\",\"b\"", "\"c\""}));
    table->add_param("P", "p");
    table->set_tag(0, 1);
    table->set_show_tags_only(1);
    table->set_filename(folder.widePath("other"));
    table->loadFromFile(all, true);
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ(Rows{{"x"}}, rowsOf(*table));
    EXPECT_EQ(Error{}, errorOf(*table));
    EXPECT_EQ(1u, table->get_num_params());
    EXPECT_EQ(0xFFFFFFFF, table->get_fieldnum("A"));
    EXPECT_FALSE(table->get_modified());
}

TEST_F(Load, AFailedReloadLeavesAnEmptyTable) {
    auto table = load(headerAnd({"A"}, {"\"a\""}));
    table->set_filename(folder.widePath("missing"));
    table->loadFromFile(all, true);
    EXPECT_FALSE(table->get_valid());
    EXPECT_EQ(0u, table->get_num_records());
    EXPECT_EQ(0u, table->get_num_fields());
    EXPECT_EQ(0u, table->get_capacity());
    table->sort(1, 0);
}

TEST_F(Load, RecordsOutliveTheOthersOfTheirTextAndTheTable) {
    auto table = load(headerAnd({"A", "B"}, {"\"a\",\"b\"", "\"c\",\"d\"", " e , f "}));
    auto plain = std::make_unique<dbrecord>(*table->get_record(1));
    auto moved = std::make_unique<dbrecord>(*table->get_record(2));
    table->delete_records(0, 2);
    EXPECT_EQ((Rows{{"e", "f"}}), rowsOf(*table));
    table.reset();
    EXPECT_EQ((Strings{"c", "d"}), valuesOf(*plain));
    plain.reset();
    EXPECT_EQ((Strings{"e", "f"}), valuesOf(*moved));
}

TEST_F(Load, ReadParamsLeavesTheLineBehindTheBlock) {
    TextFile file;
    for (const char* line : {"\"VEKDB:Rev 1\"", "\"A:b\"", "\"VEKDB\",x", "\"4\""}) {
        file.appendLine(line);
    }
    vekdb table;
    dbrecord header(24);
    table.read_params(file, header);
    EXPECT_EQ((Strings{"VEKDB", "x"}), valuesOf(header));
    EXPECT_EQ(3u, file.currentLine);
    EXPECT_STREQ("b", table.get_param_val("A"));
    table.read_params(file, header);
    EXPECT_EQ(Strings{"4"}, valuesOf(header));
    EXPECT_EQ(0u, table.get_num_params());
}

// --- add_text and load_text

class AddText : public testing::Test {
protected:
    AddText() : table(textColumns({"A", "B"})) {}

    unsigned add(const Strings& lines, int skipFirst = 0, int maxRecords = all) {
        return addTo(table, lines, skipFirst, maxRecords);
    }
    static unsigned addTo(vekdb& table, const Strings& lines, int skipFirst = 0,
                          int maxRecords = all) {
        TextFile file;
        for (const std::string& line : lines) file.appendLine(line.c_str());
        return table.add_text(file, skipFirst, maxRecords);
    }

    vekdb table;
    CaptureDiagnostics said;
};

TEST_F(AddText, AppendsChangedRecordsAndModifiesTheTable) {
    EXPECT_EQ(2u, add({"\"a\",\"b\"", "c,d"}));
    EXPECT_EQ(1u, add({"\"e\",\"f\""}));
    EXPECT_EQ((Rows{{"a", "b"}, {"c", "d"}, {"e", "f"}}), rowsOf(table));
    EXPECT_TRUE(table.get_record(0)->get_changed());
    EXPECT_EQ(&table, table.get_record(0)->get_container());
    EXPECT_TRUE(table.get_modified());
    EXPECT_NE(0, table.get_modification_time());
}

TEST_F(AddText, ReadsFromTheCurrentLineAndLeavesItBehindTheLastRead) {
    TextFile file;
    for (const char* line : {"x", "\"a\",\"b\"", "\"c\",\"d\"", "", "\"e\",\"f\""}) {
        file.appendLine(line);
    }
    file.currentLine = 1;
    EXPECT_EQ(1u, table.add_text(file, 0, 1));
    EXPECT_EQ(2u, file.currentLine);
    EXPECT_EQ(1u, table.add_text(file, 0, all));
    EXPECT_EQ(4u, file.currentLine);
    EXPECT_EQ(5u, linesOf(file).size());
}

TEST_F(AddText, TakesNothingWhenFullOrAskedForNothing) {
    EXPECT_EQ(0u, add({"\"a\",\"b\""}, 0, 0));
    EXPECT_EQ(0u, add({"\"a\",\"b\""}, 0, -1));
    table.add_records(500);
    EXPECT_EQ(0u, add({"\"a\",\"b\""}));
    table.add_records(1);
    EXPECT_EQ(1u, add({"\"a\",\"b\""}));
    vekdb empty;
    EXPECT_EQ(0u, addTo(empty, {"\"a\",\"b\""}));
}

TEST_F(AddText, ARefusedLineModifiesTheTableAllTheSame) {
    EXPECT_EQ(0u, add({"\"short\""}));
    EXPECT_TRUE(table.get_modified());
    EXPECT_NE(0, table.get_modification_time());
}

TEST_F(AddText, TheErrorCountsTheRecordsOfTheCall) {
    EXPECT_EQ(2u, add({"\"a\",\"b\"", "\"c\",\"d\""}));
    EXPECT_EQ(1u, add({"\"e\",\"f\"", "\"g\""}));
    EXPECT_EQ((Error{1, 1, 0, 0}), errorOf(table));
    EXPECT_EQ(notAllFilled, said.messages);
    EXPECT_EQ(notAllFilled, said.logged);
    EXPECT_EQ(3u, table.get_num_records());
}

TEST_F(AddText, TheErrorStaysWhenLaterLinesAreGood) {
    add({"\"short\""});
    EXPECT_EQ(1u, add({"\"a\",\"b\""}));
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(table));
}

TEST_F(AddText, TheFirstLineMayBePassedOver) {
    EXPECT_EQ(1u, add({"\"no\",\"row\"", "\"a\",\"b\""}, 1));
    EXPECT_EQ((Rows{{"a", "b"}}), rowsOf(table));
}

TEST_F(AddText, ThePassedOverLineIsCountedItsReplacementIsNot) {
    EXPECT_EQ(0u, add({"\"short\"", "\"a\",\"b\""}, 1));
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(table));
    EXPECT_EQ(2u, add({"\"no\",\"row\"", "\"VEKDB\"", "\"a\",\"b\""}, 1));
    EXPECT_EQ((Rows{{"VEKDB"}, {"a", "b"}}), rowsOf(table));
}

TEST_F(AddText, NothingBehindThePassedOverLine) {
    EXPECT_EQ(0u, add({"\"no\",\"row\""}, 1));
    EXPECT_EQ(0u, add({"\"no\",\"row\"", " ", "\"a\",\"b\""}, 1));
    EXPECT_EQ((Messages{noMoreLines[0], noMoreLines[0]}), said.debugged);
    EXPECT_EQ(0u, table.get_num_records());
}

TEST_F(Load, LoadTextOfAnOrdinaryFileStopsAtTheHeader) {
    auto table = load(headerAnd({"A", "B"}, {"\"a\",\"b\""}));
    EXPECT_EQ(0u, table->load_text(all));
    EXPECT_EQ((Error{1, 0, 0, 0}), errorOf(*table));
    EXPECT_TRUE(table->get_valid());
    EXPECT_EQ((Rows{{"a", "b"}}), rowsOf(*table));
}

TEST_F(Load, LoadTextOfAFileOfOneColumnTakesTheHeaderForRecords) {
    auto table =
        load({"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"10\"", "\"text\"", "\"Reel\"", "\"A001\""});
    EXPECT_EQ(5u, table->load_text(all));
    EXPECT_EQ((Rows{{"A001"}, {"VEKDB"}, {"10"}, {"text"}, {"Reel"}, {"A001"}}), rowsOf(*table));
    EXPECT_TRUE(table->get_modified());
    EXPECT_FALSE(table->get_record(0)->get_changed());
    EXPECT_TRUE(table->get_record(5)->get_changed());
    EXPECT_EQ(1u, table->load_text(1));
    EXPECT_EQ(7u, table->get_num_records());
}

TEST_F(Load, LoadTextWithoutRoomOrFileTakesNothing) {
    auto table = load(headerAnd({"A"}, {"\"a\""}));
    table->add_records(499);
    ASSERT_EQ(table->get_capacity(), table->get_num_records());
    EXPECT_EQ(0u, table->load_text(all));
    table->delete_records(0, 10);
    table->set_filename(folder.widePath("missing"));
    EXPECT_EQ(0u, table->load_text(all));
}

// --- plain csv

class LoadCsv : public Load {
protected:
    std::unique_ptr<vekdb> csv(const std::string& bytes, int maxRecords = all) {
        return loadBytes(bytes, maxRecords, true, "log.csv");
    }
};

TEST_F(LoadCsv, NamesAndRecords) {
    auto table = csv("Reel,Scene\nA001,12\n B ,\"x,y\"\n");
    EXPECT_TRUE(table->get_valid());
    EXPECT_STREQ("Scene", table->get_fieldname(1));
    EXPECT_EQ(DBFieldTypes::text_s, table->get_field_type(1));
    EXPECT_EQ((Rows{{"A001", "12"}, {" B ", "\"x,y\""}}), rowsOf(*table));
    EXPECT_FALSE(table->get_modified());
    EXPECT_FALSE(table->get_record(0)->get_changed());
    EXPECT_EQ(0u, table->get_num_params());
    EXPECT_EQ(500u, table->get_capacity());
}

TEST_F(LoadCsv, MissingValuesStayEmptyAndSurplusIsDropped) {
    EXPECT_EQ((Rows{{"1", "", ""}, {"1", "2", "3"}}), rowsOf(*csv("a,b,c\n1\n1,2,3,4\n")));
}

TEST_F(LoadCsv, PiecesAreThoseOfTheSplit) {
    EXPECT_EQ((Rows{{"12", "A", ""}, {"", "", ""}, {"a", "", ""}}),
              rowsOf(*csv("x,y,z\n,12,A\n,,\na,,\n")));
    EXPECT_STREQ("\"Reel\"", csv("\"Reel\",b\n")->get_fieldname(0));
}

TEST_F(LoadCsv, ABlankLineIsARecord) {
    EXPECT_EQ((Rows{{"1", "2"}, {"", ""}}), rowsOf(*csv("a,b\n1,2\n\n")));
    EXPECT_EQ((Rows{{"1", "2"}, {"", ""}, {"3", "4"}}), rowsOf(*csv("a,b\n1,2\r\n\r\n3,4")));
}

TEST_F(LoadCsv, FilesWithoutLinesAndWithAnEmptyOne) {
    auto none = csv("");
    EXPECT_TRUE(none->get_valid());
    EXPECT_EQ(0u, none->get_num_fields());
    EXPECT_EQ(0u, none->get_num_records());
    EXPECT_EQ(Error{}, errorOf(*none));
    auto one = csv("\n");
    EXPECT_TRUE(one->get_valid());
    EXPECT_EQ(1u, one->get_num_fields());
    EXPECT_STREQ("", one->get_fieldname(0));
}

TEST_F(LoadCsv, MaximumOfRecordsBindsHereToo) {
    EXPECT_EQ(2u, csv("a\n1\n2\n3\n", 2)->get_num_records());
    EXPECT_EQ(0u, csv("a\n1\n", 0)->get_num_records());
    EXPECT_EQ(1u, csv("a\n1\n", 0)->get_num_fields());
}

TEST_F(LoadCsv, ColumnsAreFoundByNameAlsoAfterOneIsAdded) {
    auto table = csv("Reel,Scene\nA,1\n");
    table->addField({"Notes", DBFieldTypes::text});
    EXPECT_EQ(1u, table->get_fieldnum("scene"));
    EXPECT_EQ(2u, table->get_fieldnum("NOTES"));
    EXPECT_EQ((Rows{{"A", "1", ""}}), rowsOf(*table));
}

TEST_F(LoadCsv, MoreColumnsThanThereCanBe) {
    std::string header;
    for (int i = 0; i < 65538; ++i) header += "a,";
    EXPECT_EQ(65535u, csv(header + "b\n")->get_num_fields());
}

TEST_F(LoadCsv, TheEndingIsCaseSensitive) {
    const std::string text = joined(headerAnd({"A"}, {"\"a\""}));
    auto upper = loadBytes(text, all, true, "log.CSV");
    EXPECT_TRUE(upper->get_valid());
    EXPECT_EQ(1u, upper->get_num_params());
    auto lower = loadBytes(text, all, true, "log.csv");
    EXPECT_STREQ("\"VEKDB:Rev 1\"", lower->get_fieldname(0));
    EXPECT_FALSE(loadBytes("a,b\n1,2\n", all, true, "log.CSV")->get_valid());
}

TEST_F(LoadCsv, AFolderIsNoEmptyFile) {
    std::filesystem::create_directory(folder.file("folder.csv"));
    EXPECT_FALSE(vekdb(folder.widePath("folder.csv"), all, true).get_valid());
}

}  // namespace
