#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

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
