#include <gmock/gmock.h>

#include <random>
#include <string>

#include "formats/log/column_edits.h"
#include "formats/reading/open_log.h"
#include "formats/saving/save_in_place.h"
#include "testing/temp_dir.h"

using testing_support::TempDir;
using namespace vek::formats;

namespace {

// A log that was read from a file, which is to be changed in place.
class Opened {
public:
    Opened(const std::string& name, const std::string& text) : log(open(name, text)) {}

    void set(unsigned row, unsigned short column, const char* text) {
        log.table->get_record(row)->setField(column, text);
    }

    // The file as it would be; "as it is" where nothing changed.
    std::string saved(const std::vector<unsigned>& rows) {
        InPlace now(log);
        now.rows = rows;
        Output out("text");
        Losses losses;
        if (!writeInPlace(now, true, out, losses)) return "as it is";
        out.close();
        return out.take();
    }
    std::string saved() { return saved(InPlace(log).rows); }

private:
    Log open(const std::string& name, const std::string& text) {
        folder_.write(name, text);
        return openLogToCopy(folder_.file(name).string(), {});
    }

    TempDir folder_;

public:
    Log log;
};

}  // namespace

TEST(SavingInPlace, LeavesAFileOfWhichNothingChanged) {
    Opened csv("a.csv", "A,B\n1,\"2\"\n\n3, 4\n");
    EXPECT_EQ(csv.saved(), "as it is");
    csv.set(0, 0, "1");
    EXPECT_EQ(csv.saved(), "as it is");
}

// Of what is made anew there is more than one text holds.
TEST(SavingInPlace, WritesManyLongChangesBetweenRowsThatStay) {
    std::string before = "A,B\n";
    std::string after = before;
    for (unsigned i = 0; i < 3000; ++i) {
        const std::string row = std::to_string(i) + ",x\n";
        before += row;
        after += i % 3 == 0 ? row : std::to_string(i) + "," + std::string(400, 'y') + "\n";
    }
    Opened csv("a.csv", before);
    for (unsigned i = 0; i < 3000; ++i) {
        if (i % 3 != 0) csv.set(i, 1, std::string(400, 'y').c_str());
    }
    EXPECT_EQ(csv.saved(), after);
}

TEST(SavingInPlace, WritesOnlyTheRowsThatChanged) {
    Opened csv("a.csv", "A,B\r\n\"1\",x\r\n\r\n\"3\",y\r\n");
    csv.set(1, 1, "z,z");
    EXPECT_EQ(csv.saved(), "A,B\r\n\"1\",x\r\n\r\n\"3\",\"z,z\"\r\n");
}

TEST(SavingInPlace, TakesRowsAwayAndPutsThemInAnotherOrder) {
    Opened csv("a.csv", "A\n\"1\"\n2\n3\n");
    EXPECT_EQ(csv.saved({2, 0}), "A\n3\n\"1\"\n");
}

TEST(SavingInPlace, EndsALastLineThatHadNoneWhereOneComesBehindIt) {
    Opened csv("a.csv", "A\n1\n2");
    EXPECT_EQ(csv.saved({1, 0}), "A\n2\n1\n");
}

TEST(SavingInPlace, EndsALastRowThatIsAnEmptyLine) {
    Opened tsv("a.tsv", "A\n5\" x\n7\" y");
    tsv.set(1, 0, "");
    EXPECT_EQ(tsv.saved(), "A\n5\" x\n\n");
}

TEST(SavingInPlace, MovesWhatStandsInFrontOfARowAlongWithIt) {
    Opened csv("a.csv", "A,B\n\n1,x\n\n\n2,y\n\"\"\n3,z");
    EXPECT_EQ(csv.saved({2, 1, 0}), "A,B\n\"\"\n3,z\n\n\n2,y\n\n1,x\n");
    EXPECT_EQ(csv.saved({2, 0}), "A,B\n\n\n\"\"\n3,z\n\n1,x\n");
}

TEST(SavingInPlace, KeepsTheFormOfAnAle) {
    Opened ale("a.ale",
               "Heading\nFIELD_DELIM\tTABS\nFPS\t24\n\nColumn\nName\tTake\n\nData\na\t1\n");
    ale.set(0, 1, "2");
    EXPECT_EQ(ale.saved(),
              "Heading\nFIELD_DELIM\tTABS\nFPS\t24\n\nColumn\nName\tTake\n\nData\na\t2\n");
}

TEST(SavingInPlace, KeepsTheMembersOfJsonThatDidNotChange) {
    Opened json("a.json", "[ {\"A\": 1.50, \"B\": \"x\"},\n  {\"A\": 2, \"B\": null} ]\n");
    json.set(0, 1, "y");
    EXPECT_EQ(json.saved(), "[ {\"A\": 1.50, \"B\": \"y\"},\n  {\"A\": 2, \"B\": null} ]\n");
}

TEST(SavingInPlace, KeepsTheDelimiterOfTheFile) {
    Opened csv("a.csv", "A;B\n1;2\n3;4\n");
    csv.set(1, 0, "5");
    EXPECT_EQ(csv.saved(), "A;B\n1;2\n5;4\n");
}

