#include <algorithm>
#include <array>
#include <map>
#include <set>

#include <vekdb/host/text_util.h>
#include "formats/ale/ale_form.h"
#include "formats/delimited/delimiters.h"
#include "formats/formats.h"
#include "formats/json/json.h"
#include "formats/reading/progress.h"
#include "formats/table_file/exact_cells.h"
#include "formats/text/text_lines.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// Looks at all bytes, so that many can be looked at together.
bool hasAnyOf(std::string_view text, std::array<char, 4> kinds) {
    bool has = false;
    for (char c : text) has |= c == kinds[0] || c == kinds[1] || c == kinds[2] || c == kinds[3];
    return has;
}

// A quote is needed where the reader would else see another text, and for a lone empty cell,
// whose line would read as no row. One that begins with the bytes of a byte order mark would be
// taken for a file with one.
void addDelimited(std::string& out, std::string_view cell, char separator, bool isAlone) {
    const bool isPlain =
        !hasAnyOf(cell, {'"', '\n', '\r', separator}) && !cell.starts_with(byteOrderMark);
    if (isPlain && !(isAlone && cell.empty())) {
        out += cell;
        return;
    }
    out += '"';
    for (char c : cell) {
        if (c == '"') out += '"';
        out += c;
    }
    out += '"';
}

bool looksLikeFormula(std::string_view cell) {
    return !cell.empty() &&
           std::string_view("=+-@\t\r").find(cell.front()) != std::string_view::npos;
}

// Text with a zero byte in it is taken for something else by whoever reads it.
template <class Cell, class Place>
void tellZeros(std::string_view line, std::size_t count, Cell cell, Place place, Losses& losses) {
    if (line.find('\0') == std::string_view::npos) return;
    for (unsigned i = 0; i < count; ++i) {
        if (std::string_view(cell(i)).find('\0') == std::string_view::npos) continue;
        losses.add("texts with a zero byte, for which readers refuse the file", place(i));
    }
}

void tellZerosOf(std::string_view line, const Sheet& sheet, unsigned row, Losses& losses) {
    tellZeros(
        line, sheet.columns.size(), [&](unsigned i) { return sheet.cell(row, i); },
        [&](unsigned i) { return place(sheet, row, i); }, losses);
}

// Makes lines of delimited text, without their ends.
class DelimitedLines {
public:
    DelimitedLines(char separator, bool guardsFormulas, std::string output, Losses& losses)
        : separator_(separator),
          guardsFormulas_(guardsFormulas),
          output_(std::move(output)),
          losses_(losses) {}

    /// `place` is asked for where a cell is to be told of.
    template <class Cell, class Place>
    void add(std::string& text, std::size_t count, Cell cell, Place place) {
        const std::size_t begin = text.size();
        for (unsigned i = 0; i < count; ++i) {
            if (i > 0) text += separator_;
            addCell(text, cell(i), count == 1, [&] { return place(i); });
        }
        tellZeros(std::string_view(text).substr(begin), count, cell, place, losses_);
    }

    /// The line of names, by which readers tell formats apart: quotes keep it from being taken
    /// for the beginning of another one.
    template <class Cell>
    std::string names(std::size_t count, Cell cell) {
        if (count == 0) return {};
        std::string rest;
        for (unsigned i = 1; i < count; ++i) {
            rest += separator_;
            addCell(rest, cell(i), false, [&] { return inQuotes(cell(i)); });
        }
        std::string first;
        addCell(first, cell(0), count == 1, [&] { return inQuotes(cell(0)); });
        const std::string plain = first + rest;
        if (!first.starts_with('"') && mayBeTakenForAnother(plain)) {
            first = concat("\"", first, "\"");
        }
        requireFormat(first + rest, plain);
        return first + rest;
    }

private:
    Format format() const { return separator_ == ',' ? Format::csv : Format::tsv; }

    Format formatFound(std::string_view line) const {
        return recognised(std::string(".") + formatName(format()), line);
    }

    // A blank line is passed over for the next one. In a pipe there is no name to go by.
    bool mayBeTakenForAnother(std::string_view line) const {
        const std::string_view text = trimmed(line);
        return text.empty() || text.front() == '{' || text.front() == '[' ||
               formatFound(line) != format();
    }

    void requireFormat(std::string_view line, std::string_view asNamed) const {
        if (formatFound(line) == format()) return;
        throw Failure{unwritable,
                      concat(output_, ": ", inQuotes(trimmed(asNamed).substr(0, 40)),
                             ", expected another name of the first column: the file would be read "
                             "as a table file; rename the column, or put another first")};
    }

    template <class Place>
    void addCell(std::string& line, std::string_view cell, bool isAlone, Place place) {
        if (!guardsFormulas_ || !looksLikeFormula(cell)) {
            return addDelimited(line, cell, separator_, isAlone);
        }
        losses_.add("cells that begin like formulas, given an apostrophe", place());
        addDelimited(line, concat("'", cell), separator_, isAlone);
    }

    char separator_;
    bool guardsFormulas_;
    std::string output_;
    Losses& losses_;
};

