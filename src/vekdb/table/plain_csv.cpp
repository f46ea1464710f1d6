#include "vekdb/table/plain_csv.h"

#include <algorithm>

#include <vekdb/host/split.h>
#include <vekdb/host/text_file.h>
#include <vekdb/table.h>
#include "vekdb/table/row_sieve.h"
#include "vekdb/table/table_parts.h"

namespace {

using Pieces = std::vector<LightweightString<char>>;

void split(const TextFile& file, unsigned line, Pieces& pieces) {
    pieces.clear();
    Quor::splitIf(file[line], ',', pieces, Quor::splitKeepsQuotedWhole);
}

void nameColumns(vekdb& table, ColumnList& columns, const Pieces& names) {
    columns.setCount(static_cast<unsigned>(std::min<std::size_t>(names.size(), ColumnList::most)));
    columns.makePlaces();
    for (unsigned i = 0; i < columns.count(); ++i) {
        columns.setType(i, DBFieldTypes::text_s);
        table.set_fieldname(i, names[i].c_str());
    }
}

void fill(dbrecord& record, const Pieces& values) {
    const std::size_t count = std::min<std::size_t>(values.size(), record.get_num_fields());
    for (std::size_t i = 0; i < count; ++i) {
        record.setField(static_cast<unsigned short>(i), values[i]);
    }
}

void appendRecord(vekdb& table, const Pieces& values) {
    dbrecord* record = table.get_record(table.add_records(1));
    if (record != nullptr) fill(*record, values);
}

// A row is tried out on a record of its own.
bool isTaken(const RowSieve& sieve, vekdb& table, const Pieces& values) {
    if (sieve.isOpen()) return true;
    dbrecord record(static_cast<unsigned short>(table.get_num_fields()));
    record.set_container(&table);
    fill(record, values);
    return sieve.takes(record);
}

}  // namespace

void loadPlainCsv(const TextFile& file, vekdb& table, TableParts& parts, int maxRecords,
                  RowChoice* choice) {
    const unsigned lines = file.size();
    Pieces pieces;
    if (lines > 0) {
        split(file, 0, pieces);
        nameColumns(table, parts.columns, pieces);
    }
    const RowSieve sieve(choice, table, parts);
    unsigned leftOut = 0;
    for (unsigned line = 1; line < lines && maxRecords > 0; ++line) {
        split(file, line, pieces);
        if (pieces.empty()) continue;
        if (isTaken(sieve, table, pieces))
            appendRecord(table, pieces);
        else
            ++leftOut;
        --maxRecords;
    }
    parts.valid = true;
    parts.loadedWhole = lines == table.get_num_records() + leftOut + 1;
    table.clear_changed();
}
