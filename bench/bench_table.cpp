// Load, save, read, add, insert and delete rows.

#include <vector>

#include "host/disk_flush.h"
#include "log_fixture.h"

using namespace bench;
using benchmark::State;

namespace {

std::unique_ptr<vekdb> emptyTable() {
    std::vector<DBFieldDesc> columns;
    for (const char* name : {"Reel", "Scene", "Take", "Notes"}) {
        columns.push_back({name, DBFieldTypes::eType('a')});
    }
    return std::make_unique<vekdb>(columns);
}

std::unique_ptr<vekdb> blankTable(std::int64_t rows) {
    auto table = emptyTable();
    table->add_records(static_cast<int>(rows));
    return table;
}

std::unique_ptr<vekdb> everySecondTagged(std::int64_t rows) {
    auto table = loadLog(rows);
    for (unsigned row = 0; row < rows; row += 2) {
        table->set_tag(row, 1);
    }
    return table;
}

// Benchmarks of saving time the writing, not the disk's own flush.
class WithoutSync {
public:
    WithoutSync() { DiskFlush::isOn = false; }
    ~WithoutSync() { DiskFlush::isOn = true; }
};

}  // namespace

static void load(State& state) {
    std::int64_t rows = state.range(0);
    auto table = loadLog(rows);
    if (!check(state, table->get_valid() && table->get_num_records() == rows, "rows are lost")) {
        return;
    }
    table.reset();
    for (auto run : state) {
        benchmark::DoNotOptimize(loadLog(rows)->get_num_records());
    }
    report(state, rows, fileSize(logPath(rows)));
}
BENCHMARK(load)->Apply(ladder);

static void saveTo(State& state, const char* name) {
    std::int64_t rows = state.range(0);
    auto table = loadLog(rows);
    std::string path = scratchPath(name);
    table->set_filename(wide(path));
    bool saved = table->save_text() == rows && fileSize(path) == fileSize(logPath(rows));
    if (!check(state, saved, "the saved file has another size than the one loaded")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(table->save_text());
    }
    report(state, rows, fileSize(path));
}

static void save(State& state) {
    WithoutSync writingAlone;
    saveTo(state, "saved.vek");
}
BENCHMARK(save)->Apply(ladder);

static void saveToDisk(State& state) {
    saveTo(state, "synced.vek");
}
BENCHMARK(saveToDisk)->Apply(ladder);

static std::size_t sumOfViews(const vekdb& table, unsigned field) {
    std::size_t sum = 0;
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        sum += table.get_record(row)->fieldView(field).size();
    }
    return sum;
}

static std::size_t sumOfStrings(const vekdb& table, unsigned field) {
    std::size_t sum = 0;
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        sum += table.getField(row, field).length();
    }
    return sum;
}

static void access(State& state, std::size_t (*sumOf)(const vekdb&, unsigned)) {
    std::int64_t rows = state.range(0);
    vekdb& table = sharedLog(rows);
    unsigned field = column(table, "Start time");
    if (!check(state, sumOf(table, field) == 11u * static_cast<std::size_t>(rows), "wrong sum")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(sumOf(table, field));
    }
    report(state, rows);
}

static void readViews(State& state) {
    access(state, sumOfViews);
}
BENCHMARK(readViews)->Apply(ladder);

static void readStrings(State& state) {
    access(state, sumOfStrings);
}
BENCHMARK(readStrings)->Apply(ladder);

static void addAtOnce(State& state) {
    std::int64_t rows = state.range(0);
    if (!check(state, blankTable(rows)->get_num_records() == rows, "rows are missing")) {
        return;
    }
    timeFresh(state, emptyTable, [&](vekdb& table) { table.add_records(static_cast<int>(rows)); });
    report(state, rows);
}
BENCHMARK(addAtOnce)->Apply(freshLadder);

static void addAndFill(vekdb& table, std::int64_t rows) {
    for (std::int64_t i = 0; i < rows; ++i) {
        unsigned row = table.add_records(1);
        table.set_field(row, 0, "A001");
        table.set_field(row, 2, static_cast<int>(i));
    }
}

static void addOneByOne(State& state) {
    std::int64_t rows = state.range(0);
    auto table = emptyTable();
    addAndFill(*table, 20);
    if (!check(state, table->getField(19, 2) == "19", "values are lost")) {
        return;
    }
    timeFresh(state, emptyTable, [&](vekdb& fresh) { addAndFill(fresh, rows); });
    report(state, rows);
}
BENCHMARK(addOneByOne)->Apply(freshLadder);

static void insertInTheMiddle(State& state) {
    std::int64_t rows = state.range(0);
    auto insert = [&](vekdb& table) {
        table.insert_records(static_cast<unsigned>(rows / 2), static_cast<int>(rows / 10));
    };
    auto table = blankTable(rows);
    insert(*table);
    if (!check(state, table->get_num_records() == rows + rows / 10, "rows are missing")) {
        return;
    }
    table.reset();
    timeFresh(
        state, [&] { return blankTable(rows); }, insert);
    report(state, rows / 10);
}
BENCHMARK(insertInTheMiddle)->Apply(freshLadder);

static void insertOneByOneAtTheFront(State& state) {
    std::int64_t rows = state.range(0);
    auto insert = [](vekdb& table) {
        for (int i = 0; i < 1000; ++i) {
            table.insert_records(0, 1);
        }
    };
    timeFresh(
        state, [&] { return blankTable(rows); }, insert);
    report(state, 1000);
}
BENCHMARK(insertOneByOneAtTheFront)->Apply(freshLadder);

static void deleteHalfAtOnce(State& state) {
    std::int64_t rows = state.range(0);
    auto remove = [&](vekdb& table) {
        table.delete_records(static_cast<unsigned>(rows / 4), static_cast<int>(rows / 2));
    };
    auto table = loadLog(rows);
    auto behind = table->getField(static_cast<unsigned>(rows / 4 + rows / 2), 9);
    remove(*table);
    bool right = table->getField(static_cast<unsigned>(rows / 4), 9) == behind;
    if (!check(state, right, "the wrong rows went")) {
        return;
    }
    table.reset();
    timeFresh(
        state, [&] { return loadLog(rows); }, remove);
    report(state, rows / 2);
}
BENCHMARK(deleteHalfAtOnce)->Apply(freshLadder);

static void deleteEverySecondByTag(State& state) {
    std::int64_t rows = state.range(0);
    auto remove = [](vekdb& table) { benchmark::DoNotOptimize(table.delete_tagged_records()); };
    auto table = everySecondTagged(rows);
    auto second = table->getField(1, 9);
    remove(*table);
    bool right = table->get_num_records() == rows / 2 && table->getField(0, 9) == second;
    if (!check(state, right, "the wrong rows went")) {
        return;
    }
    table.reset();
    timeFresh(
        state, [&] { return everySecondTagged(rows); }, remove);
    report(state, rows / 2);
}
BENCHMARK(deleteEverySecondByTag)->Apply(freshLadder);
