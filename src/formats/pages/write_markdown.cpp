#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

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

}  // namespace

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

}  // namespace vek::formats
