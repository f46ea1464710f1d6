#include <algorithm>

#include <vekdb/sort.h>
#include <vekdb/table.h>
#include "vekdb/order/record_sort.h"
#include "vekdb/order/sort_room.h"
#include "vekdb/table/table_parts.h"

void vekdb::set_sortfield(int field) { parts().sort.sortBy(field); }
void vekdb::set_sortfields(int* fields) { parts().sort.sortBy(fields); }
void vekdb::set_sort_offset(int offset) { parts().sort.setOffset(offset); }

// The walk goes by the entries as they were: one that is no column ends the list for the
// comparison, but a timecode column behind it still counts as found.
int* vekdb::sortPrepare(int, int forceNormal) {
    s_off = parts().sort.offset();
    comco = 0;
    cmp_fields = parts().sort.columns();
    force_normal_sort = forceNormal;
    timecode_field = -1;
    for (int* field = cmp_fields; *field >= 0; ++field) {
        const auto column = static_cast<unsigned>(*field);
        if (column >= parts().columns.count()) {
            *field = -1;
        } else if (parts().columns.type(column) == DBFieldTypes::timecode) {
            timecode_field = *field;
        }
    }
    return cmp_fields;
}

void vekdb::sort(int direction, int forceNormal) {
    sortPrepare(direction, forceNormal);
    const unsigned count = parts().rows.count();
    dbrecord** rows = parts().rows.inOneArray();
    const SortItems order = orderOfRecords(rows, count, direction);
    auto before = makeSortRoom<dbrecord*>(count);
    std::copy(rows, rows + count, before.get());
    for (unsigned i = 0; i < count; ++i) rows[i] = before[order[i]];
    if (parts().rows.tagsOnly() != 0) index_tags();
}
