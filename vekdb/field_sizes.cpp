#include "vekdb/field_sizes_impl.h"

#include <algorithm>

#include "vekdb/record_access_impl.h"
#include "vekdb/rows_impl.h"

std::vector<unsigned> longestValues(const Rows& rows, unsigned fields) {
    std::vector<unsigned> longest(fields, 0);
    for (unsigned row = 0; row < rows.count(); ++row) {
        RecordAccess::raiseLengths(*rows.at(row), longest.data(), fields);
    }
    return longest;
}

unsigned longestValue(const Rows& rows, unsigned field) {
    std::size_t longest = 0;
    for (unsigned row = 0; row < rows.count(); ++row) {
        longest = std::max(longest, rows.at(row)->fieldView(field).size());
    }
    return static_cast<unsigned>(longest);
}
