#include <cstdint>
#include <cstring>

#include <vekdb/host/config.h>
#include <vekdb/table.h>
#include "vekdb/columns/display_widths.h"
#include "vekdb/record/record_access.h"
#include "vekdb/rows/field_sizes.h"
#include "vekdb/table/table_parts.h"

namespace {

bool ampersandsAreRemoved() {
    static const bool removed =
        config_int("remove_fieldname_ampersands", 1, INT32_MIN, INT32_MAX) != 0;
    return removed;
}

}  // namespace

unsigned vekdb::get_num_fields() const {
    return parts().columns.count();
}

const char* vekdb::get_fieldname(unsigned field) const {
    return parts().columns.name(field).c_str();
}

unsigned vekdb::get_fieldsize(unsigned field) const {
    if (field >= parts().columns.count()) return 0;
    if (parts().knownSizes != nullptr) return (*parts().knownSizes)[field];
    return longestValue(parts().rows, field);
}

DBFieldTypes::eType vekdb::get_field_type(unsigned field) const {
    return parts().columns.type(field);
}

unsigned vekdb::get_fieldnum(LightweightString<char> name) const {
    return parts().columns.find(name.view());
}

bool vekdb::set_fieldname(unsigned field, const char* name) {
    const bool removed = ampersandsAreRemoved();
    if (field >= parts().columns.count()) return false;
    if (name != nullptr && removed && std::strchr(name, '&') != nullptr) {
        return parts().columns.setName(field, strip_char_from_string('&', name));
    }
    return parts().columns.setName(field, name);
}

bool vekdb::set_fieldtype(unsigned field, DBFieldTypes::eType type) {
    if (type == DBFieldTypes::none) {
        fill_error_info(2, 3, 0, 0);
        type = DBFieldTypes::text;
    }
    return parts().columns.setType(field, type);
}

void vekdb::setFieldWidth(unsigned, int) {}

bool vekdb::isSpecialLabelField(unsigned long field) const {
    return field < parts().columns.count() &&
           parts().columns.isSpecialName(static_cast<unsigned>(field));
}

unsigned vekdb::addField(const DBFieldDesc& field) {
    return addFields({field}).front();
}

// Where memory ends among the columns, the rows have all that are there.
std::vector<unsigned> vekdb::addFields(const std::vector<DBFieldDesc>& fields) {
    std::vector<unsigned> places;
    places.reserve(fields.size());
    const unsigned before = get_num_fields();
    try {
        for (const DBFieldDesc& field : fields) places.push_back(placeOfField(field));
    } catch (...) {
        resizeRecords();
        throw;
    }
    if (get_num_fields() != before) resizeRecords();
    return places;
}

// The rows do not have the column yet.
unsigned vekdb::placeOfField(const DBFieldDesc& field) {
    const unsigned existing = get_fieldnum(field.name);
    if (existing != ColumnList::none) return existing;
    ColumnList& columns = parts().columns;
    if (columns.count() >= ColumnList::most) return ColumnList::none;
    columns.append(field);
    return columns.count() - 1;
}

void vekdb::resizeRecords() {
    const int unread = 0;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        dbrecord* record = get_record(row);
        if (record == nullptr) continue;
        record->resizeRecord(static_cast<int>(parts().columns.count()), &unread, false);
    }
}

// Where memory runs out, it does so before anything was removed.
void vekdb::removeField(const LightweightString<char>& name) {
    unsigned removed = get_fieldnum(name);
    if (removed == ColumnList::none || removed >= parts().columns.count()) return;
    const Rows& rows = parts().rows;
    for (unsigned row = 0; row < rows.shownCount(); ++row) {
        dbrecord* record = rows.shown(row);
        if (record != nullptr) RecordAccess::prepareRemoval(*record, removed);
    }
    parts().columns.remove(removed);
    for (unsigned row = 0; row < parts().rows.count(); ++row) {
        dbrecord* record = get_record(row);
        if (record != nullptr) record->removeField(static_cast<unsigned short>(removed));
    }
}

bool vekdb::sameColumns(const vekdb* other) const {
    if (other == nullptr || get_num_fields() != other->get_num_fields()) return false;
    for (unsigned i = 0; i < get_num_fields(); ++i) {
        if (std::strcmp(get_fieldname(i), other->get_fieldname(i)) != 0) return false;
    }
    return true;
}

std::int32_t vekdb::getMinFieldSize(const char* name) {
    return minimumDisplayWidth(name);
}
