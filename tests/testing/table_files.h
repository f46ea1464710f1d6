#pragma once

#include <vector>

#include <vekdb/table.h>
#include "testing/lines.h"

// Tables as tests compare them.

namespace testing_support {

inline std::vector<Strings> rowsOf(const VDBBase& source) {
    std::vector<Strings> rows;
    for (unsigned row = 0; row < source.get_num_records(); ++row) {
        rows.push_back(valuesOf(*source.get_record(row)));
    }
    return rows;
}

// Empty while no error is set.
inline std::vector<int> errorOf(const vekdb& table) {
    dberror error;
    if (!table.read_error_info(error)) return {};
    return {error.values[0], error.values[1], error.values[2], error.values[3]};
}

}  // namespace testing_support
