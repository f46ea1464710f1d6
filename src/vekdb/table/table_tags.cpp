#include <vekdb/table.h>
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_parts.h"

void vekdb::set_tag(unsigned row, int value) {
    dbrecord* record = get_record(row);
    if (record != nullptr) RecordAccess::setTag(*record, static_cast<unsigned>(value));
}

void vekdb::invert_tag(unsigned row) {
    dbrecord* record = get_record(row);
    if (record != nullptr) RecordAccess::setTag(*record, record->get_tag() == 0);
}

unsigned vekdb::get_tag(unsigned row) const {
    const dbrecord* record = get_record(row);
    return record == nullptr ? Rows::none : record->get_tag();
}

void vekdb::set_all_tags(int value) {
    for (unsigned row = 0; row < parts().rows.count(); ++row) {
        set_tag(row, value);
    }
}

void vekdb::invert_all_tags() {
    const Rows& rows = parts().rows;
    for (unsigned i = 0; i < rows.count(); ++i) {
        RecordAccess::setTag(*rows.at(i), rows.at(i)->get_tag() == 0);
    }
}

unsigned vekdb::get_num_tags() const {
    unsigned tagged = 0;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        if (get_tag(row) != 0) ++tagged;
    }
    return tagged;
}

void vekdb::set_show_tags_only(unsigned flag) {
    if (flag != 0) index_tags();
    parts().rows.setTagsOnly(flag);
}

unsigned vekdb::get_show_tags_only() const { return parts().rows.tagsOnly(); }

void vekdb::index_tags() { parts().rows.indexTags(); }
