#include <vector>

#include <vekdb/host/grow_string.h>
#include <vekdb/table.h>
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_parts.h"

unsigned vekdb::get_num_records() const {
    return parts().rows.shownCount();
}
dbrecord* vekdb::get_record(unsigned row) const {
    return parts().rows.shown(row);
}
unsigned vekdb::get_new_row(unsigned raw) const {
    return parts().rows.newRow(raw);
}
unsigned vekdb::get_raw_row(unsigned shown) const {
    return parts().rows.rawRow(shown);
}

dbrecord* vekdb::newRow() {
    dbrecord* record =
        parts().rows.pool().create(static_cast<unsigned short>(parts().columns.count()));
    RecordAccess::setOwner(*record, this);
    return record;
}

unsigned vekdb::add_records(int n) {
    Rows& rows = parts().rows;
    if (rows.tagsOnly() != 0) return Rows::none;
    unsigned first = rows.count();
    if (n < 1) return first;
    rows.cover(std::uint64_t{first} + static_cast<unsigned>(n));
    for (int i = 0; i < n; ++i) {
        rows.append(newRow());
    }
    return first;
}

void vekdb::insert_records(unsigned at, int n) {
    Rows& rows = parts().rows;
    if (rows.tagsOnly() != 0) return;
    if (n < 1) return parts().cookieRows.clear();
    rows.cover(std::uint64_t{rows.count()} + static_cast<unsigned>(n));
    std::vector<dbrecord*> made(static_cast<std::size_t>(n));
    std::size_t ready = 0;
    try {
        for (; ready < made.size(); ++ready) made[ready] = newRow();
    } catch (...) {
        while (ready > 0) rows.pool().destroy(made[--ready]);
        throw;
    }
    rows.insert(at < rows.count() ? at : rows.count(), made.data(), static_cast<unsigned>(n));
    parts().cookieRows.clear();
}

// The numbers are noted before anything goes, so that a failure leaves the rows as they were.
void vekdb::delete_records(unsigned first, int n) {
    Rows& rows = parts().rows;
    if (rows.tagsOnly() != 0 || first >= rows.count()) return;
    if (n < 1) return parts().cookieRows.clear();
    unsigned count = rows.count() - first;
    if (static_cast<unsigned>(n) < count) count = static_cast<unsigned>(n);

    const bool heard = isDeletionHeard();
    RowNumbers deleted;
    if (heard) deleted.appendRun(static_cast<int>(first), static_cast<int>(count));
    rows.erase(first, count);
    parts().cookieRows.clear();
    heard ? tellDeleted(deleted) : recordChanged();
}

unsigned vekdb::delete_tagged_records() {
    if (parts().rows.tagsOnly() != 0) return Rows::none;
    const SourceRef<vekdb> table(this);  // null when a listener let go of it
    unsigned total = 0;
    unsigned start = Rows::none;  // of the run of tagged rows that is open
    unsigned row = 0;
    for (; row < get_num_records(); ++row) {
        if (get_tag(row) == 1) {
            if (start == Rows::none) start = row;
        } else if (start != Rows::none) {
            delete_records(start, static_cast<int>(row - start));
            total += row - start;
            if (table.get() == nullptr) return total;
            row = start;  // the row that ended the run stands here now
            start = Rows::none;
        }
    }
    if (start != Rows::none) {
        delete_records(start, static_cast<int>(row - start));
        total += row - start;
    }
    return total;
}

void vekdb::copy_record(unsigned row, vekdb* source, unsigned sourceRow) {
    const dbrecord* record = source == nullptr ? nullptr : source->get_record(sourceRow);
    if (record == nullptr) return;
    dbrecord temporary(*record);
    copy_record(row, &temporary);
}

void vekdb::copy_record(unsigned row, const dbrecord* source) {
    dbrecord* target = get_record(row);
    if (source == nullptr || target == nullptr) return;
    *target = *source;
}

dbrecord* vekdb::make_dummy_record() const {
    return new dbrecord(static_cast<unsigned short>(parts().columns.count()));
}

unsigned vekdb::clear_changed() {
    const Rows& rows = parts().rows;
    for (unsigned i = 0; i < rows.count(); ++i) {
        RecordAccess::setChanged(*rows.at(i), false);
    }
    parts().modified = false;
    return rows.count();
}