// `before` stands in front of each cell: its name and what separates it.
void addJsonRow(std::string& line, const Sheet& sheet, unsigned row,
                const std::vector<std::string>& before, Losses& losses) {
    for (unsigned i = 0; i < before.size(); ++i) {
        bool wasChanged = false;
        line += before[i];
        addJsonString(line, sheet.cell(row, i), wasChanged);
        if (wasChanged) losses.add("cells that are no UTF-8", place(sheet, row, i));
    }
}

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

void writeAleHeading(const std::vector<Parameter>& heading, const char* end, Output& out,
                     Losses& losses) {
    out.write(std::string("Heading") + end);
    bool hasDelimiter = false;
    for (const Parameter& entry : heading) {
        hasDelimiter = hasDelimiter || sameText(entry.name, "FIELD_DELIM");
        // Cells of what was read may have been separated otherwise.
        const bool isOfOthers =
            sameText(entry.name, "FIELD_DELIM") && aleDelimiter(entry.value).value_or('\t') != '\t';
        const std::string line = aleEntry(entry.name, isOfOthers ? "TABS" : entry.value, losses);
        // A reader would take it for the end of the heading.
        if (sameText(trimmed(line), "Column")) {
            losses.add("heading entries that would begin the columns, left out",
                       inQuotes(entry.name));
            continue;
        }
        out.write(line + end);
    }
    if (!hasDelimiter) out.write(std::string("FIELD_DELIM\tTABS") + end);
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

void addEscaped(std::string& out, std::string_view text) {
    for (char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else if (c == '\n')
            out += "<br>";
        else if (c == '\r')
            out += "&#13;";
        else
            out += c;
    }
}

bool isWordByte(char c) {
    unsigned char byte = static_cast<unsigned char>(c);
    return isAsciiDigit(c) || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z') || byte >= 0x80;
}

bool isWordByteAt(std::string_view text, std::size_t at) {
    return at < text.size() && isWordByte(text[at]);
}

// "&amp;" and "&#65;" stand for other characters.
bool beginsEntity(std::string_view text) {
    std::size_t end = 1;
    while (end < text.size() && (text[end] == '#' || isWordByte(text[end]))) ++end;
    return end > 1 && end < text.size() && text[end] == ';';
}

// Whether a character would be read as markup, or make a link of the text around it. An
// underscore within a word is no markup.
bool isMarkup(std::string_view text, std::size_t at) {
    switch (text[at]) {
        case '_':
            return at == 0 || !isWordByte(text[at - 1]) || !isWordByteAt(text, at + 1);
        case '&':
            return beginsEntity(text.substr(at));
        case ':':
            return text.substr(at).starts_with("://");
        case '.':
            return at >= 3 && sameText(text.substr(at - 3, 3), "www");
        case '@':
            return at > 0 && isWordByteAt(text, at + 1);
        default:
            return std::string_view("|\\`*[]<>~").find(text[at]) != std::string_view::npos;
    }
}

void addMarkdown(std::string& out, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isMarkup(text, i)) out += '\\';
        if (text[i] == '\n')
            out += "<br>";
        else if (text[i] == '\r')
            out += "&#13;";
        else
            out += text[i];
    }
}

template <class Cell>
std::string markdownLine(std::size_t count, Cell cell) {
    std::string line = "|";
    for (unsigned i = 0; i < count; ++i) {
        line += ' ';
        addMarkdown(line, cell(i));
        line += " |";
    }
    return line;
}

template <class Cell>
std::string htmlRow(const char* tag, std::size_t count, Cell cell) {
    std::string line = "<tr>";
    for (unsigned i = 0; i < count; ++i) {
        line += std::string("<") + tag + ">";
        addEscaped(line, cell(i));
        line += std::string("</") + tag + ">";
    }
    return line + "</tr>";
}

}  // namespace

std::vector<std::string> distinctNames(const Sheet& sheet, Losses& losses) {
    std::vector<std::string> names;
    std::set<std::string> used;
    std::map<std::string, std::size_t> numbers;  // the first that may be free, of each name
    for (unsigned i = 0; i < sheet.columns.size(); ++i) {
        std::string name = sheet.name(i);
        std::size_t& n = numbers.try_emplace(name, 2).first->second;
        while (used.contains(name)) name = sheet.name(i) + " " + std::to_string(n++);
        if (name != sheet.name(i)) {
            losses.add("columns of a name that another has, given a number", inQuotes(name));
        }
        used.insert(name);
        names.push_back(name);
    }
    return names;
}

std::string place(const Sheet& sheet, unsigned row, unsigned column) {
    return sheet.log.name + ":" + std::to_string(sheet.line(row)) + ":" + sheet.name(column);
}

std::vector<Parameter> ownParameters(const Log& log) {
    std::vector<Parameter> out;
    for (unsigned i = 0; i < log.table->get_num_params(); ++i) {
        std::string name = log.table->get_param_name(i);
        bool isOurs = sameText(name, "VEKDB") || sameText(name, "V5_FIELD_MAP");
        if (isOurs || isExactNote(name)) continue;
        out.push_back({name, log.table->get_param_text(i)});
    }
    return out;
}

