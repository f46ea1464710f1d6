#include "vekdb/plain_csv_impl.h"

#include <algorithm>

#include "host/split.h"
#include "host/text_file.h"
#include "vekdb/table.h"
#include "vekdb/table_parts_impl.h"

namespace {

using Pieces = std::vector<LightweightString<char>>;

void split(const TextFile& file, unsigned line, Pieces& pieces) {
    pieces.clear();
    Quor::splitIf(file[line], ',', pieces, Quor::splitKeepsQuotedWhole);
}

void nameColumns(vekdb& table, Columns& columns, const Pieces& names) {
    columns.setCount(static_cast<unsigned>(std::min<std::size_t>(names.size(), Columns::most)));
    columns.makePlaces();
    for (unsigned i = 0; i < columns.count(); ++i) {
        columns.setType(i, DBFieldTypes::text_s);
        table.set_fieldname(i, names[i].c_str());
    }
}

void appendRecord(vekdb& table, const Pieces& values) {
    dbrecord* record = table.get_record(table.add_records(1));
    if (record == nullptr) return;
    const std::size_t count = std::min<std::size_t>(values.size(), table.get_num_fields());
    for (std::size_t i = 0; i < count; ++i) {
        record->setField(static_cast<unsigned short>(i), values[i]);
    }
}

}  // namespace

void loadPlainCsv(const TextFile& file, vekdb& table, TableParts& parts, int maxRecords) {
    const unsigned lines = file.size();
    Pieces pieces;
    if (lines > 0) {
        split(file, 0, pieces);
        nameColumns(table, parts.columns, pieces);
    }
    for (unsigned line = 1; line < lines && maxRecords > 0; ++line) {
        split(file, line, pieces);
        if (pieces.empty()) continue;
        appendRecord(table, pieces);
        --maxRecords;
    }
    parts.valid = true;
    parts.loadedWhole = lines == table.get_num_records() + 1;
    table.clear_changed();
}
