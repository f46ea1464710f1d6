#include <cstring>
#include <utility>

#include <vekdb/host/cookie.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

namespace {

// Records take 16-bit positions; no column lies further.
bool inRecord(unsigned field) {
    return field <= ColumnList::most;
}

}  // namespace

bool vekdb::set_field(unsigned row, unsigned field, const char* text) {
    dbrecord* record = get_record(row);
    return record != nullptr && inRecord(field) &&
           record->set_field(static_cast<int>(field), text, true);
}

bool vekdb::set_field(unsigned row, unsigned field, int value) {
    dbrecord* record = get_record(row);
    return record != nullptr && inRecord(field) &&
           record->set_field(static_cast<int>(field), value);
}

bool vekdb::set_field(unsigned row, unsigned field, double value) {
    dbrecord* record = get_record(row);
    return record != nullptr && inRecord(field) &&
           record->set_field(static_cast<int>(field), value);
}

bool vekdb::set_field(unsigned row, unsigned field, bool value) {
    dbrecord* record = get_record(row);
    return record != nullptr && inRecord(field) &&
           record->set_field(static_cast<int>(field), value);
}

bool vekdb::setField(unsigned row, unsigned field, LightweightString<char> value) {
    dbrecord* record = get_record(row);
    return record != nullptr && inRecord(field) &&
           record->setField(static_cast<unsigned short>(field), std::move(value));
}

bool vekdb::set_field(unsigned row, const Cookie& cookie) {
    dbrecord* record = get_record(row);
    if (record == nullptr) return false;
    unsigned field = get_fieldnum("cookie");
    if (!inRecord(field)) return false;
    parts().cookieRows.expectOneMore();
    bool stored = record->setField(static_cast<unsigned short>(field), cookie.asString(false));
    parts().cookieRows.replace(cookie.uuid, row);
    return stored;
}

LightweightString<char> vekdb::getField(unsigned row, unsigned field) const {
    const dbrecord* record = get_record(row);
    if (record == nullptr || !inRecord(field)) return nullptr;
    return record->getField(static_cast<unsigned short>(field));
}

bool vekdb::in_field(unsigned row, unsigned field, char* buffer, int length) const {
    LightweightString<char> value = getField(row, field);
    if (value.empty() || buffer == nullptr || length < 0) return false;
    std::strncpy(buffer, value.c_str(), static_cast<std::size_t>(length));
    buffer[length] = '\0';
    return true;
}

bool vekdb::in_field(unsigned row, unsigned field, int& value) const {
    LightweightString<char> text = getField(row, field);
    if (text.empty()) return false;
    value = parseInt(text.view());
    return true;
}

bool vekdb::in_field(unsigned row, unsigned field, double& value) const {
    LightweightString<char> text = getField(row, field);
    if (text.empty()) return false;
    value = parseDouble(text.view());
    return true;
}

bool vekdb::in_field(unsigned row, unsigned field, bool& value) const {
    LightweightString<char> text = getField(row, field);
    if (text.empty()) return false;
    value = text.c_str()[0] == 't';
    return true;
}
