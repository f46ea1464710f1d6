// Memory ends at every allocation of every edit, undo and redo: table and log agree afterwards.
#include <gtest/gtest.h>

#include <memory>

#include <vekdb/edit_log.h>
#include <vekdb/host/cookie.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "testing/failing_allocator.h"
#include "testing/quiet.h"
#include "testing/tables.h"
#include "vekdb/edits/plain_edits.h"

namespace {

using testing_support::CountingAllocator;
using testing_support::FailingAllocator;
using testing_support::Quiet;

constexpr const char* longText = "a text that is too long to stand but in a block of its own";

// A table with a history: something can be taken back and something done again.
struct World {
    World() : table(textColumns({"Name", "Scene", "cookie"})) {
        for (int i = 0; i < 6; ++i) addRow(table, {longText, "1", longText});
        log = std::make_unique<EditLog>(table);
        log->set(1, 1, "x");
        log->deleteRows(3, 1);
    }

    // What the table is at each place of the log, for what stands before and behind it.
    std::vector<PlainLog> line() {
        while (log->canUndo()) log->undo();
        std::vector<PlainLog> states = {plainOf(table)};
        while (log->canRedo()) {
            log->redo();
            states.push_back(plainOf(table));
        }
        return states;
    }

    vekdb table;
    std::unique_ptr<EditLog> log;
};

struct Scenario {
    const char* name;
    void (*run)(EditLog& log);
};

constexpr Scenario scenarios[] = {
    {"set", [](EditLog& log) { log.set(0, 0, "another text that has to have its own block"); }},
    {"set a cookie", [](EditLog& log) { log.setCookie(0, Cookie()); }},
    {"tag", [](EditLog& log) { log.setTag(0, 1); }},
    {"insert", [](EditLog& log) { log.insertRows(2, 600); }},
    {"insert a row",
     [](EditLog& log) {
         const std::string_view values[] = {longText, longText, "c"};
         log.insertRow(2, values, 3);
     }},
    {"delete", [](EditLog& log) { log.deleteRows(0, 3); }},
    {"add a column",
     [](EditLog& log) {
         log.addColumn({longText, DBFieldTypes::text});
     }},
    {"rename a column", [](EditLog& log) { log.renameColumn(0, longText); }},
    {"type a column", [](EditLog& log) { log.setColumnType(0, DBFieldTypes::numeric); }},
    {"remove a column", [](EditLog& log) { log.removeColumn(0); }},
    {"undo", [](EditLog& log) { log.undo(); }},
    {"undo all",
     [](EditLog& log) {
         while (log.canUndo()) log.undo();
     }},
    {"a step there and back",
     [](EditLog& log) {
         {
             const EditLog::Step step(log);
             log.removeColumn(1);
             log.deleteRows(1, 2);
             log.insertRows(0, 2);
             log.set(0, 0, longText);
         }
         log.undo();
         log.redo();
     }},
};

bool failAt(const Scenario& scenario, unsigned n) {
    World world;
    bool fired = false;
    {
        FailingAllocator failing(n);
        try {
            scenario.run(*world.log);
        } catch (const Quor::Exception::BadAlloc&) {
        }
        fired = failing.fired();
    }
    const PlainLog now = plainOf(world.table);
    const std::vector<PlainLog> line = world.line();
    EXPECT_EQ(World().line().front(), line.front()) << scenario.name << ' ' << n;
    const PlainLog last = line.back();
    const auto again = world.line();
    EXPECT_EQ(line, again) << scenario.name << ' ' << n;
    scenario.run(*world.log);
    return fired;
}

class EditMemory : public testing::TestWithParam<std::size_t> {
protected:
    const Quiet quiet_;
};

TEST_P(EditMemory, TableAndLogAgreeWhereverItEnds) {
    unsigned n = 1;
    while (failAt(scenarios[GetParam()], n) && !HasFailure()) ++n;
}

INSTANTIATE_TEST_SUITE_P(Every, EditMemory, testing::Range(std::size_t{0}, std::size(scenarios)));

}  // namespace

TEST(EditMemoryNeeds, ACellTakesNoMoreThanItsTextAndAFewBytes) {
    vekdb table(textColumns({"Name"}));
    table.add_records(1000);
    EditLog log(table);
    const CountingAllocator counting;
    for (unsigned row = 0; row < 1000; ++row) log.set(row, 0, "x");
    EXPECT_LT(counting.liveBlocks(), 3100);
}
