#include <ctime>

#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

// A constructor that fails after this one has run is followed by the destructor, which
// releases what was built.
vekdb::vekdb() : parts_(new TableParts) {}

namespace {

unsigned countDescriptors(const DBFieldDesc* fields) {
    unsigned count = 0;
    while (fields != nullptr && fields[count].type != DBFieldTypes::none) ++count;
    return count;
}

}  // namespace

vekdb::vekdb(const DBFieldDesc* fields) : vekdb() {
    buildColumns(fields, countDescriptors(fields));
}

vekdb::vekdb(const std::vector<DBFieldDesc>& fields) : vekdb() {
    buildColumns(fields.data(), fields.size());
}

vekdb::vekdb(LightweightString<wchar_t> fileName, int maxRecords, bool requireMagic) : vekdb() {
    parts().fileName = fileName;
    loadFromFile(maxRecords, requireMagic);
}

vekdb::vekdb(const vekdb& source, int withRecords) : vekdb() {
    copyColumns(source);
    copyParameters(source);
    post_init();
    if (withRecords != 0) copyRows(source);
    parts().valid = true;
}

vekdb::vekdb(const vekdb& source, DBFieldDesc*) : vekdb() {
    copyColumns(source);
    post_init();
    copyRows(source);
    parts().valid = true;
}

vekdb::~vekdb() {
    free();
    delete parts_;
}

void vekdb::buildColumns(const DBFieldDesc* fields, std::size_t count) {
    ColumnList& columns = parts().columns;
    columns.setCount(static_cast<unsigned>(count < ColumnList::most ? count : ColumnList::most));
    columns.makePlaces();
    for (unsigned i = 0; i < columns.count(); ++i) {
        set_fieldname(i, fields[i].name.c_str());
        set_fieldtype(i, fields[i].type);
    }
    parts().valid = true;
    post_init();
}

void vekdb::copyColumns(const vekdb& source) {
    parts().revision = source.parts().revision;
    parts().columns.copyFrom(source.parts().columns);
}

// The first parameter makes the revision parameter, and is itself refused where it is the
// revision; the second call finds it and gives it the source's value.
void vekdb::copyParameters(const vekdb& source) {
    const Parameters& parameters = source.parts().parameters;
    for (unsigned i = 0; i < parameters.count(); ++i) {
        if (add_param(parameters.name(i), parameters.value(i)) != 0) {
            add_param(parameters.name(i), parameters.value(i));
        }
    }
}

void vekdb::copyRows(const vekdb& source) {
    Rows& rows = parts().rows;
    unsigned count = source.get_num_records();
    for (unsigned i = 0; i < count; ++i) {
        const dbrecord* record = source.get_record(i);
        if (record == nullptr) continue;
        rows.cover(std::uint64_t{rows.count()} + 1);
        rows.append(rows.pool().create(*record));
    }
}

void vekdb::init() {
    TableParts& table = parts();
    table.valid = false;
    table.loadedWhole = false;
    table.readError = 0;
    table.columns.setCount(0);
    table.rows.release();
    table.rangeKeys.forget();
    table.parameters.clear();
    table.errorSet = false;
    table.modified = false;
    table.updates.reset();
    table.revision = 1;
}

void vekdb::post_init() {
    parts().created = std::time(nullptr);
    parts().rows.cover(Rows::chunk);
    set_sortfield(0);
    set_sort_offset(0);
    parts().columns.flagSpecialLabels();
}

void vekdb::add_chunk() {
    parts().rows.addChunk();
}

void vekdb::free() {
    TableParts& table = parts();
    table.columns.clear();
    table.cookieRows.clear();
    table.query.reset();
    table.sort.reset();
    init();
}

void vekdb::fill_error_info(int a, int b, int c, int d) {
    parts().error = {{a, b, c, d}};
    parts().errorSet = true;
}

bool vekdb::read_error_info(dberror& out) const {
    if (!parts().errorSet) return false;
    out = parts().error;
    return true;
}

bool vekdb::get_valid() const {
    return parts().valid;
}
bool vekdb::get_modified() const {
    return parts().modified;
}
bool vekdb::get_loaded_whole() const {
    return parts().loadedWhole;
}
int vekdb::get_read_error() const {
    return parts().readError;
}
unsigned vekdb::get_capacity() const {
    return parts().rows.capacity();
}
int vekdb::get_revision() const {
    return parts().revision;
}
unsigned vekdb::get_update_depth() const {
    return parts().updates.depth();
}
std::time_t vekdb::get_creation_time() const {
    return parts().created;
}
std::time_t vekdb::get_modification_time() const {
    return parts().modificationTime;
}

void vekdb::set_filename(LightweightString<wchar_t> name) {
    parts().fileName = name;
}
LightweightString<wchar_t> vekdb::get_filename() const {
    return parts().fileName;
}
