#include "vekdb/rows/field_sizes.h"

#include <algorithm>
#include <cstdint>

#include "vekdb/record/record_access.h"
#include "vekdb/rows/rows.h"

namespace {

void raiseLengths(std::vector<unsigned>& lengths, const dbrecord& record, unsigned fields) {
    for (unsigned i = 0; i < fields; ++i) {
        const std::size_t length = RecordAccess::view(record, i).size();
        lengths[i] = std::max(lengths[i], static_cast<unsigned>(length));
    }
}

}  // namespace

// Slices are compared on their own, in the narrow numbers that they consist of.
std::vector<unsigned> longestValues(const Rows& rows, unsigned fields) {
    std::vector<unsigned> longest(fields, 0);
    std::vector<std::uint16_t> longestSlices(fields, 0);
    for (unsigned row = 0; row < rows.count(); ++row) {
        const dbrecord& record = *rows.at(row);
        const unsigned stored = std::min(fields, RecordAccess::storedCount(record));
        if (const LineSlices* slices = RecordAccess::slices(record)) {
            slices->raiseLengths(longestSlices.data(), stored);
        } else {
            raiseLengths(longest, record, stored);
        }
    }
    std::transform(longest.begin(), longest.end(), longestSlices.begin(), longest.begin(),
                   [](unsigned a, unsigned b) { return std::max(a, b); });
    return longest;
}

unsigned longestValue(const Rows& rows, unsigned field) {
    std::size_t longest = 0;
    for (unsigned row = 0; row < rows.count(); ++row) {
        longest = std::max(longest, rows.at(row)->fieldView(field).size());
    }
    return static_cast<unsigned>(longest);
}
