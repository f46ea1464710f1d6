#include <string>
#include <string_view>

#include <vekdb/host/timecode.h>
#include <vekdb/table.h>
#include "vekdb/order/record_compare.h"
#include "vekdb/record/record_access.h"
#include "vekdb/table/shown_value.h"
#include "vekdb/table/table_parts.h"

namespace {

using String = LightweightString<char>;
using Types = DBFieldTypes::eType;

// A value of the source's column as this table's column of its own type holds it.
String convertedValue(const String& value, Types from, Types to) {
    if (from == DBFieldTypes::timecode_s && to == DBFieldTypes::timecode) {
        return time_def(value.c_str(), label_timecode).get_punctuated_str();
    }
    if (from == DBFieldTypes::timecode && to == DBFieldTypes::timecode_s) {
        return time_def(value.c_str(), label_timecode).get_database_str();
    }
    return value;
}

}  // namespace

struct vekdb::ColumnCopy {
    unsigned from;
    unsigned to;
    Types fromType;
    Types toType;
};

int vekdb::merge_all_matching(VDBBase* source) {
    if (source == nullptr) return 0;
    std::vector<ColumnCopy> columns;
    for (unsigned i = 0; i < get_num_fields(); ++i) {
        const unsigned from = source->get_fieldnum(get_fieldname(i));
        if (static_cast<int>(from) < 0) continue;
        columns.push_back({from, i, source->get_field_type(from), get_field_type(i)});
    }
    if (columns.empty()) return 0;
    appendCopies(*source, columns);
    return 1;
}

// The source's rows are counted once: a table that is merged into itself grows meanwhile. Where
// no subclass looks on, the rows are appended at once.
void vekdb::appendCopies(VDBBase& source, const std::vector<ColumnCopy>& columns) {
    const unsigned rows = source.get_num_records();
    const bool atOnce = !mayBeOverridden();
    const unsigned first = atOnce ? add_records(static_cast<int>(rows)) : 0;
    for (unsigned row = 0; row < rows; ++row) {
        const unsigned target = atOnce ? first + row : add_records(1);
        if (static_cast<int>(target) < 0) return;
        for (const ColumnCopy& column : columns) {
            const String value =
                convertedValue(source.getField(row, column.from), column.fromType, column.toType);
            set_field(target, column.to, value.c_str());
        }
    }
}

bool vekdb::fits(const vekdb& source) const {
    const TableParts& mine = parts();
    const TableParts& other = source.parts();
    if (mine.revision != other.revision) return false;
    if (mine.columns.count() != other.columns.count()) return false;
    for (unsigned i = 0; i < mine.columns.count(); ++i) {
        if (mine.columns.type(i) != other.columns.type(i)) return false;
        if (!(mine.columns.name(i) == other.columns.name(i))) return false;
    }
    return true;
}

// The source's rows are counted once, as it may be this table.
unsigned vekdb::add_vekdb(vekdb* source) {
    if (source == nullptr || parts().rows.tagsOnly() != 0 || !fits(*source)) return Rows::none;
    Rows& rows = parts().rows;
    const Rows& others = source->parts().rows;
    const unsigned count = others.count();
    rows.cover(std::uint64_t{rows.count()} + count);
    for (unsigned i = 0; i < count; ++i) {
        dbrecord* record = rows.pool().create(*others.at(i));
        RecordAccess::setOwner(*record, this);
        rows.append(record);
    }
    return count;
}

unsigned vekdb::tag_all_different(int field) {
    constexpr std::size_t mostCompared = 255;
    set_all_tags(0);
    set_show_tags_only(0);
    set_sortfield(field);
    sort(1, 0);
    ShownValue valueOf(*this, mayBeOverridden());
    std::string previous;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        const std::string_view value = valueOf(row, static_cast<unsigned>(field));
        if (compareIgnoringCase(value, previous) == 0) continue;
        set_tag(row, 1);
        previous = value.substr(0, mostCompared);
    }
    return get_num_tags();
}
