// Rows that match a query: two columns that contain a text, and a range between labels.

#include <cctype>
#include <string_view>

#include "log_fixture.h"

using namespace bench;
using benchmark::State;

namespace {

bool containsNoCase(std::string_view text, std::string_view wanted) {
    auto same = [](char a, char b) { return std::tolower(a) == std::tolower(b); };
    for (; text.size() >= wanted.size(); text.remove_prefix(1)) {
        if (std::equal(wanted.begin(), wanted.end(), text.begin(), same)) {
            return true;
        }
    }
    return false;
}

template <class Test>
unsigned countRows(const vekdb& table, Test test) {
    unsigned count = 0;
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        count += test(*table.get_record(row)) ? 1 : 0;
    }
    return count;
}

// Sets the query that has a text in each of the named columns.
void ask(vekdb& table, std::initializer_list<std::pair<const char*, const char*>> texts) {
    std::unique_ptr<dbrecord> query(table.make_dummy_record());
    for (auto [name, text] : texts) {
        query->set_field(static_cast<int>(column(table, name)), text);
    }
    table.set_query(query.get());
}

void timeQuery(State& state, vekdb& table, unsigned expected) {
    bool right = expected > 0 && table.tag_matching_records(0) == expected;
    if (!check(state, right, "the query finds other rows than a scan")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(table.tag_matching_records(0));
    }
    report(state, state.range(0));
}

}  // namespace

static void twoColumnsContain(State& state) {
    vekdb& table = sharedLog(state.range(0));
    ask(table, {{"Description", "dolly"}, {"Reel", "A0"}});
    unsigned description = column(table, "Description");
    unsigned reel = column(table, "Reel");
    timeQuery(state, table, countRows(table, [&](const dbrecord& record) {
                  return containsNoCase(record.fieldView(description), "dolly") &&
                         containsNoCase(record.fieldView(reel), "A0");
              }));
}
BENCHMARK(twoColumnsContain)->Apply(ladder);

static void rangeHoldsATime(State& state) {
    constexpr std::string_view time = "05:10:30:00";
    vekdb& table = sharedLog(state.range(0));
    ask(table, {{"Start time", time.data()}});
    unsigned start = column(table, "Start time");
    unsigned end = column(table, "End time");
    timeQuery(state, table, countRows(table, [&](const dbrecord& record) {
                  return record.fieldView(start) <= time && time <= record.fieldView(end);
              }));
}
BENCHMARK(rangeHoldsATime)->Apply(ladder);

static void nothingMatches(State& state) {
    vekdb& table = sharedLog(state.range(0));
    ask(table, {{"Notes", "no such note"}});
    if (!check(state, table.tag_matching_records(0) == 0, "found what is not there")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(table.tag_matching_records(0));
    }
    report(state, state.range(0));
}
BENCHMARK(nothingMatches)->Apply(ladder);

static void findFirstAtTheEnd(State& state) {
    vekdb& table = sharedLog(state.range(0));
    unsigned last = table.get_num_records() - 1;
    auto value = table.getField(last, column(table, "end keycode"));
    auto find = [&] { return table.findFirst("end keycode", value.c_str(), 0); };
    bool right = table.getField(find(), column(table, "end keycode")) == value;
    if (!check(state, right, "found another row")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(find());
    }
    report(state, state.range(0));
}
BENCHMARK(findFirstAtTheEnd)->Apply(ladder);
