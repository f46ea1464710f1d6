#include <algorithm>
#include <string>
#include <string_view>
#include <typeinfo>

#include <vekdb/host/text_util.h>
#include <vekdb/host/timecode.h>
#include <vekdb/row_copies.h>
#include <vekdb/table.h>
#include "vekdb/order/record_compare.h"
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_access.h"
#include "vekdb/record/value_copies.h"
#include "vekdb/table/shown_value.h"
#include "vekdb/table/table_parts.h"

namespace {

using String = LightweightString<char>;
using Types = DBFieldTypes::eType;

using Form = char[time_def::maxForm];

// A value of the source's column as this table's column of its own type holds it; written to the
// buffer where it is another text.
std::string_view convertedValue(std::string_view value, Types from, Types to, Form& buffer) {
    if (from == DBFieldTypes::timecode_s && to == DBFieldTypes::timecode) {
        return time_def::punctuatedForm(value, buffer);
    }
    if (from == DBFieldTypes::timecode && to == DBFieldTypes::timecode_s) {
        return time_def::databaseForm(value, buffer);
    }
    return value;
}

bool isConverted(Types from, Types to) {
    return (from == DBFieldTypes::timecode_s && to == DBFieldTypes::timecode) ||
           (from == DBFieldTypes::timecode && to == DBFieldTypes::timecode_s);
}

std::string_view upToNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// Values that stand as they were quoted have no white space in front and no NUL.
bool isPlainlyQuoted(const dbrecord& row) {
    const LineSlices* slices = RecordAccess::slices(row);
    return slices != nullptr && slices->gap() == LineSlices::quotedGap;
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

// Where no subclass looks on, values are taken from record to record.
void vekdb::appendCopies(VDBBase& source, const std::vector<ColumnCopy>& columns) {
    if (!mayBeOverridden() && typeid(source) == typeid(vekdb)) {
        return appendRecords(static_cast<const vekdb&>(source), columns);
    }
    // The source's rows are counted once: a table that is merged into itself grows meanwhile.
    const unsigned rows = source.get_num_records();
    const bool atOnce = !mayBeOverridden();
    const unsigned first = atOnce ? add_records(static_cast<int>(rows)) : 0;
    for (unsigned row = 0; row < rows; ++row) {
        const unsigned target = atOnce ? first + row : add_records(1);
        if (static_cast<int>(target) < 0) return;
        for (const ColumnCopy& column : columns) {
            const String value = source.getField(row, column.from);
            Form buffer;
            const String converted(
                convertedValue(value.c_str(), column.fromType, column.toType, buffer));
            set_field(target, column.to, converted.c_str());
        }
    }
}

/// Appends rows of a table to another one as `set_field` would store their values.
class vekdb::RecordMerger {
public:
    RecordMerger(vekdb& table, const std::vector<ColumnCopy>& columns)
        : columns_(columns),
          copies_(table),
          theirs_(columnsRead(columns)),
          values_(table.get_num_fields()),
          forms_(columns.size()),
          isTogether_(standTogether(columns)),
          table_(table) {
        pickValues();
    }

    bool append(const dbrecord& row) {
        const bool isPlain = isPlainlyQuoted(row);
        if (isPlain && isTogether_) {
            return copies_.append(row, static_cast<unsigned>(columns_.size()));
        }
        if (isPlain && !picked_.empty()) return appendPicked(row);
        row.fieldViews(theirs_.data(), static_cast<unsigned>(theirs_.size()));
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            values_[columns_[i].to] = isPlain ? converted(theirs_[columns_[i].from], i) : stored(i);
        }
        return copies_.append(values_.data(), values_.size());
    }

private:
    struct Buffer {
        Form form;
    };

    // For each of our columns the one of theirs, where none is copied twice or in another form.
    void pickValues() {
        std::vector<unsigned> picked(table_.get_num_fields(), ColumnList::none);
        std::vector<char> isTaken(theirs_.size());
        for (const ColumnCopy& column : columns_) {
            if (isConverted(column.fromType, column.toType) || isTaken[column.from]++) return;
            picked[column.to] = column.from;
        }
        picked_ = std::move(picked);
    }

    bool appendPicked(const dbrecord& row) {
        Rows& rows = table_.parts().rows;
        if (rows.tagsOnly() != 0) return false;
        rows.cover(std::uint64_t{rows.count()} + 1);
        dbrecord* const record = table_.newRow();
        rows.append(record);
        const auto columns = static_cast<unsigned short>(picked_.size());
        if (!picks_.givePicked(*record, row, picked_.data(), columns)) giveViews(*record, row);
        RecordAccess::widen(*record, columns);
        return true;
    }

    void giveViews(dbrecord& record, const dbrecord& row) {
        for (std::size_t i = 0; i < picked_.size(); ++i) {
            values_[i] = RecordAccess::view(row, picked_[i]);
        }
        picks_.give(record, values_.data(), static_cast<unsigned>(values_.size()));
    }

    // Whether both have the columns as they are at the same places, from the first on.
    static bool standTogether(const std::vector<ColumnCopy>& columns) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const ColumnCopy& column = columns[i];
            if (column.from != i || column.to != i) return false;
            if (isConverted(column.fromType, column.toType)) return false;
        }
        return true;
    }

    // The columns up to the last one that is copied.
    static std::size_t columnsRead(const std::vector<ColumnCopy>& columns) {
        std::size_t count = 0;
        for (const ColumnCopy& column : columns) {
            count = std::max(count, std::size_t{column.from} + 1);
        }
        return count;
    }

    std::string_view converted(std::string_view value, std::size_t i) {
        const ColumnCopy& column = columns_[i];
        if (!isConverted(column.fromType, column.toType)) return value;
        return convertedValue(value, column.fromType, column.toType, forms_[i].form);
    }

    // A text ends at its first NUL, and is stored without leading white space.
    std::string_view stored(std::size_t i) {
        return withoutLeadingSpace(converted(upToNul(theirs_[columns_[i].from]), i));
    }

    const std::vector<ColumnCopy>& columns_;
    RowCopies copies_;
    std::vector<std::string_view> theirs_;
    std::vector<std::string_view> values_;
    std::vector<Buffer> forms_;
    bool isTogether_;
    vekdb& table_;
    ValueCopies picks_;
    std::vector<unsigned> picked_;
};

// The rows are counted once, as they may be this table's own.
void vekdb::appendRecords(const vekdb& source, const std::vector<ColumnCopy>& columns) {
    RecordMerger merger(*this, columns);
    const dbrecord none(0);
    Rows& rows = parts().rows;
    const Rows& others = source.parts().rows;
    const unsigned count = others.shownCount();
    rows.cover(std::uint64_t{rows.count()} + count);
    for (unsigned i = 0; i < count; ++i) {
        const dbrecord* row = others.shown(i);
        if (!merger.append(row == nullptr ? none : *row)) return;
        RecordAccess::setChanged(*rows.at(rows.count() - 1), true);
        parts().modified = true;
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
