#include <algorithm>
#include <string>

#include <vekdb/column_sizes.h>
#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include "host/decimal_text.h"
#include "host/lines_to_save.h"
#include "vekdb/lines/table_text.h"
#include "vekdb/record/record_access.h"
#include "vekdb/table/table_parts.h"

namespace {

constexpr std::size_t longestEntry = 254;  // its quotes and comma included

// A line with one quoted entry a column.
class HeaderLine {
public:
    explicit HeaderLine(unsigned columns) : left_(columns) {}

    void add(std::string_view entry) {
        const std::string_view end = --left_ > 0 ? "\"," : "\"";
        text_ += '"';
        text_ += entry.substr(0, longestEntry - 1 - end.size());
        text_ += end;
    }
    std::string_view text() const { return text_; }

private:
    unsigned left_;
    std::string text_;
};

// Most types have a name; the others are written as their letter.
std::string typeEntry(DBFieldTypes::eType type) {
    if (const char* name = vekdb_fieldtype_to_string(type)) return name;
    const char letter = static_cast<char>(type);
    return letter == '\0' ? std::string() : std::string(1, letter);
}

void appendTypes(TextFile& file, const ColumnList& columns) {
    HeaderLine types(columns.count());
    for (unsigned i = 0; i < columns.count(); ++i) {
        types.add(typeEntry(columns.type(i)));
    }
    file.appendLine(types.text());
}

void appendNames(TextFile& file, const ColumnList& columns) {
    HeaderLine names(columns.count());
    for (unsigned i = 0; i < columns.count(); ++i) {
        names.add(columns.name(i).view());
    }
    file.appendLine(names.text());
}

void appendWidths(TextFile& file, const vekdb& table, unsigned columns) {
    HeaderLine widths(columns);
    for (unsigned i = 0; i < columns; ++i) {
        const auto least = static_cast<unsigned>(vekdb::getMinFieldSize(table.get_fieldname(i)));
        widths.add(std::to_string(std::max(least, table.get_fieldsize(i))));
    }
    file.appendLine(widths.text());
}

// Storing tags for a save is no modification of the table.
class KeepModified {
public:
    explicit KeepModified(TableParts& parts) : parts_(parts), modified_(parts.modified) {}
    ~KeepModified() { parts_.modified = modified_; }
    KeepModified(const KeepModified&) = delete;
    KeepModified& operator=(const KeepModified&) = delete;

private:
    TableParts& parts_;
    bool modified_;
};

// Stores the tag of one row after the other as text, through the table where the row is shown.
class TagStore {
public:
    TagStore(vekdb& table, const Rows& rows, bool mayBeOverridden)
        : table_(table), rows_(rows), mayBeOverridden_(mayBeOverridden) {}

    void store(dbrecord& record, unsigned column) {
        const bool isShown = rows_.shown(shown_) == &record;
        const unsigned row = isShown ? shown_++ : Rows::none;
        if (column == ColumnList::none) return;
        const DecimalText text(record.get_tag());
        if (isStored(record, column, text)) return;
        if (isShown) {
            table_.set_field(row, column, text.c_str());
        } else {
            record.set_field(static_cast<int>(column), text.c_str());
        }
    }

private:
    // Storing what is there marks the record and its table as changed, which a save takes back.
    bool isStored(const dbrecord& record, unsigned column, const DecimalText& text) const {
        return !mayBeOverridden_ && RecordAccess::owner(record) == &table_ &&
               RecordAccess::view(record, column) == text.c_str();
    }

    vekdb& table_;
    const Rows& rows_;
    const bool mayBeOverridden_;
    unsigned shown_ = 0;
};

}  // namespace

void vekdb::save_params(TextFile& file) const {
    const Parameters& parameters = parts().parameters;
    for (unsigned i = 0; i < parameters.count(); ++i) {
        appendParameter(file, parameters.name(i), parameters.value(i));
    }
}

void vekdb::save_column_header(TextFile& file, bool namesOnly) const {
    const ColumnList& columns = parts().columns;
    if (!namesOnly) {
        const ColumnSizes sizes(*this);
        file.appendLine("\"VEKDB\"");
        appendWidths(file, *this, columns.count());
        appendTypes(file, columns);
    }
    appendNames(file, columns);
}

int vekdb::save_text() {
    TextFile file;
    save_params(file);
    save_column_header(file, false);
    LinesToSave lines(file, parts().fileName, mayBeOverridden());
    const KeepModified keep(parts());
    const unsigned tagColumn = get_fieldnum("Tag");
    TagStore tags(*this, parts().rows, mayBeOverridden());
    unsigned written = 0;
    for (; written < parts().rows.count(); ++written) {
        dbrecord& record = *parts().rows.at(written);
        tags.store(record, tagColumn);
        if (record.write(file) == 0) break;
    }
    return lines.end() ? static_cast<int>(written) : 0;
}

int vekdb::save_text_without_header() {
    TextFile file;
    save_params(file);
    save_column_header(file, true);
    LinesToSave lines(file, parts().fileName, mayBeOverridden());
    const KeepModified keep(parts());
    TagStore tags(*this, parts().rows, mayBeOverridden());
    unsigned written = 0;
    for (; written < parts().rows.count(); ++written) {
        dbrecord& record = *parts().rows.at(written);
        tags.store(record, get_fieldnum("Tag"));
        if (record.write(file) == 0) break;
    }
    return lines.end() ? static_cast<int>(written) : 0;
}

int vekdb::save_tags() {
    TextFile file;
    save_params(file);
    save_column_header(file, false);
    LinesToSave lines(file, parts().fileName, mayBeOverridden());
    for (unsigned i = 0; i < parts().rows.count(); ++i) {
        const dbrecord& record = *parts().rows.at(i);
        if (record.get_tag() != 0) record.write(file);
    }
    return lines.end() ? 1 : 0;
}
