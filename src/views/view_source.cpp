#include <vekdb/record.h>
#include "views/view_parts.h"

// Answers to the record-source interface that the source gives, or that a view gives by one of
// its own operations.

namespace {

int viewRow(unsigned row) {
    return static_cast<int>(row);
}

}  // namespace

// The source, when the row is one that can be translated to a row of it.
VDBBase* VDBViewRep::sourceOfRow(unsigned row) const {
    return index().holds(viewRow(row)) ? source() : nullptr;
}

int VDBViewRep::save_text() {
    return saveAsText(parts_->fileName, false);
}

int VDBViewRep::save_tags() {
    return saveOnlyTagged(parts_->fileName);
}

void VDBViewRep::insert_records(unsigned at, int n) {
    insertBlankRecords(viewRow(at), n);
}

void VDBViewRep::delete_records(unsigned first, int n) {
    deleteRecords(viewRow(first), n);
}

unsigned VDBViewRep::delete_tagged_records() {
    removeTagged();
    return 0;
}

unsigned VDBViewRep::get_num_records() const {
    return static_cast<unsigned>(rowCount());
}

unsigned VDBViewRep::get_num_fields() const {
    const VDBBase* from = source();
    return from != nullptr ? from->get_num_fields() : 0;
}

dbrecord* VDBViewRep::get_record(unsigned row) const {
    return (*this)[viewRow(row)];
}

dbrecord* VDBViewRep::make_dummy_record() const {
    const vekdb* bottom = table();
    return bottom != nullptr ? bottom->make_dummy_record() : nullptr;
}

LightweightString<char> VDBViewRep::getField(unsigned row, unsigned field) const {
    const dbrecord* record = get_record(row);
    if (record == nullptr) {
        return {};
    }
    return record->getField(static_cast<unsigned short>(field));
}

const char* VDBViewRep::get_fieldname(unsigned field) const {
    const VDBBase* from = source();
    return from != nullptr ? from->get_fieldname(field) : nullptr;
}

unsigned VDBViewRep::get_fieldsize(unsigned field) const {
    const VDBBase* from = source();
    return from != nullptr ? from->get_fieldsize(field) : 0;
}

DBFieldTypes::eType VDBViewRep::get_field_type(unsigned field) const {
    const VDBBase* from = source();
    return from != nullptr ? from->get_field_type(field) : DBFieldTypes::none;
}

bool VDBViewRep::set_fieldtype(unsigned field, DBFieldTypes::eType type) {
    VDBBase* from = source();
    return from != nullptr && from->set_fieldtype(field, type);
}

unsigned VDBViewRep::get_fieldnum(LightweightString<char> name) const {
    const VDBBase* from = source();
    return from != nullptr ? from->get_fieldnum(name) : 0;
}

bool VDBViewRep::set_fieldname(unsigned field, const char* name) {
    VDBBase* from = source();
    return from != nullptr && from->set_fieldname(field, name);
}

void VDBViewRep::set_filename(LightweightString<wchar_t> name) {
    fileName(name);
}

LightweightString<wchar_t> VDBViewRep::get_filename() const {
    return parts_->fileName;
}

void VDBViewRep::set_sortfield(int field) {
    if (VDBBase* from = source()) {
        from->set_sortfield(field);
    }
}

void VDBViewRep::set_sortfields(int* fields) {
    if (VDBBase* from = source()) {
        from->set_sortfields(fields);
    }
}

void VDBViewRep::set_sort_offset(int offset) {
    if (VDBBase* from = source()) {
        from->set_sort_offset(offset);
    }
}

void VDBViewRep::set_show_tags_only(unsigned) {
    removeNonTagged();
}

unsigned VDBViewRep::get_show_tags_only() const {
    return 0;
}

void VDBViewRep::set_query(dbrecord* query) {
    if (VDBBase* from = source()) {
        from->set_query(query);
    }
}

bool VDBViewRep::set_field(unsigned row, const Cookie& cookie) {
    VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->set_field(index().sourceRow(viewRow(row)), cookie);
}

bool VDBViewRep::set_field(unsigned row, unsigned field, const char* text) {
    VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->set_field(index().sourceRow(viewRow(row)), field, text);
}

bool VDBViewRep::set_field(unsigned row, unsigned field, int value) {
    VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->set_field(index().sourceRow(viewRow(row)), field, value);
}

bool VDBViewRep::set_field(unsigned row, unsigned field, double value) {
    VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->set_field(index().sourceRow(viewRow(row)), field, value);
}

bool VDBViewRep::set_field(unsigned row, unsigned field, bool value) {
    VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->set_field(index().sourceRow(viewRow(row)), field, value);
}

bool VDBViewRep::in_field(unsigned row, unsigned field, char* buffer, int length) const {
    const VDBBase* from = sourceOfRow(row);
    return from != nullptr &&
           from->in_field(index().sourceRow(viewRow(row)), field, buffer, length);
}

bool VDBViewRep::in_field(unsigned row, unsigned field, int& value) const {
    const VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->in_field(index().sourceRow(viewRow(row)), field, value);
}

bool VDBViewRep::in_field(unsigned row, unsigned field, double& value) const {
    const VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->in_field(index().sourceRow(viewRow(row)), field, value);
}

bool VDBViewRep::in_field(unsigned row, unsigned field, bool& value) const {
    const VDBBase* from = sourceOfRow(row);
    return from != nullptr && from->in_field(index().sourceRow(viewRow(row)), field, value);
}

unsigned VDBViewRep::add_records(int n) {
    const int before = rowCount();
    insertBlankRecords(before, n);
    return static_cast<unsigned>(before);
}

unsigned VDBViewRep::add_param(const char* name, const char* value) {
    return set_param_val(name, value);
}

unsigned VDBViewRep::set_param_val(const char* name, const char* value) {
    const LightweightString<char> text(value);
    parts_->params[LightweightString<char>(name)] = text;
    return 0;
}

const char* VDBViewRep::get_param_val(const char* name) {
    return parts_->params[LightweightString<char>(name)].c_str();
}

unsigned VDBViewRep::findFirst(const char* field, const char* value, int prefixLength) {
    VDBBase* from = source();
    return from != nullptr ? from->findFirst(field, value, prefixLength) : 0;
}

int* VDBViewRep::sortPrepare(int direction, int forceNormal) {
    VDBBase* from = source();
    return from != nullptr ? from->sortPrepare(direction, forceNormal) : nullptr;
}

unsigned VDBViewRep::match_record(int row) const {
    const VDBBase* from = source();
    return from != nullptr ? from->match_record(row) : 0;
}

unsigned VDBViewRep::baseIndex(unsigned row) const {
    const VDBBase* from = sourceOfRow(row);
    return from != nullptr ? from->baseIndex(index().sourceRow(viewRow(row))) : 0;
}

bool VDBViewRep::get_valid() const {
    const VDBBase* from = source();
    return from != nullptr && from->get_valid();
}
