#include <vekdb/vdb_base.h>

#include "host/decimal_text.h"

bool VDBBase::set_field(unsigned row, unsigned field, std::string_view text) {
    if (text.find('\0') != text.npos) return false;
    return set_field(row, field, LightweightString<char>(text).c_str());
}

bool VDBBase::set_field(unsigned row, unsigned field, unsigned int value) {
    return set_field(row, field, DecimalText(value).c_str());
}

bool VDBBase::set_field(unsigned row, unsigned field, long value) {
    return set_field(row, field, DecimalText(value).c_str());
}

bool VDBBase::set_field(unsigned row, unsigned field, unsigned long value) {
    return set_field(row, field, DecimalText(value).c_str());
}

bool VDBBase::set_field(unsigned row, unsigned field, long long value) {
    return set_field(row, field, DecimalText(value).c_str());
}

bool VDBBase::set_field(unsigned row, unsigned field, unsigned long long value) {
    return set_field(row, field, DecimalText(value).c_str());
}
