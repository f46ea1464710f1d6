#include "formats/workbook/sheet_xml.h"

#include <algorithm>
#include <array>

#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

bool isPlain(char c) {
    return static_cast<unsigned char>(c) >= 0x20 && static_cast<signed char>(c) >= 0 && c != '&' &&
           c != '<' && c != '>' && c != '_';
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// A text that reads as a character written out has its first sign written out.
bool looksWrittenOut(std::string_view text) {
    return text.size() >= 7 && text[1] == 'x' && text[6] == '_' &&
           std::all_of(text.begin() + 2, text.begin() + 6, isHexDigit);
}

void addWrittenOut(std::string& to, unsigned code) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    to += "_x";
    for (unsigned shift : {12u, 8u, 4u, 0u}) to += digits[(code >> shift) & 0xF];
    to += '_';
}

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// A character of one byte that does not stand for itself.
void addSpecial(std::string& to, std::string_view rest, XmlLoss& loss) {
    switch (const char c = rest.front()) {
        case '&':
            to += "&amp;";
            return;
        case '<':
            to += "&lt;";
            return;
        case '>':
            to += "&gt;";
            return;
        case '\t':
        case '\n':
            to += c;
            return;
        case '_':
            if (looksWrittenOut(rest)) return addWrittenOut(to, '_');
            to += c;
            return;
        case '\0':
            loss.hasZeros = true;
            to += replacement;
            return;
        default:
            addWrittenOut(to, static_cast<unsigned char>(c));
    }
}

// U+FFFE and U+FFFF are no characters of XML.
bool isNoCharacter(std::string_view character) {
    return character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
}

std::size_t addWide(std::string& to, std::string_view rest, XmlLoss& loss) {
    const std::size_t size = wideCharacterSize(rest);
    if (size == 0) {
        loss.hasBrokenBytes = true;
        to += replacement;
        return 1;
    }
    const std::string_view character = rest.substr(0, size);
    if (isNoCharacter(character)) {
        addWrittenOut(to, character.back() == '\xBE' ? 0xFFFE : 0xFFFF);
    } else {
        to += character;
    }
    return size;
}

}  // namespace

XmlLoss addSheetText(std::string& to, std::string_view text) {
    XmlLoss loss;
    while (!text.empty()) {
        const auto end = std::find_if_not(text.begin(), text.end(), isPlain);
        const auto plain = static_cast<std::size_t>(end - text.begin());
        to += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        if (static_cast<signed char>(text.front()) < 0) {
            text.remove_prefix(addWide(to, text, loss));
        } else {
            addSpecial(to, text, loss);
            text.remove_prefix(1);
        }
    }
    return loss;
}

std::size_t sheetLength(std::string_view text) {
    std::size_t length = 0;
    for (char c : text) {
        if (!isContinuation(c)) ++length;
        if (static_cast<unsigned char>(c) >= 0xF0) ++length;
    }
    return length;
}

}  // namespace vek::formats