namespace {

constexpr const char* tableHeading =
    "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"A\",\"B\"\n";

std::string table(const std::string& rows) {
    return tableHeading + rows;
}

}  // namespace

TEST(SavingInPlace, WritesATableOfPlainLinesInAnyOrder) {
    Opened log("a.vek", table("\"1\",\"x\"\n\"2\",\"y\"\n\"3\",\"\"\n"));
    EXPECT_EQ(log.saved(), "as it is");
    log.set(1, 1, "y");
    EXPECT_EQ(log.saved(), "as it is");
    log.set(1, 1, "say \"so\"");
    EXPECT_EQ(log.saved(), table("\"1\",\"x\"\n\"2\",\"say \"\"so\"\"\"\n\"3\",\"\"\n"));
    EXPECT_EQ(log.saved({2, 0}), table("\"3\",\"\"\n\"1\",\"x\"\n"));
    EXPECT_EQ(log.saved({}), table(""));
}

TEST(SavingInPlace, KeepsTheLinesOfATableThatAreNotPlain) {
    const std::string odd = "2,\"y\"\n\"3\", z\r\n";
    Opened log("a.vek", table("\"1\",\"x\"\n" + odd));
    log.set(0, 0, "7");
    EXPECT_EQ(log.saved(), table("\"7\",\"x\"\n" + odd));
}

// Fewer bytes of one line and more of another are the same together.
TEST(SavingInPlace, KeepsTheLinesOfATableThatAreAsLongTogetherAsPlainOnes) {
    const std::string odd = "\"2\",y\n\"3\",\"z\"  \n";
    Opened log("a.vek", table("\"1\",\"x\"\n" + odd));
    log.set(0, 0, "7");
    EXPECT_EQ(log.saved(), table("\"7\",\"x\"\n" + odd));
}

TEST(SavingInPlace, KeepsALastLineOfATableWithoutAnEnd) {
    Opened log("a.vek", table("\"1\",\"x\"\n\"2\",\"y\""));
    log.set(0, 0, "7");
    EXPECT_EQ(log.saved(), table("\"7\",\"x\"\n\"2\",\"y\""));
    EXPECT_EQ(log.saved({1, 0}), table("\"2\",\"y\"\n\"7\",\"x\"\n"));
}

// The library ends no line at a return alone.
TEST(SavingInPlace, EndsALastLineOfATableThatHasAReturnAloneWhereOneComesBehindIt) {
    Opened log("a.vek", table("\"2\",\"x\"\n\"1\",\"y\"\r"));
    EXPECT_EQ(log.saved({1, 0}), table("\"1\",\"y\"\r\n\"2\",\"x\"\n"));
    log.set(1, 1, "z");
    EXPECT_EQ(log.saved(), table("\"2\",\"x\"\n\"1\",\"z\"\r"));
    EXPECT_EQ(log.saved({1, 0}), table("\"1\",\"z\"\r\n\"2\",\"x\"\n"));
    log.log.source->places = {};
    log.log.source->oddRows = {};
    EXPECT_EQ(log.saved({1, 0}), table("\"1\",\"z\"\r\n\"2\",\"x\"\n"));
}

// What the last line lacks another one may have.
TEST(SavingInPlace, KeepsAReturnAtALineOfATableWhoseLastLineHasNoEnd) {
    Opened log("a.vek", table("\"1\",\"x\"\r\n\"2\",\"y\""));
    log.set(1, 0, "7");
    EXPECT_EQ(log.saved(), table("\"1\",\"x\"\r\n\"7\",\"y\""));
}

// A disk may have been full the first time.
TEST(SavingInPlace, WritesWhatChangedAsOftenAsItIsAsked) {
    for (const char* end : {"\n", "\r\n"}) {
        const std::string rest = std::string("\"2\",\"y\"") + end;
        Opened log("a.vek", table("\"1\",\"x\"\n" + rest));
        log.set(0, 0, "seven");
        EXPECT_EQ(log.saved(), table("\"seven\",\"x\"\n" + rest));
        EXPECT_EQ(log.saved(), table("\"seven\",\"x\"\n" + rest));
    }
}

TEST(SavingInPlace, KnowsWhereTheLinesOfATableStandWithoutReadingThemAgain) {
    const std::string rows = "\"1\",\"x\"\n2,y\n\"3\",\"say \"\"so\"\"\"\r\n\"4\",\"\"\n";
    for (const char* rest : {"", "\n\n", "\"5\",\"\"", "  5 , z "}) {
        Opened log("a.vek", table(rows + rest));
        ASSERT_TRUE(log.log.source->places.areKnown()) << rest;
        const RowPlaces& places = log.log.source->places;
        EXPECT_EQ(places.row(2).begin, table("\"1\",\"x\"\n2,y\n").size()) << rest;
        EXPECT_EQ(places.row(3).end, table(rows).size()) << rest;
        EXPECT_EQ(places.size(), table(rows + rest).size()) << rest;
    }
}

