// Work of the library beside bare loops that do no more than it cannot do without: what
// docs/performance.md says of aims that are not met.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <string_view>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/row_lines.h>
#include "log_fixture.h"

using namespace bench;
using benchmark::State;

namespace {

std::vector<DBFieldDesc> columnsOf(const vekdb& table) {
    std::vector<DBFieldDesc> columns;
    for (unsigned i = 0; i < table.get_num_fields(); ++i) {
        columns.push_back({table.get_fieldname(i), table.get_field_type(i)});
    }
    return columns;
}

// A table of the same columns from the last to the first, and without rows.
std::unique_ptr<vekdb> turnedRound(const vekdb& table) {
    std::vector<DBFieldDesc> columns = columnsOf(table);
    std::reverse(columns.begin(), columns.end());
    return std::make_unique<vekdb>(columns);
}

std::vector<unsigned> anyOrder(std::int64_t rows) {
    std::vector<unsigned> order(static_cast<std::size_t>(rows));
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    return order;
}

// The values of rows, one behind the other, and where each ends.
struct Copies {
    explicit Copies(std::int64_t rows)
        : text(new char[static_cast<std::size_t>(rows) * 512]),
          ends(new std::uint16_t[static_cast<std::size_t>(rows) * 64]) {}

    std::unique_ptr<char[]> text;
    std::unique_ptr<std::uint16_t[]> ends;
};

void copyTurnedRound(const vekdb& from, Copies& to) {
    std::vector<std::string_view> values(from.get_num_fields());
    char* text = to.text.get();
    std::uint16_t* end = to.ends.get();
    for (unsigned row = 0; row < from.get_num_records(); ++row) {
        from.get_record(row)->fieldViews(values.data(), from.get_num_fields());
        const char* const begin = text;
        for (auto value = values.rbegin(); value != values.rend(); ++value) {
            std::memcpy(text, value->data(), value->size());
            text += value->size();
            *text++ = '\0';
            *end++ = static_cast<std::uint16_t>(text - begin);
        }
    }
    benchmark::DoNotOptimize(text);
}

}  // namespace

static void mergeWithEqualColumns(State& state) {
    const std::int64_t rows = state.range(0);
    vekdb& from = sharedLog(rows);
    timeFresh(
        state, [&] { return std::make_unique<vekdb>(columnsOf(from)); },
        [&](vekdb& into) { into.merge_all_matching(&from); });
    report(state, rows);
}
BENCHMARK(mergeWithEqualColumns)->Apply(freshLadder);

static void mergeWithColumnsTurnedRound(State& state) {
    const std::int64_t rows = state.range(0);
    vekdb& from = sharedLog(rows);
    timeFresh(
        state, [&] { return turnedRound(from); },
        [&](vekdb& into) { into.merge_all_matching(&from); });
    report(state, rows);
}
BENCHMARK(mergeWithColumnsTurnedRound)->Apply(freshLadder);

static void bareCopyTurnedRound(State& state) {
    const std::int64_t rows = state.range(0);
    vekdb& from = sharedLog(rows);
    timeFresh(
        state, [&] { return std::make_unique<Copies>(rows); },
        [&](Copies& to) { copyTurnedRound(from, to); });
    report(state, rows);
}
BENCHMARK(bareCopyTurnedRound)->Apply(freshLadder);

static void linesInTheirOrder(State& state) {
    const std::int64_t rows = state.range(0);
    const RowLines lines(sharedLog(rows));
    std::vector<unsigned> order(static_cast<std::size_t>(rows));
    std::iota(order.begin(), order.end(), 0u);
    for (auto run : state) {
        for (std::size_t at = 0; at < order.size();) {
            TextFile text;
            at += lines.append(order.data() + at, order.size() - at, 1 << 18, text);
        }
    }
    report(state, rows);
}
BENCHMARK(linesInTheirOrder)->Apply(ladder);

static void linesInAnyOrder(State& state) {
    const std::int64_t rows = state.range(0);
    const RowLines lines(sharedLog(rows));
    const std::vector<unsigned> order = anyOrder(rows);
    for (auto run : state) {
        for (std::size_t at = 0; at < order.size();) {
            TextFile text;
            at += lines.append(order.data() + at, order.size() - at, 1 << 18, text);
        }
    }
    report(state, rows);
}
BENCHMARK(linesInAnyOrder)->Apply(ladder);

// Lines of equal length, whose places need not be looked up.
static void bareLinesInAnyOrder(State& state) {
    constexpr std::size_t line = 167;
    const std::int64_t rows = state.range(0);
    const std::vector<unsigned> order = anyOrder(rows);
    const std::vector<char> text(line * order.size(), 'x');
    std::vector<char> piece(1 << 18);
    for (auto run : state) {
        std::size_t used = 0;
        for (unsigned row : order) {
            if (used + line > piece.size()) used = 0;
            std::memcpy(piece.data() + used, text.data() + row * line, line);
            used += line;
        }
        benchmark::DoNotOptimize(piece.data());
    }
    report(state, rows);
}
BENCHMARK(bareLinesInAnyOrder)->Apply(ladder);

static void insertAnywhere(State& state) {
    const std::int64_t rows = state.range(0);
    auto table = loadLog(rows);
    std::mt19937 chance(7);
    for (auto run : state) {
        table->insert_records(static_cast<unsigned>(chance() % table->get_num_records()), 1);
    }
    report(state, 1);
}
BENCHMARK(insertAnywhere)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Iterations(1000);

// The pointers behind a place make room for one more.
static void bareInsertAnywhere(State& state) {
    auto rows = static_cast<std::size_t>(state.range(0));
    std::vector<void*> pointers(rows + 1001);
    std::mt19937 chance(7);
    for (auto run : state) {
        void** const at = pointers.data() + chance() % rows;
        const auto behind = static_cast<std::size_t>(pointers.data() + rows - at);
        std::memmove(at + 1, at, behind * sizeof(void*));
        ++rows;
        benchmark::DoNotOptimize(pointers.data());
    }
    report(state, 1);
}
BENCHMARK(bareInsertAnywhere)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Iterations(1000);
