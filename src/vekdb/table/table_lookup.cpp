#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <vekdb/host/cookie.h>
#include <vekdb/table.h>
#include "vekdb/table/shown_value.h"
#include "vekdb/table/table_parts.h"

namespace {

bool matchesValue(const char* text, const char* value, int prefixLength) {
    if (prefixLength == 0) return std::strcmp(text, value) == 0;
    // A negative length is a huge one, as it is for strncmp.
    return std::strncmp(text, value, static_cast<std::size_t>(prefixLength)) == 0;
}

}  // namespace

unsigned vekdb::findFirst(const char* field, const char* value, int prefixLength) {
    if (field == nullptr || value == nullptr) return Rows::none;
    if (LightweightString<char>::icompare(field, "cookie") == 0) {
        const unsigned row = getRowIndexByID(Cookie(value, false));
        if (row != Rows::none) return row;
    }
    const unsigned column = get_fieldnum(field);
    if (column > ColumnList::most) return Rows::none;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        const dbrecord* record = get_record(row);
        if (record == nullptr) continue;
        if (matchesValue(record->fieldView(column).data(), value, prefixLength)) return row;
    }
    return Rows::none;
}

unsigned vekdb::getRowIndexByID(const Cookie& id) {
    if (parts().cookieRows.empty()) enterCookieRows();
    return parts().cookieRows.find(id.uuid);
}

// The first row of an identity is the one that is found. A map that could not be finished must
// not be kept: it would pass for a whole one.
void vekdb::enterCookieRows() {
    const unsigned column = get_fieldnum("cookie");
    if (column > ColumnList::most) return;
    const unsigned count = get_num_records();
    ShownValue value(*this, mayBeOverridden());
    CookieRows entered;
    entered.reserve(count);
    std::array<Quor::UUID, 32> ids;
    for (unsigned first = 0; first < count; first += ids.size()) {
        const unsigned end = std::min<std::size_t>(ids.size(), count - first);
        for (unsigned i = 0; i < end; ++i) {
            ids[i] = Cookie::fromText(value(first + i, column)).uuid;
            entered.expect(ids[i]);
        }
        for (unsigned i = 0; i < end; ++i) entered.enter(ids[i], first + i);
    }
    parts().cookieRows = std::move(entered);
}
