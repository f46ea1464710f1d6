#include <typeinfo>

#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include <vekdb/record.h>
#include "host/lines_to_save.h"
#include "views/view_parts.h"

namespace {

void appendParam(TextFile& file, const AssocListEntry& param) {
    LightweightString<char> line("\"");
    line += param.name;
    line += ":";
    line += param.value;
    line += "\"";
    file.appendLine(line);
}

}  // namespace

bool VDBViewRep::othersMayRun() const {
    return typeid(*this) != typeid(VDBViewRep) || plainTable() == nullptr;
}

// Everything that comes before the rows. False when there is nothing to save, or nowhere.
bool VDBViewRep::appendHead(TextFile& file, const LightweightString<wchar_t>& name) const {
    const vekdb* bottom = table();
    if (source() == nullptr || bottom == nullptr || name.empty()) {
        return false;
    }
    for (AssocListIter param(parts_->params); param; ++param) {
        appendParam(file, *param);
    }
    bottom->save_column_header(file, false);
    return true;
}

// Rows are written from copies, as their column "Tag" gets the view's own tag.
int VDBViewRep::writeRows(TextFile& file) const {
    const int tagColumn = static_cast<int>(get_fieldnum("Tag"));
    int written = 0;
    for (int i = 0; i < rowCount(); ++i) {
        const dbrecord* record = (*this)[i];
        if (record == nullptr) {
            continue;
        }
        dbrecord row(*record);
        if (tagColumn >= 0) {
            row.set_field(tagColumn, index().tag(i));
        }
        if (row.write(file) == 0) {
            break;
        }
        ++written;
    }
    return written;
}

int VDBViewRep::writeTaggedRecords(TextFile& file) const {
    for (int i = 0; i < rowCount(); ++i) {
        const dbrecord* record = (*this)[i];
        if (record != nullptr && record->get_tag() != 0 && record->write(file) == 0) {
            return i;
        }
    }
    return rowCount();
}

int VDBViewRep::saveAsText(LightweightString<wchar_t> name, bool headerOnly) {
    TextFile file;
    if (!appendHead(file, name)) {
        return 0;
    }
    LinesToSave lines(file, name, othersMayRun());
    const int written = headerOnly ? 0 : writeRows(file);
    return lines.end() ? written : 0;
}

int VDBViewRep::saveAsText(const char* name, bool headerOnly) {
    return saveAsText(fromUTF8(name), headerOnly);
}

int VDBViewRep::saveOnlyTagged(LightweightString<wchar_t> name) {
    TextFile file;
    if (!appendHead(file, name)) {
        return 0;
    }
    LinesToSave lines(file, name, othersMayRun());
    const int looked = writeTaggedRecords(file);
    return lines.end() ? looked : 0;
}

int VDBViewRep::saveOnlyTagged(const char* name) {
    return saveOnlyTagged(fromUTF8(name));
}
