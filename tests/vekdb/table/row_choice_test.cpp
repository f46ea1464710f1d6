// Loading only some rows of a file comes to what loading all and dropping the others comes to.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <vekdb/row_choice.h>
#include "host/posix/file_io.h"
#include "testing/arrival.h"
#include "testing/capture_diagnostics.h"
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/temp_dir.h"
#include "vekdb/record/record_access.h"

namespace {

using testing_support::ArrivalOf;
using testing_support::BrokenPiece;
using testing_support::CaptureDiagnostics;
using testing_support::errorOf;
using testing_support::failEachAllocation;
using testing_support::headerAnd;
using testing_support::joined;
using testing_support::quotedLine;
using testing_support::Random;
using testing_support::rowsOf;
using testing_support::Strings;
using testing_support::TempDir;
using testing_support::valuesOf;

constexpr int all = 1 << 30;

TextSearch::Criteria contains(const char* text) {
    return TextSearch::Criteria(TextSearch::Criterion(text, TextSearch::eMatchContains));
}

/// Takes the rows that a test is for, and notes what it is asked.
class Choice : public RowChoice {
public:
    using Test = std::function<bool(const dbrecord&)>;
    explicit Choice(Test test) : test_(std::move(test)) {}

    void begin(vekdb& table) override {
        ++begun;
        columns = table.get_num_fields();
        parameters = table.get_num_params();
        rowsAtBegin = table.get_num_records();
        seen.clear();
        if (query) table.setQuery(*query);
    }
    bool takes(const dbrecord& record, bool matches) override {
        seen.push_back(valuesOf(record));
        matching += matches;
        return test_(record);
    }

