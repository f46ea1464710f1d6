#include "formats/changing/file_names.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/letters.h"
#include "formats/text/width.h"

namespace vek::formats {

namespace {

// A folder's entry takes 255 bytes; what stands behind a value, and a number, has to fit in, too.
constexpr std::size_t longestValue = 180;

bool isUnsafe(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F ||
           std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
}

// At most so many bytes, no letter cut in two.
std::string_view cut(std::string_view text, std::size_t most) {
    if (text.size() <= most) return text;
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
    return text.substr(0, most);
}

std::string safe(std::string_view value) {
    std::string out(value);
    if (!isUtf8(value)) {
        std::replace_if(
            out.begin(), out.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; },
            '_');
    }
    std::replace_if(out.begin(), out.end(), isUnsafe, '_');
    return std::string(cut(out, longestValue));
}

// Some systems open a device by these names, whatever stands behind a point: "con.csv", too.
bool isDevice(std::string_view name) {
    std::string stem(name.substr(0, name.find('.')));
    std::transform(stem.begin(), stem.end(), stem.begin(), asciiLower<char>);
    if (stem == "con" || stem == "prn" || stem == "aux" || stem == "nul") return true;
    if (!stem.starts_with("com") && !stem.starts_with("lpt")) return false;
    const std::string_view number = std::string_view(stem).substr(3);
    return (number.size() == 1 && isAsciiDigit(number[0])) || number == "\u00B9" ||
           number == "\u00B2" || number == "\u00B3";
}

}  // namespace

void FileNameBuilder::addText(std::string_view text) {
    for (char c : text) {
        if (c == '/') endPart();
        name_.path += c;
        if (c == '/') begin_ = name_.path.size();
    }
}

// What a person wrote without a value stands as it is.
void FileNameBuilder::endPart() {
    const std::string_view part = std::string_view(name_.path).substr(begin_);
    if (hasValue_ && isDevice(part)) {
        name_.path.insert(begin_ + std::min(part.find('.'), part.size()), 1, '_');
        name_.isAsMeant = false;
    }
    hasValue_ = false;
}

void FileNameBuilder::addValue(std::string_view value) {
    std::string part = value.empty() ? "none" : safe(value);
    const bool isHidden = isAtStart() && (part.front() == '.' || part.front() == '-' ||
                                          part.front() == ' ' || part.front() == '~');
    if (isHidden) part.front() = '_';
    for (std::size_t i = part.size(); i > 0 && (part[i - 1] == '.' || part[i - 1] == ' '); --i) {
        part[i - 1] = '_';
    }
    name_.isAsMeant = name_.isAsMeant && part == value;
    name_.path += part;
    hasValue_ = true;
}

FileName FileNameBuilder::take() {
    endPart();
    return std::move(name_);
}

std::string FreeNames::freeOne(const std::string& path) {
    if (taken_.insert(foldedName(path)).second) return path;
    const std::size_t slash = path.rfind('/') + 1;
    const std::size_t dot = path.rfind('.');
    const bool hasEnding = dot != std::string::npos && dot > slash;
    const std::string front = path.substr(0, hasEnding ? dot : path.size());
    const std::string ending = path.substr(front.size());
    std::size_t& number = next_.try_emplace(foldedName(path), 2).first->second;
    for (;;) {
        std::string other = concat(front, "_", std::to_string(number++), ending);
        if (taken_.insert(foldedName(other)).second) return other;
    }
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

}  // namespace vek::formats
