#pragma once

#include <ctime>
#include <vector>

#include <vekdb/host/lightweight_string.h>
#include <vekdb/table.h>
#include "vekdb/columns/column_list.h"
#include "vekdb/order/sort_settings.h"
#include "vekdb/query/label_range_keys.h"
#include "vekdb/query/query.h"
#include "vekdb/rows/cookie_rows.h"
#include "vekdb/rows/rows.h"
#include "vekdb/table/parameters.h"
#include "vekdb/table/update_batch.h"

/// What a table is composed of.
struct TableParts {
    int revision = 1;
    ColumnList columns;
    Rows rows;
    Parameters parameters;
    LightweightString<wchar_t> fileName;
    SortSettings sort;
    UpdateBatch updates;
    Query query;
    LabelRangeKeys rangeKeys;
    CookieRows cookieRows;
    // The longest values of all columns, while a header that asks for each is being written.
    const std::vector<unsigned>* knownSizes = nullptr;
    dberror error = {};
    bool errorSet = false;
    bool modified = false;
    bool valid = false;
    bool loadedWhole = false;
    int readError = 0;
    std::time_t created = 0;
    std::time_t modificationTime = 0;
};
