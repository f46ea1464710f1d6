// A table whose memory runs out: the operation tells of it, and rows and columns still fit
// together.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <vekdb/host/cookie.h>
#include <vekdb/table.h>
#include "testing/failing_allocator.h"
#include "testing/table_files.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::CountingAllocator;
using testing_support::failEachAllocation;
using testing_support::FailingAllocator;
using testing_support::headerAnd;
using testing_support::joined;
using testing_support::rowsOf;
using testing_support::Strings;
using testing_support::TempDir;

constexpr unsigned none = 0xFFFFFFFF;
constexpr int all = 1 << 30;
constexpr const char* longText =
    "a text that is too long to stand anywhere but in a block of its own";

// Runs `action` on a table made anew for each allocation that fails, and `check` on what it
// left. How many failures there were.
template <class Make, class Action, class Check>
unsigned failOnNewTables(Make make, Action action, Check check) {
    std::unique_ptr<vekdb> table = make();
    return failEachAllocation([&] { action(*table); },
                              [&] {
                                  check(*table);
                                  table = make();
                              });
}

std::unique_ptr<vekdb> threeColumns() {
    auto table = std::make_unique<vekdb>(textColumns({"Reel", "Scene", "Notes"}));
    for (int i = 0; i < 3; ++i) addRow(*table, {"reel", "scene", longText});
    table->clear_changed();
    return table;
}

const std::vector<Strings> threeRows(3, Strings{"reel", "scene", longText});

void expectThreeColumns(const vekdb& table) {
    ASSERT_EQ(3u, table.get_num_fields());
    EXPECT_STREQ("Reel", table.get_fieldname(0));
    EXPECT_STREQ("Scene", table.get_fieldname(1));
    EXPECT_STREQ("Notes", table.get_fieldname(2));
    EXPECT_STREQ("", table.get_fieldname(3));
    EXPECT_EQ(0u, table.get_fieldnum("reel"));
    EXPECT_EQ(1u, table.get_fieldnum("scene"));
    EXPECT_EQ(2u, table.get_fieldnum("notes"));
    EXPECT_EQ(threeRows, rowsOf(table));
}

struct ExhaustedMemory : testing::Test {
    static std::unique_ptr<vekdb> loaded() {
        return std::make_unique<vekdb>(folder_->widePath("log"), all, true);
    }
    static void SetUpTestSuite() {
        folder_ = new TempDir;
        const std::string line = testing_support::quotedLine({"reel", "scene", longText});
        folder_->write("log", joined(headerAnd({"Reel", "Scene", "Notes"}, {line, line, line})));
    }
    static void TearDownTestSuite() { delete folder_; }

private:
    static inline TempDir* folder_ = nullptr;
};

TEST_F(ExhaustedMemory, AddingRowsKeepsThoseThatWereMade) {
    const auto failures = failOnNewTables(
        threeColumns, [](vekdb& table) { table.add_records(700); },
        [](const vekdb& table) {
            const unsigned count = table.get_num_records();
            EXPECT_GE(count, 3u);
            EXPECT_LT(count, 703u);
            EXPECT_LE(count, table.get_capacity());
            EXPECT_STREQ("reel", table.getField(2, 0).c_str());
            EXPECT_EQ(nullptr, table.get_record(count));
            EXPECT_FALSE(table.get_modified());
        });
    EXPECT_GT(failures, 1u);
}

TEST_F(ExhaustedMemory, InsertingRowsInsertsAllOrNone) {
    const auto failures = failOnNewTables(
        threeColumns, [](vekdb& table) { table.insert_records(1, 700); },
        [](const vekdb& table) { expectThreeColumns(table); });
    EXPECT_GT(failures, 2u);
}

TEST_F(ExhaustedMemory, DeletingRowsDeletesAllOrNone) {
    unsigned heard = 0;
    const auto failures = failOnNewTables(
        [&] {
            auto table = threeColumns();
            for (int i = 0; i < 500; ++i) addRow(*table, {"more"});
            table->clear_changed();
            return table;
        },
        [&](vekdb& table) {
            const auto hear = [&](const NotifyMsg&) { ++heard; };
            const WhenTold told(table, "recordsDeleted", hear);
            table.delete_records(1, 400);
        },
        [&](const vekdb& table) {
            EXPECT_EQ(503u, table.get_num_records());
            EXPECT_STREQ("scene", table.getField(1, 1).c_str());
            EXPECT_FALSE(table.get_modified());
            EXPECT_EQ(0u, heard);
        });
    EXPECT_GT(failures, 2u);
    EXPECT_EQ(1u, heard);
}

TEST_F(ExhaustedMemory, DeletingRowsThatNobodyHearsOfTakesNone) {
    auto table = threeColumns();
    table->delete_records(2, 1);
    FailingAllocator failing(1);
    table->delete_records(0, 1);
    EXPECT_FALSE(failing.fired());
}

TEST_F(ExhaustedMemory, AddingAColumnAddsItWhollyOrNotAtAll) {
    unsigned added = none;
    const DBFieldDesc take = {"A name that is too long for a short string", DBFieldTypes::text};
    const auto failures = failOnNewTables(
        threeColumns, [&](vekdb& table) { added = table.addField(take); },
        [&](vekdb& table) {
            EXPECT_EQ(none, table.get_fieldnum(take.name));
            expectThreeColumns(table);
            EXPECT_EQ(3u, table.addField(take));
            EXPECT_STREQ(take.name.c_str(), table.get_fieldname(3));
            EXPECT_EQ(3u, table.get_fieldnum(take.name));
            EXPECT_EQ(4, table.get_record(2)->get_num_fields());
        });
    EXPECT_GT(failures, 2u);
    EXPECT_EQ(3u, added);
}

