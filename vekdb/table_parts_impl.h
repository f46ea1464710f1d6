#pragma once

#include <ctime>
#include <vector>

#include "host/lightweight_string.h"
#include "vekdb/columns_impl.h"
#include "vekdb/cookie_rows_impl.h"
#include "vekdb/parameters_impl.h"
#include "vekdb/query_impl.h"
#include "vekdb/range_keys_impl.h"
#include "vekdb/rows_impl.h"
#include "vekdb/sort_settings_impl.h"
#include "vekdb/table.h"
#include "vekdb/update_batch_impl.h"

/// What a table is composed of.
struct TableParts {
    int revision = 1;
    Columns columns;
    Rows rows;
    Parameters parameters;
    LightweightString<wchar_t> fileName;
    SortSettings sort;
    UpdateBatch updates;
    Query query;
    RangeKeys rangeKeys;
    CookieRows cookieRows;
    // The longest values of all columns, while a header that asks for each is being written.
    const std::vector<unsigned>* knownSizes = nullptr;
    std::vector<int> timecodeColumns;  // found by name in a file without types, -1 at the end
    dberror error = {};
    bool errorSet = false;
    bool modified = false;
    bool valid = false;
    bool loadedWhole = false;
    std::time_t created = 0;
    std::time_t modificationTime = 0;
};