TEST(SavingInPlace, PutsTheOddLinesOfATableInAnyOrder) {
    Opened log("a.vek", table("\"1\",\"x\"\n2, y\r\n\"3\",z\n\"4\",\"\"\n\n \n"));
    EXPECT_EQ(log.saved(), "as it is");
    EXPECT_EQ(log.saved({3, 2, 1, 0}), table("\"4\",\"\"\n\"3\",z\n2, y\r\n\"1\",\"x\"\n\n \n"));
    log.set(1, 1, "w");
    EXPECT_EQ(log.saved({1, 2}), table("\"2\",\"w\"\r\n\"3\",z\n\n \n"));
}

namespace {

// Tables as programs and people write them.
class OddTables {
public:
    explicit OddTables(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t end) { return random_() % end; }
    template <std::size_t n>
    std::string one(const char* const (&of)[n]) {
        return of[below(n)];
    }

    std::string table() {
        std::string text = tableHeading;
        if (below(4) == 0) text.insert(text.size() - 1, "\r");
        for (std::size_t rows = below(9); rows > 0; --rows) text += line();
        if (below(5) == 0) text += one({"\n", "\r\n\n", " \n", "\n\"9\",\"9\"\n"});
        if (below(5) == 0 && text.ends_with('\n')) text.pop_back();
        return text;
    }

    // The same changes of both.
    void change(Log& a, Log& b) {
        for (std::size_t changes = below(4); changes > 0 && a.rowCount() > 0; --changes) {
            const auto row = static_cast<unsigned>(below(a.rowCount()));
            const auto column = static_cast<unsigned short>(below(a.columnCount()));
            const std::string value = one({"", "x", "new", "a \"b\"", " y", "\\n", "l\n", "VEKDB"});
            for (Log* log : {&a, &b}) log->table->get_record(row)->setField(column, value.c_str());
        }
        if (below(4) == 0) {
            for (Log* log : {&a, &b}) log->table->add_records(1);
        }
        if (below(4) == 0) {
            for (Log* log : {&a, &b}) ColumnEdits(*log).add("C", DBFieldTypes::text);
        }
    }

    std::vector<unsigned> order(const Log& log) {
        std::vector<unsigned> rows = InPlace(log).rows;
        if (below(3) == 0) std::shuffle(rows.begin(), rows.end(), random_);
        if (below(4) == 0 && !rows.empty()) rows.erase(rows.begin());
        return rows;
    }

private:
    std::string line() {
        if (below(3) == 0) return "\"" + std::to_string(below(9)) + "\",\"x\"\n";
        return value() + "," + value() + one({"\n", "\r\n", " \n", "\n"});
    }
    std::string value() {
        return one(
            {"\"x\"", "x", "\"\"", " 1", "\"1 \"", "\"a \"\"b\"\"\"", "\"a\\nb\"", "\"12\" "});
    }

    std::mt19937 random_;
};

std::string savedOr(const std::string& failed, Opened& log, const std::vector<unsigned>& rows) {
    try {
        return log.saved(rows);
    } catch (const Failure& failure) {
        return failed + failure.text.substr(failure.text.find(':'));
    }
}

using Cells = std::vector<std::vector<std::string>>;

Cells cellsOf(const Log& log, const std::vector<unsigned>& rows) {
    Cells out;
    for (const unsigned row : rows) {
        std::vector<std::string>& cells = out.emplace_back();
        for (unsigned i = 0; i < log.columnCount(); ++i) cells.emplace_back(log.cell(row, i));
    }
    return out;
}

Cells cellsOfTable(const std::string& text) {
    const Opened read("a.vek", text);
    return cellsOf(read.log, InPlace(read.log).rows);
}

}  // namespace

TEST(SavingInPlace, MakesATableThatReadsAsItsRows) {
    OddTables maker(2);
    int saved = 0;
    for (int i = 0; i < 300; ++i) {
        const std::string text = maker.table();
        Opened log("a.vek", text);
        Opened unsaved("a.vek", text);
        maker.change(log.log, unsaved.log);
        const std::vector<unsigned> rows = maker.order(log.log);
        const std::string now = savedOr("failed", log, rows);
        if (now.starts_with("failed")) continue;
        ++saved;
        ASSERT_EQ(cellsOfTable(now == "as it is" ? text : now), cellsOf(log.log, rows))
            << testing::PrintToString(text);
    }
    EXPECT_GT(saved, 150);
}

TEST(SavingInPlace, MakesTheSameOfATableWhoseLinesAreLookedForInTheFile) {
    OddTables maker(1);
    int known = 0;
    for (int i = 0; i < 300; ++i) {
        const std::string text = maker.table();
        Opened log("a.vek", text);
        Opened other("a.vek", text);
        known += log.log.source->places.areKnown() ? 1 : 0;
        other.log.source->places = {};
        other.log.source->oddRows = {};
        maker.change(log.log, other.log);
        const std::vector<unsigned> rows = maker.order(log.log);
        ASSERT_EQ(savedOr("failed", log, rows), savedOr("failed", other, rows))
            << testing::PrintToString(text);
    }
    EXPECT_GT(known, 150);
}
