#include "formats/table_file/exact_cells.h"

#include <algorithm>
#include <charconv>
#include <tuple>

#include <vekdb/host/text_util.h>
#include "formats/log/own_parameters.h"
#include "formats/text/text_lines.h"
#include "formats/writing/table_values.h"

namespace vek::formats {

namespace {

constexpr std::size_t longestNote = 4000;  // a line's value holds 4094 bytes, name included
constexpr std::size_t mostNotes = 38;

std::string nameOf(std::size_t note) {
    if (note == 0) return std::string(exactCellsName);
    return concat(exactCellsName, " ", std::to_string(note + 1));
}

bool isPlain(char c) {
    char small = asciiLower(c);
    return (small >= 'a' && small <= 'z') || isAsciiDigit(c) ||
           std::string_view("_-+:/.").find(c) != std::string_view::npos;
}

std::string encoded(std::string_view text) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (isPlain(c))
            out += c;
        else
            out += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return out;
}

std::string decoded(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned byte = 0;
        bool isCode = text[i] == '%' && i + 2 < text.size() &&
                      std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16).ptr ==
                          text.data() + i + 3;
        out += isCode ? static_cast<char>(byte) : text[i];
        if (isCode) i += 2;
    }
    return out;
}

std::string entryOf(const ExactCell& cell) {
    return std::to_string(cell.row + 1) + ":" + std::to_string(cell.column + 1) + "=" +
           encoded(cell.value) + ";";
}

// A number from 1 on, up to `end`, taken off the front together with it; 0 for anything else.
unsigned takeNumber(std::string_view& text, char end) {
    unsigned number = 0;
    auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop == text.data() + text.size() || *stop != end) return 0;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()) + 1);
    return number;
}

void restore(Log& log, std::string_view entry) {
    unsigned row = takeNumber(entry, ':');
    unsigned column = takeNumber(entry, '=');
    if (row == 0 || column == 0 || row > log.rowCount() || column > log.columnCount()) return;
    std::string value = decoded(entry);
    if (log.cell(row - 1, column - 1) != afterTableFile(value)) return;
    log.table->get_record(row - 1)->setField(static_cast<unsigned short>(column - 1),
                                             cellText(value));
    if (log.source) log.source->exactCells.push_back({row - 1, column - 1, value});
}

bool setNote(vekdb& table, std::size_t note, const std::string& text) {
    std::string name = nameOf(note);
    const char* old = table.get_param_val(name.c_str());
    // A parameter cannot be taken out again, so a note that is not needed is left empty.
    if (text.empty() && old == nullptr) return true;
    return table.set_param_val(name.c_str(), text.c_str()) != noColumn;
}

}  // namespace

std::size_t noteExactCells(vekdb& table, const std::vector<ExactCell>& cells) {
    std::size_t noted = 0;
    bool hasRoom = true;
    for (std::size_t note = 0; note < mostNotes; ++note) {
        std::string text;
        std::size_t next = noted;
        while (hasRoom && next < cells.size()) {
            std::string entry = entryOf(cells[next]);
            if (text.size() + entry.size() > longestNote) break;
            text += entry;
            ++next;
        }
        hasRoom = hasRoom && next > noted && setNote(table, note, text);
        if (hasRoom)
            noted = next;
        else
            setNote(table, note, "");
    }
    return noted;
}

bool hasExactNotes(const Log& log) {
    for (std::size_t note = 0; note < mostNotes; ++note) {
        if (!log.parameter(nameOf(note).c_str()).empty()) return true;
    }
    return false;
}

void restoreExactCells(Log& log) {
    for (std::size_t note = 0; note < mostNotes; ++note) {
        std::string text = log.parameter(nameOf(note).c_str());
        std::string_view rest = text;
        while (!rest.empty()) {
            std::size_t end = std::min(rest.find(';'), rest.size());
            restore(log, rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    if (!log.source) return;
    std::vector<Source::Cell>& cells = log.source->exactCells;
    std::stable_sort(cells.begin(), cells.end(), [](const Source::Cell& a, const Source::Cell& b) {
        return std::tie(a.row, a.column) < std::tie(b.row, b.column);
    });
}

}  // namespace vek::formats
