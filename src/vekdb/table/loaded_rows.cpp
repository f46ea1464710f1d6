#include "vekdb/table/loaded_rows.h"

#include <algorithm>
#include <cstdint>

#include <vekdb/host/diagnostics.h>
#include <vekdb/table.h>
#include "vekdb/lines/record_lines.h"
#include "vekdb/lines/table_text.h"
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_parts.h"

namespace {

// So many lines tell how long the others are: the first few roughly, more of them better.
bool isSample(unsigned lines) {
    return lines == 16 || lines == 1024;
}

}  // namespace

LoadedRows::~LoadedRows() {
    parts_.rows.pool().destroy(open_);
}

unsigned LoadedRows::readFrom(RecordLines& lines, bool skipFirst, int most) {
    if (parts_.rows.count() >= parts_.rows.capacity() || most < 1) return 0;
    const auto wanted = static_cast<unsigned>(most);
    open();
    while (read_ < wanted && readNext(lines, skipFirst && read_ == 0)) {
        take(lines);
        if (isSample(++read_)) expectRest(lines, wanted - read_);
    }
    return read_;
}

bool LoadedRows::readNext(RecordLines& lines, bool skipsThis) {
    const LineScan line = lines.read(*open_);
    return line.steps != 0 && isComplete(lines, line) && replacePassedOver(lines, skipsThis);
}

bool LoadedRows::isComplete(RecordLines& lines, const LineScan& line) {
    if (line.values == parts_.columns.count()) return true;
    lines.awaitAll();
    table_.fill_error_info(1, static_cast<int>(read_), 0, 0);
    LogBoth("vekdb::add_text: returning because not all fields filled\n");
    return false;
}

// The first line is passed over where that was asked for; so are a magic line and the two lines
// behind it. The line that takes their place may have any number of values.
bool LoadedRows::replacePassedOver(RecordLines& lines, bool skipsThis) {
    if (!skipsThis && !isMagicName(open_->fieldView(0))) return true;
    if (!skipsThis) {
        lines.read(*open_);
        lines.read(*open_);
    }
    if (lines.read(*open_).steps != 0) return true;
    lines.awaitAll();
    debug_printf("vekdb::add_text: returning because no more lines\n");
    return false;
}

void LoadedRows::open() {
    open_ = parts_.rows.pool().create(0);
    RecordAccess::setOwner(*open_, &table_);
}

// Takes the next slot, and as many more as it takes for one to be free. The record of a row that
// is not wanted serves the next line.
void LoadedRows::take(RecordLines& lines) {
    if (!sieve_.takes(*open_)) return lines.takeBack(*open_);
    Rows& rows = parts_.rows;
    rows.append(open_);
    open_ = nullptr;
    rows.cover(std::uint64_t{rows.count()} + 1);
    open();
}

// How many records will be kept nobody knows where not all are.
void LoadedRows::expectRest(RecordLines& lines, unsigned most) {
    if (!sieve_.isOpen()) return;
    const std::size_t rest = lines.expectRest(parts_.columns.count());
    parts_.rows.expect(std::min<std::size_t>(most, rest));
}
