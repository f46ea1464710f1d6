#include "round_trip.h"

#include <cstdio>

#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

namespace fuzz {

namespace {

constexpr int allRows = 1 << 24;
constexpr std::size_t longestSafeText = 4000;
constexpr std::size_t longestSafeName = 200;

LightweightString<wchar_t> wide(const std::string& path) {
    return fromUTF8(LightweightString<char>(path.c_str()));
}

std::string valueOf(const vekdb& table, unsigned row, unsigned column) {
    return std::string(table.getField(row, column).view());
}

// Names and parameters are written without escaping, so that only plain ones come back.
bool isPlain(const char* text) {
    std::string_view view = text;
    for (char c : view) {
        if (c == '"' || c == '\\' || isAsciiControl(c)) {
            return false;
        }
    }
    return view.size() <= longestSafeName && !view.starts_with(' ') && !view.ends_with(' ');
}

bool parametersArePlain(const vekdb& table) {
    for (unsigned slot = 0; slot < table.get_num_params(); ++slot) {
        if (!isPlain(table.get_param_name(slot)) || !isPlain(table.get_param_text(slot))) {
            return false;
        }
    }
    return table.get_num_params() > 0;
}

bool columnsArePlain(const vekdb& table) {
    for (unsigned column = 0; column < table.get_num_fields(); ++column) {
        auto type = static_cast<unsigned>(table.get_field_type(column));
        bool letter = type < 128 && isalnum(static_cast<int>(type));
        if (!letter || !isPlain(table.get_fieldname(column))) {
            return false;
        }
    }
    return table.get_num_fields() > 0;
}

bool valuesAreShort(const vekdb& table) {
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        for (unsigned column = 0; column < table.get_num_fields(); ++column) {
            if (table.get_record(row)->fieldView(column).size() > longestSafeText) {
                return false;
            }
        }
    }
    return true;
}

// A row whose first value reads as a second header replaces itself by a later one, which may be
// of any length: such rows do not come back.
bool rowsAreOrdinary(const vekdb& table) {
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        const dbrecord* record = table.get_record(row);
        std::string first = afterRoundTrip(valueOf(table, row, 0));
        if (record->get_num_fields() != table.get_num_fields() ||
            LightweightString<char>::icompare(first.c_str(), "VEKDB") == 0) {
            return false;
        }
    }
    return true;
}

bool comesBack(const vekdb& table) {
    return parametersArePlain(table) && columnsArePlain(table) && rowsAreOrdinary(table) &&
           valuesAreShort(table);
}

std::string place(const char* what, unsigned row, unsigned column) {
    char text[80];
    std::snprintf(text, sizeof text, "%s at row %u, column %u", what, row, column);
    return text;
}

std::string compareColumns(const vekdb& before, const vekdb& after) {
    if (before.get_num_fields() != after.get_num_fields()) {
        return "another number of columns";
    }
    for (unsigned column = 0; column < before.get_num_fields(); ++column) {
        LightweightString<char> name(before.get_fieldname(column));
        if (!(name == after.get_fieldname(column)) ||
            before.get_field_type(column) != after.get_field_type(column)) {
            return place("another name or type", 0, column);
        }
    }
    return {};
}

std::string compareParameters(const vekdb& before, const vekdb& after) {
    if (before.get_num_params() != after.get_num_params()) {
        return "another number of parameters";
    }
    for (unsigned slot = 0; slot < before.get_num_params(); ++slot) {
        LightweightString<char> name(before.get_param_name(slot));
        LightweightString<char> text(before.get_param_text(slot));
        if (!(name == after.get_param_name(slot)) || !(text == after.get_param_text(slot))) {
            return place("another parameter", slot, 0);
        }
    }
    return {};
}

std::string compareRows(const vekdb& before, const vekdb& after) {
    if (before.get_num_records() != after.get_num_records()) {
        return "another number of rows";
    }
    for (unsigned row = 0; row < before.get_num_records(); ++row) {
        for (unsigned column = 0; column < before.get_num_fields(); ++column) {
            if (afterRoundTrip(valueOf(before, row, column)) != valueOf(after, row, column)) {
                return place("another value", row, column);
            }
        }
    }
    return {};
}

std::string compareTables(const vekdb& before, const vekdb& after) {
    if (!after.get_valid()) {
        return "what was saved does not load";
    }
    for (auto compare : {compareColumns, compareParameters, compareRows}) {
        std::string difference = compare(before, after);
        if (!difference.empty()) {
            return difference;
        }
    }
    return {};
}

std::string saveAndCompare(vekdb& table, const std::string& path) {
    table.set_filename(wide(path));
    table.add_param("Checked", "1");
    if (!comesBack(table)) {
        return {};
    }
    auto rows = static_cast<int>(table.get_num_records());
    if (table.save_text() != rows) {
        return "not every row was saved";
    }
    vekdb again(wide(path), allRows, true);
    return compareTables(table, again);
}

// What a table answers whatever it was loaded from.
std::string checkAnswers(const vekdb& table) {
    dberror error;
    if (!table.get_valid() && table.get_num_records() > 0) {
        return "rows in a table that is not valid";
    }
    if (table.read_error_info(error) && error.values[0] == 3 && table.get_valid()) {
        return "valid in spite of its header";
    }
    if (table.get_modified()) {
        return "modified by loading";
    }
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        const dbrecord* record = table.get_record(row);
        if (!record || record->get_changed() || record->get_container() != &table) {
            return place("no record in order", row, 0);
        }
    }
    return {};
}

std::string checkOneWay(const std::string& path, bool requireMagic) {
    vekdb table(wide(path), allRows, requireMagic);
    std::string wrong = checkAnswers(table);
    if (!wrong.empty() || !table.get_valid()) {
        return wrong;
    }
    return saveAndCompare(table, path + ".saved");
}

}  // namespace

std::string afterRoundTrip(const std::string& value) {
    // What the writer makes of it, without the quotes, which come back one for one.
    std::string written;
    for (char c : value) {
        written += c == '\n' ? "\\n" : c == '\r' ? "" : std::string(1, c);
    }
    while (!written.empty() && isAsciiSpace(written.front())) {
        written.erase(0, 1);
    }
    while (!written.empty() && isAsciiSpace(written.back())) {
        written.pop_back();
    }
    std::string read;
    for (std::size_t i = 0; i < written.size(); ++i) {
        bool escape = written[i] == '\\' && i + 1 < written.size();
        if (escape && written[i + 1] == 'n') {
            read += '\n';
            ++i;
        } else if (escape && written[i + 1] == '\\') {
            read += "\\\\";
            ++i;
        } else {
            read += written[i];
        }
    }
    return read;
}

std::string checkTableFile(const std::string& path) {
    std::string wrong = checkOneWay(path, true);
    return wrong.empty() ? checkOneWay(path, false) : wrong;
}

}  // namespace fuzz
