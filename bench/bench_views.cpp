// Views over a log: built, sorted, tagged, copied, and rows read, changed, inserted and deleted
// through them.

#include <random>

#include <vekdb/record.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "log_fixture.h"

using namespace bench;
using benchmark::State;

namespace {

// A table and views of all its rows over it, each stacked on the one before.
struct Stack {
    explicit Stack(std::int64_t rows, int height) : table(loadLog(rows)) {
        lowest = VDBView(table.get());
        lowest->buildIndex();
        for (top = lowest; height > 1; --height) {
            VDBView above(table.get());
            above->baseView(top.get());
            above->buildIndex();
            top = above;
        }
    }

    std::unique_ptr<vekdb> table;
    VDBView lowest;
    VDBView top;
};

VDBView viewOfAll(vekdb& table) {
    VDBView view(&table);
    view->buildIndex();
    return view;
}

void tagEvery(VDBViewRep& view, unsigned step) {
    for (unsigned row = 0; row < view.get_num_records(); row += step) {
        view.set_tag(row, 1);
    }
}

std::unique_ptr<Stack> stackWithTags(std::int64_t rows, int height, unsigned step) {
    auto stack = std::make_unique<Stack>(rows, height);
    tagEvery(*stack->lowest, step);
    return stack;
}

}  // namespace

static void build(State& state) {
    std::int64_t rows = state.range(0);
    vekdb& table = sharedLog(rows);
    if (!check(state, viewOfAll(table)->get_num_records() == rows, "rows are missing")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(viewOfAll(table)->get_num_records());
    }
    report(state, rows);
}
BENCHMARK(build)->Apply(ladder);

static void sortView(State& state) {
    std::int64_t rows = state.range(0);
    vekdb& table = sharedLog(rows);
    auto sort = [](VDBViewRep& view) { view.sort(0, 0); };
    table.set_sortfield(static_cast<int>(column(table, "Description")));
    VDBView sorted = viewOfAll(table);
    sort(*sorted);
    unsigned description = column(table, "Description");
    bool right =
        sorted->getField(0, description) < sorted->getField(unsigned(rows) - 1, description);
    if (!check(state, right, "the view is not in order")) {
        return;
    }
    timeFresh(
        state, [&] { return std::make_unique<VDBView>(viewOfAll(table)); },
        [&](VDBView& view) { sort(*view); });
    report(state, rows);
}
BENCHMARK(sortView)->Apply(freshLadder);

static void tagMatches(State& state) {
    std::int64_t rows = state.range(0);
    vekdb& table = sharedLog(rows);
    std::unique_ptr<dbrecord> query(table.make_dummy_record());
    query->set_field(static_cast<int>(column(table, "Description")), "dolly");
    table.set_query(query.get());
    VDBView view = viewOfAll(table);
    unsigned found = view->tagMatches(0);
    if (!check(state, found > 0 && found == view->countTags(), "tags and count differ")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(view->tagMatches(0));
    }
    report(state, rows);
}
BENCHMARK(tagMatches)->Apply(ladder);

static void tagDuplicates(State& state) {
    std::int64_t rows = state.range(0);
    vekdb& table = sharedLog(rows);
    unsigned description = column(table, "Description");
    VDBView view = viewOfAll(table);
    view->tagDuplicates(static_cast<int>(description));
    if (!check(state, view->countTags() > 0, "no duplicate found")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(view->tagDuplicates(static_cast<int>(description)));
    }
    report(state, rows);
}
BENCHMARK(tagDuplicates)->Apply(ladder);

static void copy(State& state) {
    std::int64_t rows = state.range(0);
    VDBView view = viewOfAll(sharedLog(rows));
    if (!check(state, view.copy()->get_num_records() == rows, "rows are missing")) {
        return;
    }
    for (auto run : state) {
        benchmark::DoNotOptimize(view.copy().get());
    }
    report(state, rows);
}
BENCHMARK(copy)->Apply(ladder);

// Deletes every `step`-th row through the lowest view of a stack.
static void deleteThroughAView(State& state, int height, unsigned step) {
    std::int64_t rows = state.range(0);
    auto left = static_cast<unsigned>(rows - (rows + step - 1) / step);
    auto remove = [](Stack& stack) { benchmark::DoNotOptimize(stack.lowest->deleteTagged()); };
    Stack stack(10'000, height);
    tagEvery(*stack.lowest, step);
    remove(stack);
    unsigned kept = 10'000 - (10'000 + step - 1) / step;
    bool right = stack.table->get_num_records() == kept;
    if (!check(state, right && left > 0, "the wrong number of rows is left")) {
        return;
    }
    timeFresh(
        state, [&] { return stackWithTags(rows, height, step); }, remove);
    report(state, rows / step);
}

