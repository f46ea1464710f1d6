#include "vekdb/query/label_range_keys.h"

#include <algorithm>
#include <new>

#include "host/posix/large_pages.h"
#include "vekdb/record/row_ahead.h"

namespace {

constexpr std::size_t bytesInKey = sizeof(std::uint64_t);

// A value that is shorter comes before every longer one that begins with it.
std::uint64_t front(std::string_view value) {
    char bytes[bytesInKey] = {};
    std::memcpy(bytes, value.data(), std::min(value.size(), bytesInKey));
    return orderedWord(bytes);
}

}  // namespace

RangeKey RangeKey::of(std::string_view start, std::string_view end) {
    return {start.empty() ? ~std::uint64_t{0} : front(start), front(end)};
}

RangeFilter::RangeFilter(const RangeKey* keys, std::string_view text)
    : keys_(keys), text_(front(text)), compared_(~std::uint64_t{0}) {
    if (text.size() < bytesInKey) compared_ <<= 8 * (bytesInKey - text.size());
}

bool LabelRangeKeys::areOf(LabelColumns columns, const RowsInOrder& rows) const {
    return columns.start == columns_.start && columns.end == columns_.end && order_ == rows.order;
}

RangeFilter LabelRangeKeys::filterFor(const RangeQuestion* asked, const RowsInOrder& rows) {
    if (asked == nullptr || asked->text.empty()) return {};
    if (!areOf(asked->columns, rows)) {
        forget();
        columns_ = asked->columns;
        order_ = rows.order;
    }
    if (timesAsked_ < 2 && ++timesAsked_ == 2) make(rows);
    return keys_ != nullptr ? RangeFilter(keys_.get(), asked->text) : RangeFilter();
}

// Without memory for them queries work as before.
void LabelRangeKeys::make(const RowsInOrder& rows) {
    keys_.reset(new (std::nothrow) RangeKey[rows.count()]);
    if (keys_ == nullptr) return;
    expectFilling(keys_.get(), rows.count() * sizeof(RangeKey));
    RangeKey* keys = keys_.get();
    for (const RecordRun& run : rows.runs) {
        makeOf(run, keys);
        keys += run.count;
    }
}

void LabelRangeKeys::makeOf(const RecordRun& run, RangeKey* keys) {
    for (unsigned i = 0; i < run.count; ++i) {
        RowAhead::fetchValue(run, i, columns_.start);
        const dbrecord* record = run.records[i];
        if (record == nullptr) continue;
        keys[i] = RangeKey::of(RecordAccess::view(*record, columns_.start),
                               RecordAccess::view(*record, columns_.end));
        RecordAccess::markKeyed(*record);
    }
}

void LabelRangeKeys::note(const RangeFilter& filter, unsigned rows) {
    constexpr unsigned mostUnknown = 8;  // one in so many
    if (filter.unknown() > rows / mostUnknown) forget();
}
