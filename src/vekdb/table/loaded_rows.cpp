#include "vekdb/table/loaded_rows.h"

#include <vekdb/table.h>
#include "vekdb/lines/record_loader.h"
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_parts.h"

LoadedRows::~LoadedRows() {
    parts_.rows.pool().destroy(open_);
}

unsigned LoadedRows::readFrom(RecordLines& lines, bool skipFirst, int most) {
    if (parts_.rows.count() >= parts_.rows.capacity() || most < 1) return 0;
    RecordLoader loader(lines, *this, parts_.columns.count(), skipFirst);
    return loader.load(static_cast<unsigned>(most));
}

dbrecord& LoadedRows::first() {
    if (open_ == nullptr) {
        open_ = parts_.rows.pool().create(0);
        RecordAccess::setOwner(*open_, &table_);
    }
    return *open_;
}

// Takes the next slot, and as many more as it takes for one to be free.
dbrecord& LoadedRows::take(dbrecord& read) {
    if (!sieve_.takes(read)) return read;
    Rows& rows = parts_.rows;
    rows.append(&read);
    open_ = nullptr;
    rows.cover(std::uint64_t{rows.count()} + 1);
    return first();
}

void LoadedRows::expect(std::size_t more) {
    parts_.rows.expect(more);
}

void LoadedRows::refuse(unsigned records) {
    table_.fill_error_info(1, static_cast<int>(records), 0, 0);
}