static void deleteATenth(State& state) {
    deleteThroughAView(state, 1, 10);
}
static void deleteHalf(State& state) {
    deleteThroughAView(state, 1, 2);
}
static void deleteATenthUnderASecondView(State& state) {
    deleteThroughAView(state, 2, 10);
}
static void deleteHalfUnderASecondView(State& state) {
    deleteThroughAView(state, 2, 2);
}

// As long as a run of deletions costs rows times deletions, the last step is left out.
static void deletionLadder(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
    benchmark->UseManualTime()->Iterations(1);
}
BENCHMARK(deleteATenth)->Apply(deletionLadder);
BENCHMARK(deleteHalf)->Apply(deletionLadder);
BENCHMARK(deleteATenthUnderASecondView)->Apply(deletionLadder);
BENCHMARK(deleteHalfUnderASecondView)->Apply(deletionLadder);

// --- the same work on a table and through two views stacked on it

// A table alone, or with two views on it, and what its rows are reached through.
struct Floor {
    Floor(std::int64_t rows, int views) {
        if (views == 0) {
            table = loadLog(rows);
            source = table.get();
            return;
        }
        stack = std::make_unique<Stack>(rows, views);
        source = stack->top.get();
    }

    std::unique_ptr<vekdb> table;
    std::unique_ptr<Stack> stack;
    VDBBase* source;
};

static void readAColumn(State& state) {
    Floor floor(state.range(0), static_cast<int>(state.range(1)));
    const unsigned description = column(*floor.source, "Description");
    for (auto run : state) {
        for (unsigned row = 0; row < floor.source->get_num_records(); ++row) {
            benchmark::DoNotOptimize(floor.source->getField(row, description));
        }
    }
    report(state, state.range(0));
}

static void lookAtAColumn(State& state) {
    Floor floor(state.range(0), static_cast<int>(state.range(1)));
    const unsigned description = column(*floor.source, "Description");
    for (auto run : state) {
        for (unsigned row = 0; row < floor.source->get_num_records(); ++row) {
            const dbrecord* record = floor.source->get_record(row);
            benchmark::DoNotOptimize(record->fieldView(description));
        }
    }
    report(state, state.range(0));
}

static void setAColumn(State& state) {
    Floor floor(state.range(0), static_cast<int>(state.range(1)));
    const unsigned description = column(*floor.source, "Description");
    bool again = false;
    for (auto run : state) {
        const char* text = (again = !again) ? "a text in its place" : "another one of it";
        for (unsigned row = 0; row < floor.source->get_num_records(); ++row) {
            benchmark::DoNotOptimize(floor.source->set_field(row, description, text));
        }
    }
    report(state, state.range(0));
}

template <class Edit>
static void editSingly(State& state, Edit edit) {
    constexpr int edits = 10'000;
    std::mt19937 random;
    timeFresh(
        state,
        [&] { return std::make_unique<Floor>(state.range(0), static_cast<int>(state.range(1))); },
        [&](Floor& floor) {
            for (int i = 0; i < edits; ++i) {
                edit(*floor.source, random() % floor.source->get_num_records());
            }
        });
    report(state, edits);
}

static void insertSingly(State& state) {
    editSingly(state, [](VDBBase& source, unsigned row) { source.insert_records(row, 1); });
}

static void deleteSingly(State& state) {
    editSingly(state, [](VDBBase& source, unsigned row) { source.delete_records(row, 1); });
}

static void insertAndDeleteInTurn(State& state) {
    editSingly(state, [](VDBBase& source, unsigned row) {
        source.insert_records(row, 1);
        source.delete_records(source.get_num_records() - 1 - row, 1);
    });
}

static void floors(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"rows", "views"})->Unit(benchmark::kMillisecond);
    for (std::int64_t rows : {100'000, 1'000'000}) {
        for (std::int64_t views : {0, 2}) {
            benchmark->Args({rows, views});
        }
    }
}
static void freshFloors(benchmark::internal::Benchmark* benchmark) {
    floors(benchmark);
    benchmark->UseManualTime()->Iterations(1);
}
BENCHMARK(readAColumn)->Apply(floors);
BENCHMARK(lookAtAColumn)->Apply(floors);
BENCHMARK(setAColumn)->Apply(floors);
BENCHMARK(insertSingly)->Apply(freshFloors);
BENCHMARK(deleteSingly)->Apply(freshFloors);
BENCHMARK(insertAndDeleteInTurn)->Apply(freshFloors);
