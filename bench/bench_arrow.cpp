// A table handed over as a stream of Arrow, beside saving it.

#include <vekdb/arrow/arrow.h>
#include "host/disk_flush.h"
#include "log_fixture.h"

using namespace bench;
using benchmark::State;

static std::int64_t rowsHandedOver(const vekdb& table, const ArrowExport& how) {
    ArrowArrayStream stream = exportArrow(table, how);
    std::int64_t rows = 0;
    for (ArrowArray batch = {}; stream.get_next(&stream, &batch) == 0;) {
        if (batch.release == nullptr) break;
        rows += batch.length;
        batch.release(&batch);
    }
    stream.release(&stream);
    return rows;
}

static void exportTable(State& state, const ArrowExport& how) {
    const std::int64_t rows = state.range(0);
    const vekdb& table = sharedLog(rows);
    if (!check(state, rowsHandedOver(table, how) == rows, "rows are lost")) return;
    for (auto run : state) benchmark::DoNotOptimize(rowsHandedOver(table, how));
    report(state, rows, fileSize(logPath(rows)));
}

static void exportRows(State& state) {
    exportTable(state, {});
}
BENCHMARK(exportRows)->Apply(ladder);

static void exportWithTags(State& state) {
    exportTable(state, {.tags = ArrowTags::flags});
}
BENCHMARK(exportWithTags)->Apply(ladder);

// The measure of both: the same table written as a log.
static void saveTheSame(State& state) {
    const std::int64_t rows = state.range(0);
    auto table = loadLog(rows);
    table->set_filename(wide(scratchPath("arrow.vek")));
    DiskFlush::isOn = false;
    if (!check(state, table->save_text() == rows, "rows are lost")) return;
    for (auto run : state) benchmark::DoNotOptimize(table->save_text());
    DiskFlush::isOn = true;
    report(state, rows, fileSize(logPath(rows)));
}
BENCHMARK(saveTheSame)->Apply(ladder);
