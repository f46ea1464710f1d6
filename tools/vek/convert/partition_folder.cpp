#include "tools/vek/convert/partition_folder.h"

#include "formats/failure.h"
#include "formats/text/width.h"

namespace vek::convert {

namespace {

constexpr std::string_view noValue = "__HIVE_DEFAULT_PARTITION__";

bool isPlain(unsigned char c, bool hasLetters) {
    if (c < 0x20 || c == 0x7F) return false;
    if (c > 0x7F) return hasLetters;
    return std::string_view("\"#%'*/:=?\\{}[]^<>|").find(static_cast<char>(c)) ==
           std::string_view::npos;
}

void addEscaped(std::string& out, unsigned char c) {
    constexpr char digits[] = "0123456789ABCDEF";
    out += '%';
    out += digits[c >> 4];
    out += digits[c & 15];
}

// Letters of other alphabets stand as they are: some engines take each %XX for a character.
std::string escaped(std::string_view text) {
    const bool hasLetters = formats::isUtf8(text);
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isOddEnd = i + 1 == text.size() && (byte == '.' || byte == ' ');
        if (isPlain(byte, hasLetters) && !isOddEnd)
            out += text[i];
        else
            addEscaped(out, byte);
    }
    return out;
}

std::string escapedValue(std::string_view value) {
    if (value.empty()) return std::string(noValue);
    if (value == noValue) return formats::concat("%5F", value.substr(1));
    return escaped(value);
}

}  // namespace

std::string partitionFolder(std::string_view column, std::string_view value) {
    return formats::concat(escaped(column), "=", escapedValue(value));
}

}  // namespace vek::convert
