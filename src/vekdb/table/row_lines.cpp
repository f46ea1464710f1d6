#include <vekdb/row_lines.h>

#include <algorithm>

#include <vekdb/host/text_file.h>
#include <vekdb/table.h>
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_inside.h"

namespace {

// A value stands behind the record's pointer, the record and the record's slices, so these are
// fetched further ahead.
constexpr std::size_t pointersAhead = 48;
constexpr std::size_t recordsAhead = 32;
constexpr std::size_t slicesAhead = 20;
constexpr std::size_t textAhead = 10;

constexpr std::size_t cacheLine = 64;
constexpr std::size_t mostOfText = 8 * cacheLine;

// From the first byte to the last, each of which may stand in another of the processor's lines.
[[gnu::always_inline]] inline void fetchBytes(const char* first, std::size_t size) {
    for (std::size_t at = 0; at < size; at += cacheLine) __builtin_prefetch(first + at);
    __builtin_prefetch(first + size);
}

[[gnu::always_inline]] inline void fetchSlices(const dbrecord& record) {
    const LineSlices* const slices = RecordAccess::slices(record);
    if (slices == nullptr) return;
    fetchBytes(reinterpret_cast<const char*>(slices),
               LineSlices::bytesFor(RecordAccess::storedCount(record)) - 1);
}

[[gnu::always_inline]] inline void fetchText(const dbrecord& record) {
    const LineSlices* const slices = RecordAccess::slices(record);
    if (slices == nullptr) return;
    const std::size_t size = slices->next()[RecordAccess::storedCount(record) - 1];
    fetchBytes(slices->first(), std::min(size, mostOfText));
}

// The rows of a table as they are shown.
class ShownRows {
public:
    explicit ShownRows(const Rows& rows) {
        if (rows.tagsOnly() == 0) {
            const RowsInOrder all = rows.inOrder();
            std::copy(all.runs, all.runs + 2, runs_);
        } else if (rows.shownCount() > 0) {
            runs_[0] = rows.shownFrom(0);
        }
    }

    const dbrecord* operator[](unsigned row) const {
        return row < runs_[0].count + runs_[1].count ? *place(row) : nullptr;
    }

    [[gnu::always_inline]] void fetch(const unsigned* rows, std::size_t left) const {
        if (left <= pointersAhead) return;
        __builtin_prefetch(place(rows[pointersAhead]));
        __builtin_prefetch((*this)[rows[recordsAhead]]);
        const dbrecord* const slices = (*this)[rows[slicesAhead]];
        const dbrecord* const text = (*this)[rows[textAhead]];
        if (slices != nullptr) fetchSlices(*slices);
        if (text != nullptr) fetchText(*text);
    }

private:
    dbrecord* const* place(unsigned row) const {
        const std::size_t first = runs_[0].count;
        return row < first ? runs_[0].records + row : runs_[1].records + (row - first);
    }

    RecordRun runs_[2] = {{nullptr, 0}, {nullptr, 0}};
};

}  // namespace

std::size_t RowLines::append(const unsigned* rows, std::size_t count, std::size_t bytes,
                             TextFile& to) const {
    const std::size_t end = to.textSize() + bytes;
    const ShownRows table(TableInside::of(table_).rows);
    std::size_t done = 0;
    for (; done < count && to.textSize() < end; ++done) {
        table.fetch(rows + done, count - done);
        if (const dbrecord* record = table[rows[done]]) append(*record, to);
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

// Values that stand as they were quoted have a quote in front, others the line's first byte.
std::optional<std::uint64_t> RowLines::placeAsRead(const dbrecord& row) {
    const LineSlices* const slices = RecordAccess::slices(row);
    if (slices == nullptr) return std::nullopt;
    return slices->offset() - (slices->gap() == LineSlices::quotedGap ? 1 : 0);
}