void loseParameters(const Log& log, Losses& losses) {
    for (const Parameter& parameter : ownParameters(log)) {
        losses.add("parameters have no place in this format", inQuotes(parameter.name));
    }
}

std::string delimitedNames(const std::vector<std::string>& names, char separator,
                           const std::string& output, Losses& losses) {
    DelimitedLines lines(separator, false, output, losses);
    return lines.names(names.size(), [&](unsigned i) -> std::string_view { return names[i]; });
}

void addDelimitedRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
                     char separator, Losses& losses) {
    DelimitedLines(separator, false, {}, losses)
        .add(
            text, count,
            [&](unsigned i) {
                return i < sheet.columns.size() ? sheet.cell(row, i) : std::string_view();
            },
            [&](unsigned i) { return place(sheet, row, i); });
}

void writeDelimited(const Sheet& sheet, char separator, const WriteStyle& style, Output& out,
                    Losses& losses) {
    loseParameters(sheet.log, losses);
    Progress progress("writing", sheet.rowCount());
    if (style.byteOrderMark) out.write(byteOrderMark);
    DelimitedLines lines(separator, style.guardsFormulas, out.name(), losses);
    const char* const end = bytesOf(style.lineEnd);
    const std::size_t count = sheet.columns.size();
    out.write(lines.names(count, [&](unsigned i) { return sheet.name(i); }) + end);
    PlainLines plain(sheet, separator, "\"\n\r");
    const bool mayBePlain = !style.guardsFormulas && count > 1;
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        progress.reach(row);
        const std::string_view plainLine = mayBePlain ? plain.line(row, end) : std::string_view();
        if (!plainLine.empty()) {
            out.write(plainLine);
            continue;
        }
        line.clear();
        lines.add(
            line, count, [&](unsigned i) { return sheet.cell(row, i); },
            [&](unsigned i) { return place(sheet, row, i); });
        out.write(line += end);
    }
}

void writeJson(const Sheet& sheet, bool asLines, Output& out, Losses& losses) {
    loseParameters(sheet.log, losses);
    std::vector<std::string> names;
    for (const std::string& name : distinctNames(sheet, losses)) {
        bool wasChanged = false;
        names.push_back((names.empty() ? "" : ", ") + jsonString(name, wasChanged) + ": ");
        if (wasChanged) losses.add("column names that are no UTF-8", inQuotes(name));
    }
    if (!asLines) out.line("[");
    PlainJsonLines plain(sheet, names);
    Progress progress("writing", sheet.rowCount());
    const std::string_view begin = asLines ? "{" : "  {";
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        progress.reach(row);
        const bool isLast = row + 1 == sheet.rowCount();
        const std::string_view end = asLines || isLast ? "}\n" : "},\n";
        const std::string_view plainLine = plain.line(row, begin, end);
        if (!plainLine.empty()) {
            out.write(plainLine);
            continue;
        }
        line = begin;
        addJsonRow(line, sheet, row, names, losses);
        out.write(line += end);
    }
    if (!asLines) out.line("]");
}

void addAleRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
               Losses& losses) {
    const std::size_t begin = text.size();
    addAleCells(text, sheet, row, count, losses);
    // Readers pass over a blank line; with a closing tab it is a row of one blank cell.
    if (count < 2 && trimmed(std::string_view(text).substr(begin)).empty()) text += '\t';
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
    writeAleHeading(form.heading, end, out, losses);
    out.write(concat(end, "Column", end, names, end, end, "Data", end));
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
        // Readers pass over a blank line; with a closing tab it is a row of one blank cell.
        if (isAlone && trimmed(line).empty()) line += '\t';
        out.write(line += rest);
    }
}

void writeMarkdown(const Sheet& sheet, Output& out, Losses& losses) {
    loseParameters(sheet.log, losses);
    std::size_t count = sheet.columns.size();
    out.line(markdownLine(count, [&](unsigned i) { return sheet.name(i); }));
    out.line(markdownLine(count, [](unsigned) { return std::string_view("---"); }));
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        std::string line = markdownLine(count, [&](unsigned i) { return sheet.cell(row, i); });
        tellZerosOf(line, sheet, row, losses);
        out.line(line);
    }
}

void writeHtml(const Sheet& sheet, Output& out, Losses& losses) {
    loseParameters(sheet.log, losses);
    std::size_t count = sheet.columns.size();
    std::string title;
    addEscaped(title, sheet.log.name);
    out.line("<!DOCTYPE html>\n<meta charset=\"utf-8\">\n<title>" + title + "</title>\n<table>");
    out.line(htmlRow("th", count, [&](unsigned i) { return sheet.name(i); }));
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        std::string line = htmlRow("td", count, [&](unsigned i) { return sheet.cell(row, i); });
        tellZerosOf(line, sheet, row, losses);
        out.line(line);
    }
    out.line("</table>");
}

}  // namespace vek::formats
