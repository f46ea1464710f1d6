#include <vekdb/row_lines.h>

#include <vekdb/host/text_file.h>
#include <vekdb/table.h>
#include "vekdb/record/record_access.h"

namespace {

// A value stands behind the record and the record's slices, so these are fetched further ahead.
constexpr std::size_t recordsAhead = 24;
constexpr std::size_t slicesAhead = 16;
constexpr std::size_t textAhead = 8;

[[gnu::always_inline]] inline void fetch(const vekdb& table, const unsigned* rows,
                                         std::size_t left) {
    if (left <= recordsAhead) return;
    __builtin_prefetch(table.get_record(rows[recordsAhead]));
    const dbrecord* const slices = table.get_record(rows[slicesAhead]);
    const dbrecord* const text = table.get_record(rows[textAhead]);
    if (slices != nullptr) RecordAccess::expectView(*slices);
    if (text != nullptr) RecordAccess::expectLine(*text);
}

}  // namespace

std::size_t RowLines::append(const unsigned* rows, std::size_t count, std::size_t bytes,
                             TextFile& to) const {
    const std::size_t end = to.textSize() + bytes;
    std::size_t done = 0;
    for (; done < count && to.textSize() < end; ++done) {
        fetch(table_, rows + done, count - done);
        if (const dbrecord* record = table_.get_record(rows[done])) append(*record, to);
    }
    return done;
}

void RowLines::append(const dbrecord& row, TextFile& to) {
    const bool wasChanged = row.get_changed();
    row.write(to);
    RecordAccess::setChanged(row, wasChanged);
}

bool RowLines::isAsRead(const dbrecord& row) {
    const LineSlices* const slices = RecordAccess::slices(row);
    return slices != nullptr && slices->gap() == LineSlices::quotedGap && !slices->isOverwritten();
}

// From the quote in front of the first value to the one behind the last.
std::size_t RowLines::sizeAsRead(const dbrecord& row) {
    const unsigned stored = RecordAccess::storedCount(row);
    if (stored == 0 || stored != row.get_num_fields() || !isAsRead(row)) return 0;
    return RecordAccess::slices(row)->next()[stored - 1] - std::size_t{1};
}