    std::optional<std::vector<TextSearch::Criteria>> query;
    unsigned begun = 0;
    unsigned columns = 0;
    unsigned parameters = 0;
    unsigned rowsAtBegin = 0;
    unsigned matching = 0;
    std::vector<Strings> seen;

private:
    Test test_;
};

/// Takes the rows that match.
class Matching : public RowChoice {
public:
    explicit Matching(std::vector<TextSearch::Criteria> query) : query_(std::move(query)) {}
    void begin(vekdb& table) override { table.setQuery(query_); }
    bool takes(const dbrecord&, bool matches) override { return matches; }

private:
    std::vector<TextSearch::Criteria> query_;
};

bool everything(const dbrecord&) {
    return true;
}
bool nothing(const dbrecord&) {
    return false;
}
Choice::Test startsWith(char first) {
    return [first](const dbrecord& record) { return record.fieldView(0).starts_with(first); };
}

struct ChosenRows : testing::Test {
    void write(const Strings& lines, const char* name = "log") {
        folder.write(name, joined(headerAnd({"A", "B"}, lines)));
    }
    void load(RowChoice& choice, const char* name = "log") {
        table.set_filename(folder.widePath(name));
        table.loadFromFile(choice, true);
    }
    TempDir folder;
    vekdb table;
};

const Strings threeLines = {quotedLine({"a1", "x"}), "b1,y", quotedLine({"a2", "z"})};

TEST_F(ChosenRows, AreTheOnesTakenInTheirOrder) {
    write(threeLines);
    Choice choice(startsWith('a'));
    load(choice);
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ((std::vector<Strings>{{"a1", "x"}, {"a2", "z"}}), rowsOf(table));
    EXPECT_EQ((std::vector<Strings>{{"a1", "x"}, {"b1", "y"}, {"a2", "z"}}), choice.seen);
    EXPECT_FALSE(table.get_modified());
    EXPECT_EQ(&table, table.get_record(1)->get_container());
    EXPECT_FALSE(table.get_record(1)->get_changed());
}

TEST_F(ChosenRows, OfAnOpenFileAreTheSame) {
    write(threeLines);
    const FileIO::Descriptor file(FileIO::openToRead(folder.file("log").c_str()));
    Choice choice(startsWith('a'));
    table.loadFromDescriptor(file.get(), choice, true);
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ((std::vector<Strings>{{"a1", "x"}, {"a2", "z"}}), rowsOf(table));
    EXPECT_EQ(1u, choice.begun);
}

TEST_F(ChosenRows, MayBeNone) {
    write(threeLines);
    Choice choice(nothing);
    load(choice);
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ(0u, table.get_num_records());
    EXPECT_EQ(3u, choice.seen.size());
}

TEST_F(ChosenRows, TheChoiceBeginsWithTheColumnsAndWithoutRows) {
    write(threeLines);
    Choice choice(everything);
    load(choice);
    EXPECT_EQ(1u, choice.begun);
    EXPECT_EQ(2u, choice.columns);
    EXPECT_EQ(1u, choice.parameters);
    EXPECT_EQ(0u, choice.rowsAtBegin);
    load(choice);
    EXPECT_EQ(2u, choice.begun);
    EXPECT_EQ(0u, choice.rowsAtBegin);
}

TEST_F(ChosenRows, NobodyIsAskedAboutAFileThatIsNoTable) {
    folder.write("log", "no table\n");
    Choice choice(everything);
    load(choice);
    EXPECT_FALSE(table.get_valid());
    EXPECT_EQ(0u, choice.begun);
}

TEST_F(ChosenRows, AreToldWhetherTheyMatchTheQuery) {
    write(threeLines);
    Choice choice(everything);
    choice.query = {contains("A"), contains("z")};
    load(choice);
    EXPECT_EQ(1u, choice.matching);
    EXPECT_EQ(3u, table.get_num_records());
    EXPECT_EQ(1u, table.tag_matching_records(0));
}

TEST_F(ChosenRows, AllMatchWithoutAQuery) {
    write(threeLines);
    Choice choice(everything);
    load(choice);
    EXPECT_EQ(3u, choice.matching);
}

TEST_F(ChosenRows, AQueryOfTheLastLoadIsForgotten) {
    write(threeLines);
    Matching first({contains("a1"), {}});
    load(first);
    EXPECT_EQ(1u, table.get_num_records());
    Choice choice(everything);
    load(choice);
    EXPECT_EQ(3u, choice.matching);
}

TEST_F(ChosenRows, AreToldByTheQueryTheyBeganWith) {
    write(threeLines);
    Choice choice([this](const dbrecord&) {
        table.setQuery({contains("nowhere"), {}});
        return true;
    });
    choice.query = {contains("a"), {}};
    load(choice);
    EXPECT_EQ(2u, choice.matching);
}

TEST_F(ChosenRows, ARangeOfTimecodesIsAskedForAsOne) {
    const Strings names = {"Start time", "End time"};
    folder.write("log", "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"11\",\"11\"\n\"text\",\"text\"\n" +
                            quotedLine(names) +
                            "\n\"01:00:00:00\",\"01:00:09:00\"\n\"02:00:00:00\",\"02:00:09:00\"\n");
    Matching choice({contains("02:00:05:00"), {}});
    load(choice);
    vekdb whole(folder.widePath("log"), all, true);
    whole.setQuery({contains("02:00:05:00"), {}});
    EXPECT_EQ(1u, whole.tag_matching_records(0));
    EXPECT_EQ((std::vector<Strings>{{"02:00:00:00", "02:00:09:00"}}), rowsOf(table));
}

TEST_F(ChosenRows, ARecordCopiedFromOneThatWasNotTakenKeepsItsValues) {
    write(threeLines);
    std::vector<dbrecord> copies;
    Choice choice([&](const dbrecord& record) {
        copies.push_back(record);
        return false;
    });
    load(choice);
    table.free();
    EXPECT_EQ((Strings{"a1", "x"}), valuesOf(copies[0]));
    EXPECT_EQ((Strings{"b1", "y"}), valuesOf(copies[1]));
    EXPECT_EQ((Strings{"a2", "z"}), valuesOf(copies[2]));
}

TEST_F(ChosenRows, AStringOfARowThatWasNotTakenLivesOn) {
    write(threeLines);
    std::vector<LightweightString<char>> strings;
    Choice choice([&](const dbrecord& record) {
        strings.push_back(record.getField(0));
        return strings.size() == 2;
    });
    load(choice);
    EXPECT_EQ((std::vector<Strings>{{"b1", "y"}}), rowsOf(table));
    EXPECT_STREQ("a1", strings[0].c_str());
    EXPECT_STREQ("a2", strings[2].c_str());
}

TEST_F(ChosenRows, CountAsLoadedWholeWhateverIsTaken) {
    write(threeLines);
    Choice choice(startsWith('b'));
    load(choice);
    EXPECT_TRUE(table.get_loaded_whole());
    write({threeLines[0], "", threeLines[1]});
    load(choice);
    EXPECT_FALSE(table.get_loaded_whole());
}

TEST_F(ChosenRows, ALineOfTheWrongLengthIsToldByTheLinesBeforeIt) {
    write({threeLines[0], threeLines[1], threeLines[2], "\"one\"", threeLines[0]});
    const CaptureDiagnostics said;
    Choice choice(startsWith('b'));
    load(choice);
    EXPECT_EQ(1u, table.get_num_records());
    EXPECT_EQ((std::vector<int>{1, 3, 0, 0}), errorOf(table));
    EXPECT_FALSE(table.get_loaded_whole());
}

TEST_F(ChosenRows, OfALineThatTakesTheMagicLinesPlaceTheChoiceIsAskedOnce) {
    write({threeLines[0], "\"VEKDB\",\"b\"", threeLines[1], threeLines[1], threeLines[2]});
    Choice choice(everything);
    load(choice);
    EXPECT_EQ((std::vector<Strings>{{"a1", "x"}, {"a2", "z"}}), choice.seen);
}

TEST_F(ChosenRows, OfAPlainFileOfValuesAreTakenInTheSameWay) {
    folder.write("log.csv", "A,B\na1,x\nb1,y\n\na2\n");
    Choice choice(startsWith('a'));
    choice.query = {{}, contains("x")};
    load(choice, "log.csv");
    EXPECT_EQ((std::vector<Strings>{{"a1", "x"}, {"a2", ""}}), rowsOf(table));
    EXPECT_EQ(1u, choice.begun);
    EXPECT_EQ(2u, choice.columns);
    EXPECT_EQ(1u, choice.matching);
    EXPECT_FALSE(table.get_modified());
    vekdb whole(folder.widePath("log.csv"), all, true);
    EXPECT_EQ(whole.get_num_records(), choice.seen.size());
    EXPECT_EQ(whole.get_loaded_whole(), table.get_loaded_whole());
}

TEST_F(ChosenRows, OfAPlainFileCountAsLoadedWholeWhateverIsTaken) {
    folder.write("log.csv", "A,B\na1,x\nb1,y\n");
    Choice some(startsWith('b'));
    load(some, "log.csv");
    EXPECT_TRUE(table.get_loaded_whole());
    Choice none(nothing);
    load(none, "log.csv");
    EXPECT_TRUE(table.get_loaded_whole());
}

TEST_F(ChosenRows, BelongToTheTableWhenTheChoiceIsAskedAboutThem) {
    write(threeLines);
    folder.write("log.csv", "A,B\na1,x\n");
    Choice choice([this](const dbrecord& record) { return record.get_container() != &table; });
    for (const char* name : {"log", "log.csv"}) {
        load(choice, name);
        EXPECT_FALSE(choice.seen.empty());
        EXPECT_EQ(0u, table.get_num_records());
    }
}

TEST_F(ChosenRows, StandAsIfTheOthersHadNotBeenThere) {
    Strings lines(5000, threeLines[0]);
    lines.front() = lines.back() = quotedLine({"b1", "y"});
    write(lines);
    Choice choice(startsWith('b'));
    load(choice);
    ASSERT_EQ(2u, table.get_num_records());
    const LineSlices* first = RecordAccess::slices(*table.get_record(0));
    const LineSlices* last = RecordAccess::slices(*table.get_record(1));
    const std::ptrdiff_t apart =
        reinterpret_cast<const char*>(last) - reinterpret_cast<const char*>(first);
    EXPECT_GT(apart, 0);
    EXPECT_LT(apart, 64);
    EXPECT_EQ(table.get_record(0) + 1, table.get_record(1));
}

TEST_F(ChosenRows, WhatTheChoiceThrowsLeavesNothing) {
    write(threeLines);
    unsigned asked = 0;
    Choice choice([&](const dbrecord&) -> bool {
        if (++asked == 3) throw std::runtime_error("enough");
        return asked == 1;
    });
    for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{16}}) {
        const ArrivalOf pieces(piece);
        asked = 0;
        EXPECT_THROW(load(choice), std::runtime_error);
        EXPECT_FALSE(table.get_valid());
        EXPECT_EQ(0u, table.get_num_records() + table.get_num_fields());
    }
}

