#include "formats/ale/ale_lines.h"

#include <algorithm>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/ale/ale_entries.h"
#include "formats/ale/field_delimiter.h"
#include "formats/reading/readers.h"
#include "formats/saving/reading_back.h"
#include "formats/text/encoding.h"
#include "formats/text/text_lines.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

bool isAleSafe(std::string_view text) {
    return !hasAnyOf(text, {'\t', '\n', '\r', '\r'});
}

std::string forAle(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c == '\t' || c == '\n' || c == '\r') c = ' ';
    }
    return out;
}

std::string aleHeading(const std::vector<ParameterText>& heading, const char* end, Losses& losses) {
    std::string text = concat("Heading", end);
    bool hasDelimiter = false;
    for (const ParameterText& entry : heading) {
        hasDelimiter = hasDelimiter || sameText(entry.name, "FIELD_DELIM");
        // Cells of what was read may have been separated otherwise.
        const bool isOfOthers =
            sameText(entry.name, "FIELD_DELIM") && aleDelimiter(entry.value).value_or('\t') != '\t';
        const std::string line = aleEntry(entry.name, isOfOthers ? "TABS" : entry.value, losses);
        // A reader would take it for the end of the heading.
        if (beginsAleColumns(line)) {
            losses.add("heading entries that would begin the columns, left out",
                       inQuotes(entry.name));
            continue;
        }
        text += line + end;
    }
    if (!hasDelimiter) text += concat("FIELD_DELIM\tTABS", end);
    return text;
}

void addAleCells(std::string& line, const Sheet& sheet, unsigned row, std::size_t count,
                 Losses& losses) {
    const dbrecord& record = sheet.record(row);
    const std::size_t begin = line.size();
    for (unsigned i = 0; i < count; ++i) {
        if (i > 0) line += '\t';
        if (i >= sheet.columns.size()) continue;
        const std::string_view cell = record.fieldView(sheet.columns[i]);
        if (isAleSafe(cell)) {
            line += cell;
            continue;
        }
        losses.add("cells whose tabs and line ends become blanks", place(sheet, row, i));
        line += forAle(cell);
    }
    tellZerosOf(std::string_view(line).substr(begin), sheet, row, losses);
}

// Readers pass over a blank line; with a closing tab it is a row of one blank cell.
void closeBlankRow(std::string& text, std::size_t begin) {
    if (trimmed(std::string_view(text).substr(begin)).empty()) text += '\t';
}

void tellReading(std::string_view heading, const std::vector<std::string>& names,
                 const std::vector<ParameterText>& entries, Losses& losses) {
    Log back;
    Text text{TextBlock::create(heading.size()), 0};
    std::copy(heading.begin(), heading.end(), text.block->data());
    readAle(std::move(text), back);
    for (unsigned i = 0; i < names.size(); ++i) {
        if (i < back.columnCount() && back.columnName(i) == names[i]) continue;
        losses.add("column names that read back as another text", inQuotes(names[i]));
    }
    for (const ParameterText& entry : entries) {
        if (back.parameter(entry.name.c_str()) == entry.value) continue;
        losses.add("heading entries that read back as another text", inQuotes(entry.name));
    }
}

}  // namespace

void addAleRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
               Losses& losses) {
    const std::size_t begin = text.size();
    addAleCells(text, sheet, row, count, losses);
    if (count < 2) closeBlankRow(text, begin);
}

std::string aleNames(const AleForm& form, Losses& losses) {
    std::string line;
    for (std::size_t i = 0; i < form.names.size(); ++i) {
        if (!isAleSafe(form.names[i])) {
            losses.add("column names whose tabs and line ends become blanks",
                       inQuotes(form.names[i]));
        }
        line += concat(i == 0 ? "" : "\t", forAle(form.names[i]));
    }
    if (form.tracks.empty() && form.names.size() > 1 && trimmed(form.names.back()).empty()) {
        losses.add("columns without a name at the end of the line, where readers see none",
                   inQuotes(form.names.back()));
    }
    return form.tracks.empty() ? line : line + "\tTracks";
}

void tellAleHeading(std::string_view heading, const AleForm& form, Losses& losses) {
    std::vector<std::string> names;
    for (const std::string& name : form.names) names.push_back(forAle(name));
    // Of those without a name at the end it is told already.
    while (form.tracks.empty() && !names.empty() && trimmed(names.back()).empty()) names.pop_back();
    std::vector<ParameterText> entries;
    for (const ParameterText& entry : form.heading) {
        // The one is this format's own, and of the others it is told already.
        const bool isTold = sameText(entry.name, "FIELD_DELIM") || !isAleSafe(entry.name) ||
                            !isAleSafe(entry.value) ||
                            beginsAleColumns(concat(entry.name, "\t", entry.value));
        if (!isTold) entries.push_back(entry);
    }
    tellReading(heading, names, entries, losses);
}

std::string aleEntry(const std::string& name, const std::string& value, Losses& losses) {
    if (!isAleSafe(name) || !isAleSafe(value)) {
        losses.add("heading entries whose tabs and line ends become blanks", name);
    }
    return concat(forAle(name), "\t", forAle(value));
}

void writeAle(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses) {
    const char* end = bytesOf(style.lineEnd);
    AleForm form = aleForm(sheet, style, out.name(), losses);
    const std::string names = aleNames(form, losses);
    if (trimmed(names).empty()) {
        throw Failure{unwritable, out.name() +
                                      ": a log exchange file needs a column with a name, " +
                                      sheet.log.name + " has none"};
    }
    const std::string heading = concat(aleHeading(form.heading, end, losses), end, "Column", end,
                                       names, end, end, "Data", end);
    tellAleHeading(heading, form, losses);
    bool isUtf8 = isWellFormedUtf8(heading);
    out.write(heading);
    const std::string rest = (form.tracks.empty() ? "" : "\t" + forAle(form.tracks)) + end;
    const bool isAlone = sheet.columns.size() == 1 && form.tracks.empty();
    PlainLines plain(sheet, '\t', "\n\r");
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        const std::string_view plainLine = isAlone ? std::string_view() : plain.line(row, rest);
        if (!plainLine.empty()) {
            out.write(plainLine);
            continue;
        }
        line.clear();
        addAleCells(line, sheet, row, sheet.columns.size(), losses);
        if (isAlone) closeBlankRow(line, 0);
        isUtf8 = isUtf8 && isWellFormedUtf8(line);
        out.write(line += rest);
    }
    if (!isUtf8) tellNoUtf8(sheet, losses);
}

}  // namespace vek::formats
