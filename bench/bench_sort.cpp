// Sorting a log, beside the same sort with the record comparison alone: no prepared keys.

#include <cstdlib>
#include <vector>

#include <vekdb/sort.h>
#include "log_fixture.h"

using namespace bench;
using benchmark::State;

namespace {

using Names = std::initializer_list<const char*>;
using Records = std::vector<dbrecord*>;

std::vector<int> fieldsOf(const vekdb& table, Names names) {
    std::vector<int> fields;
    for (const char* name : names) {
        fields.push_back(static_cast<int>(column(table, name)));
    }
    fields.push_back(-1);
    return fields;
}

std::unique_ptr<Records> recordsOf(const vekdb& table) {
    auto records = std::make_unique<Records>();
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        records->push_back(table.get_record(row));
    }
    return records;
}

void sortPlainly(vekdb& table, Records& records) {
    table.sortPrepare(1, 0);
    std::qsort(records.data(), records.size(), sizeof records[0], dbr_cmp);
}

// Rows of both orders compare equal one by one.
bool sameOrder(vekdb& table, const Records& records) {
    table.sortPrepare(1, 0);
    for (unsigned row = 0; row < records.size(); ++row) {
        dbrecord* sorted = table.get_record(row);
        if (dbr_cmp(&sorted, &records[row]) != 0) {
            return false;
        }
    }
    return true;
}

bool keysChangeNothing(std::int64_t rows, Names names) {
    auto table = loadLog(rows);
    auto fields = fieldsOf(*table, names);
    table->set_sortfields(fields.data());
    auto records = recordsOf(*table);
    sortPlainly(*table, *records);
    table->sort(1, 0);
    return sameOrder(*table, *records);
}

void sortTable(State& state, Names names) {
    std::int64_t rows = state.range(0);
    if (!check(state, keysChangeNothing(rows, names), "keys change the order")) {
        return;
    }
    std::vector<int> fields;
    auto prepare = [&] {
        auto table = loadLog(rows);
        fields = fieldsOf(*table, names);
        table->set_sortfields(fields.data());
        return table;
    };
    timeFresh(state, prepare, [](vekdb& table) { table.sort(1, 0); });
    report(state, rows);
}

void sortWithoutKeys(State& state, Names names) {
    vekdb& table = sharedLog(state.range(0));
    auto fields = fieldsOf(table, names);
    table.set_sortfields(fields.data());
    timeFresh(
        state, [&] { return recordsOf(table); },
        [&](Records& records) { sortPlainly(table, records); });
    table.set_sortfield(0);
    report(state, state.range(0));
}

}  // namespace

static void byText(State& state) {
    sortTable(state, {"Description"});
}
BENCHMARK(byText)->Apply(freshLadder);

static void byTextWithoutKeys(State& state) {
    sortWithoutKeys(state, {"Description"});
}
BENCHMARK(byTextWithoutKeys)->Apply(freshLadder);

static void byTwoColumns(State& state) {
    sortTable(state, {"Scene", "Start time"});
}
BENCHMARK(byTwoColumns)->Apply(freshLadder);

static void byTwoColumnsWithoutKeys(State& state) {
    sortWithoutKeys(state, {"Scene", "Start time"});
}
BENCHMARK(byTwoColumnsWithoutKeys)->Apply(freshLadder);

static void byTimecode(State& state) {
    sortTable(state, {"Start time"});
}
BENCHMARK(byTimecode)->Apply(freshLadder);

static void byTimecodeWithoutKeys(State& state) {
    sortWithoutKeys(state, {"Start time"});
}
BENCHMARK(byTimecodeWithoutKeys)->Apply(freshLadder);