TEST_F(ChosenRows, AFileThatBreaksOffIsBegunAnew) {
    write(Strings(50, threeLines[0]));
    const ArrivalOf pieces(16);
    for (int failAt = 1; failAt < 20; ++failAt) {
        const BrokenPiece broken(failAt, true);
        Choice choice([n = 0u](const dbrecord&) mutable { return ++n % 2 == 0; });
        load(choice);
        EXPECT_EQ(50u, choice.seen.size());
        EXPECT_EQ(0u, choice.rowsAtBegin);
        EXPECT_GE(table.get_num_records(), 25u);
    }
}

// A table of a class of its own is loaded in the plain way.
struct Watched : vekdb {
    using vekdb::vekdb;
};

TEST_F(ChosenRows, OfATableOfADerivedClassAreTakenToo) {
    write(threeLines);
    Watched watched;
    watched.set_filename(folder.widePath("log"));
    Choice choice(startsWith('b'));
    watched.loadFromFile(choice, true);
    EXPECT_EQ((std::vector<Strings>{{"b1", "y"}}), rowsOf(watched));
}

std::string randomLine(Random& random) {
    if (random.oneIn(40)) return random.pick(Strings{"\"VEKDB\"", " ", "\x01", "x"});
    if (random.oneIn(30)) return "a," + std::string(random.between(4000, 4500), 'x');
    const std::string first = random.text("abc", 3);
    std::string line = random.oneIn(4) ? first + "," + random.text("xyz ", 5)
                                       : quotedLine({first, random.text("xyz \"", 5)});
    return line;
}

