#pragma once

#include <string>
#include <vector>

#include <vekdb/table.h>

/// A table as plain lists, for comparing whole ones.
struct PlainLog {
    struct Row {
        std::vector<std::string> cells;
        unsigned tag = 0;
        bool operator==(const Row&) const = default;
    };
    struct Column {
        std::string name;
        DBFieldTypes::eType type = DBFieldTypes::text;
        bool operator==(const Column&) const = default;
    };

    std::vector<Column> columns;
    std::vector<Row> rows;
    bool operator==(const PlainLog&) const = default;
};

inline PlainLog plainOf(const vekdb& table) {
    PlainLog log;
    for (unsigned i = 0; i < table.get_num_fields(); ++i) {
        log.columns.push_back({table.get_fieldname(i), table.get_field_type(i)});
    }
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        PlainLog::Row& to = log.rows.emplace_back();
        to.tag = table.get_tag(row);
        const dbrecord& record = *table.get_record(row);
        for (unsigned i = 0; i < record.get_num_fields(); ++i) {
            to.cells.emplace_back(record.fieldView(i));
        }
    }
    return log;
}
