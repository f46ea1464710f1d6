#include "vekdb/query/range_keys.h"

#include <algorithm>
#include <new>

#include "host/large_pages.h"
#include "vekdb/rows/row_ahead.h"

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

bool RangeKeys::areOf(LabelColumns columns, const Rows& rows) const {
    return columns.start == columns_.start && columns.end == columns_.end &&
           order_ == rows.order();
}

RangeFilter RangeKeys::filterFor(const RangeQuestion* asked, const Rows& rows) {
    if (asked == nullptr || asked->text.empty() || rows.tagsOnly() != 0) return {};
    if (!areOf(asked->columns, rows)) {
        forget();
        columns_ = asked->columns;
        order_ = rows.order();
    }
    if (timesAsked_ < 2 && ++timesAsked_ == 2) make(rows);
    return keys_ != nullptr ? RangeFilter(keys_.get(), asked->text) : RangeFilter();
}

// Without memory for them queries work as before.
void RangeKeys::make(const Rows& rows) {
    keys_.reset(new (std::nothrow) RangeKey[rows.count()]);
    if (keys_ == nullptr) return;
    expectFilling(keys_.get(), rows.count() * sizeof(RangeKey));
    for (unsigned from = 0; from < rows.count();) {
        const Rows::Piece piece = rows.shownFrom(from);
        for (unsigned i = 0; i < piece.count; ++i) {
            RowAhead::fetchValue(piece, i, columns_.start);
            const dbrecord* record = piece.records[i];
            if (record == nullptr) continue;
            keys_[from + i] = RangeKey::of(RecordAccess::view(*record, columns_.start),
                                           RecordAccess::view(*record, columns_.end));
            RecordAccess::markKeyed(*record);
        }
        from += piece.count;
    }
}

void RangeKeys::note(const RangeFilter& filter, const Rows& rows) {
    constexpr unsigned mostUnknown = 8;  // one in so many
    if (filter.unknown() > rows.count() / mostUnknown) forget();
}