TEST_F(ExhaustedMemory, RemovingAColumnRemovesItWhollyOrNotAtAll) {
    const auto failures = failOnNewTables(
        threeColumns, [](vekdb& table) { table.removeField("Reel"); },
        [](const vekdb& table) { expectThreeColumns(table); });
    EXPECT_GT(failures, 0u);
}

TEST_F(ExhaustedMemory, RemovingAColumnOfALoadedTableDoesSoToo) {
    const auto failures = failOnNewTables(
        loaded, [](vekdb& table) { table.removeField("Reel"); },
        [](const vekdb& table) { expectThreeColumns(table); });
    EXPECT_GT(failures, 6u);
}

TEST_F(ExhaustedMemory, RemovingAValueKeepsTheOthersWhereTheyWere) {
    const auto table = loaded();
    auto record = std::make_unique<dbrecord>(*table->get_record(0));
    const unsigned failures =
        failEachAllocation([&] { record->removeField(0); },
                           [&] { EXPECT_EQ(threeRows[0], testing_support::valuesOf(*record)); });
    EXPECT_GT(failures, 0u);
    const Strings left{"scene", longText};
    EXPECT_EQ(left, testing_support::valuesOf(*record));
    const unsigned failuresBehind =
        failEachAllocation([&] { record->removeField(0); },
                           [&] { EXPECT_EQ(left, testing_support::valuesOf(*record)); });
    EXPECT_GT(failuresBehind, 1u);
    EXPECT_EQ(Strings{longText}, testing_support::valuesOf(*record));
}

TEST_F(ExhaustedMemory, NamingAColumnKeepsTheFormerName) {
    const auto failures = failOnNewTables(
        threeColumns, [](vekdb& table) { table.set_fieldname(0, longText); },
        [](const vekdb& table) { expectThreeColumns(table); });
    EXPECT_GT(failures, 1u);
}

TEST_F(ExhaustedMemory, StoringAValueKeepsTheFormerOneAndMarksNothing) {
    const auto store = [](vekdb& table) { table.set_field(1, 0, longText); };
    const auto check = [](const vekdb& table) {
        expectThreeColumns(table);
        EXPECT_FALSE(table.get_modified());
        EXPECT_FALSE(table.get_record(1)->get_changed());
    };
    EXPECT_GT(failOnNewTables(threeColumns, store, check), 0u);
    EXPECT_GT(failOnNewTables(loaded, store, check), 0u);
}

TEST_F(ExhaustedMemory, ShowingTaggedRowsGoesOnShowingAll) {
    const auto failures = failOnNewTables(
        threeColumns, [](vekdb& table) { table.set_show_tags_only(1); },
        [](const vekdb& table) {
            EXPECT_EQ(0u, table.get_show_tags_only());
            expectThreeColumns(table);
        });
    EXPECT_EQ(1u, failures);
}

TEST_F(ExhaustedMemory, AParameterWithoutMemoryReadsEmpty) {
    auto table = threeColumns();
    table->add_param("Project", "Night");
    {
        FailingAllocator failing(1);
        EXPECT_EQ(0u, table->add_param("Project", "Day"));
    }
    EXPECT_STREQ("", table->get_param_val("Project"));
    EXPECT_TRUE(table->get_modified());
    EXPECT_EQ(0u, table->add_param("Project", "Day"));
    EXPECT_STREQ("Day", table->get_param_val("Project"));
}

TEST_F(ExhaustedMemory, ABracketThatCannotTellIsStillClosed) {
    auto table = threeColumns();
    const auto hear = [](const NotifyMsg&) {};
    const WhenTold told(*table, "recordsChanged", hear);
    for (int round = 0; round < 2; ++round) {
        table->beginUpdate();
        table->addToUpdate(Cookie());
        FailingAllocator failing(1);
        EXPECT_THROW(table->endUpdate(), Quor::Exception::BadAlloc);
        EXPECT_EQ(0u, table->get_update_depth());
    }
}

// What a failed constructor leaves behind, over all of its allocations.
template <class Build>
void expectNothingLeft(Build build, unsigned leastFailures) {
    build();
    long live = 0;
    const unsigned failures = failEachAllocation(
        [&] {
            const CountingAllocator counted;
            try {
                build();
            } catch (const std::bad_alloc&) {
                live += counted.liveBlocks();
                throw;
            }
            live += counted.liveBlocks();
        },
        [&] { EXPECT_EQ(0, live); });
    EXPECT_GT(failures, leastFailures);
}

TEST_F(ExhaustedMemory, NothingIsLeftOfATableThatCouldNotBeBuilt) {
    const auto fields = textColumns({"Reel", "A name too long for a short string", "Notes"});
    expectNothingLeft([&] { const vekdb table(fields); }, 5);
}

TEST_F(ExhaustedMemory, NothingIsLeftOfACopyThatCouldNotBeMade) {
    for (const auto& source : {threeColumns(), loaded()}) {
        source->add_param("Project", "Night");
        source->set_field(0, 1, "changed");
        expectNothingLeft([&] { const vekdb copy(*source, 1); }, 5);
        expectNothingLeft([&] { const vekdb copy(*source, static_cast<DBFieldDesc*>(nullptr)); },
                          5);
    }
}

}  // namespace