TEST_F(ChosenRows, AreThoseThatATableOfAllRowsFindsHoweverTheFileComes) {
    Random random;
    for (int i = 0; i < 200; ++i) {
        Strings lines(random.below(60));
        for (std::string& line : lines) line = randomLine(random);
        write(lines);
        const std::vector<TextSearch::Criteria> query = {contains(random.oneIn(2) ? "a" : "bc"),
                                                         contains(random.oneIn(2) ? "" : "x")};
        const CaptureDiagnostics said;
        vekdb whole(folder.widePath("log"), all, true);
        whole.setQuery(query);
        whole.tag_matching_records(0);
        whole.set_show_tags_only(1);
        const ArrivalOf pieces(1 + random.below(500), random.oneIn(2) ? 1 : 1 << 20);
        Matching choice(query);
        load(choice);
        ASSERT_EQ(rowsOf(whole), rowsOf(table)) << joined(lines);
        ASSERT_EQ(errorOf(whole), errorOf(table));
        ASSERT_EQ(whole.get_loaded_whole(), table.get_loaded_whole());
    }
}

// Copies, copies of copies and strings of rows, each with the values that it must keep.
class Keepsakes {
public:
    explicit Keepsakes(Random& random) : random_(random) {}

    void takeFrom(const dbrecord& record) {
        for (unsigned n = random_.below(3); n > 0; --n) takeOneFrom(record);
    }
    void expectKept() const {
        for (const auto& [record, values] : records_) ASSERT_EQ(values, valuesOf(record));
        for (const auto& [string, value] : strings_) ASSERT_EQ(value, string.view());
    }

private:
    void takeOneFrom(const dbrecord& record) {
        if (random_.oneIn(3)) {
            strings_.emplace_back(record.getField(1), record.fieldView(1));
            return;
        }
        const bool again = random_.oneIn(2) && !records_.empty();
        dbrecord copy(again ? records_[random_.below(records_.size())].first : record);
        if (random_.oneIn(2)) changeFirst(copy);
        records_.emplace_back(copy, valuesOf(copy));
    }
    // To a value as long as the old one, which may take its place in the text.
    static void changeFirst(dbrecord& copy) {
        const std::string value(copy.fieldView(0).size(), 'q');
        copy.set_field(0, value.c_str());
    }

    Random& random_;
    std::vector<std::pair<dbrecord, Strings>> records_;
    std::vector<std::pair<LightweightString<char>, std::string>> strings_;
};

TEST_F(ChosenRows, LeaveWhatWasTakenFromThemAsItWasAndTheOtherWayRound) {
    Random random;
    for (int i = 0; i < 200; ++i) {
        Strings lines(random.below(60));
        for (std::string& line : lines) line = randomLine(random);
        write(lines);
        const CaptureDiagnostics said;
        const ArrivalOf pieces(1 + random.below(500), random.oneIn(2) ? 1 : 1 << 20);
        Keepsakes keepsakes(random);
        std::vector<Strings> taken;
        Choice choice([&](const dbrecord& record) {
            const bool isTaken = random.oneIn(2);
            if (isTaken) taken.push_back(valuesOf(record));
            keepsakes.takeFrom(record);
            return isTaken;
        });
        load(choice);
        ASSERT_EQ(taken, rowsOf(table)) << joined(lines);
        keepsakes.expectKept();
        table.free();
        keepsakes.expectKept();
    }
}

TEST_F(ChosenRows, NothingIsLeftWhereMemoryEnds) {
    write({threeLines[0], "b," + std::string(3000, 'x'), threeLines[1], threeLines[2]});
    Matching choice({contains("2"), {}});
    const CaptureDiagnostics said;
    const unsigned failures = failEachAllocation(
        [&] {
            try {
                load(choice);
            } catch (const std::bad_alloc&) {
                EXPECT_FALSE(table.get_valid());
                EXPECT_EQ(0u, table.get_num_records() + table.get_num_fields());
                throw;
            }
        },
        [] {});
    EXPECT_GT(failures, 2u);
    EXPECT_EQ((std::vector<Strings>{{"a2", "z"}}), rowsOf(table));
}

}  // namespace
