#include "vekdb/table/loaded_header.h"

#include <algorithm>

#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

void LoadedHeader::beginParameters() {
    parts_.parameters.clear();
}

void LoadedHeader::addParameter(std::string_view name, std::string_view value) {
    parts_.parameters.append(name, value);
}

void LoadedHeader::setRevision(int revision) {
    parts_.revision = revision;
}

unsigned LoadedHeader::announceColumns(std::size_t count) {
    const auto columns = static_cast<unsigned>(std::min<std::size_t>(count, ColumnList::most));
    parts_.columns.setCount(columns);
    return columns;
}

void LoadedHeader::makeColumns() {
    parts_.columns.makePlaces();
}

void LoadedHeader::setType(unsigned column, DBFieldTypes::eType type) {
    table_.set_fieldtype(column, type);
}

void LoadedHeader::guessType(unsigned column, bool holdsTimecodes) {
    if (!holdsTimecodes) {
        parts_.columns.setType(column, DBFieldTypes::text);
        return;
    }
    table_.set_fieldtype(column, DBFieldTypes::timecode);
}

void LoadedHeader::endTypes() {
    parts_.valid = true;
}

void LoadedHeader::setName(unsigned column, const char* name) {
    table_.set_fieldname(column, name);
}

void LoadedHeader::refuse(int line) {
    table_.fill_error_info(3, line, 0, 0);
}
