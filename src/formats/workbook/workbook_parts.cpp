#include "formats/workbook/workbook_parts.h"

#include <algorithm>
#include <charconv>

#include "formats/failure.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// More than any spreadsheet program lets a workbook have.
constexpr std::size_t mostParts = 10000;
constexpr std::size_t mostFormats = 1024;
constexpr std::size_t longestFormat = 255;

std::string_view behindLast(std::string_view text, char mark) {
    return text.substr(text.rfind(mark) + 1);
}

// A path from a folder of the archive, or from its root; "." and ".." are resolved.
std::string resolved(std::string_view folder, std::string_view target) {
    const std::string whole =
        target.starts_with('/') ? std::string(target.substr(1)) : concat(folder, target);
    std::string path;
    for (std::string_view rest = whole; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (name == "..") {
            const std::size_t parent = path.rfind('/');
            path.resize(parent == std::string::npos ? 0 : parent);
        } else if (name != ".") {
            path.append(path.empty() ? "" : "/").append(name);
        }
    }
    return path;
}

bool isTrue(std::string_view value) {
    return value == "1" || value == "true";
}

unsigned numberIn(std::string_view text) {
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void addUtf8(std::string& to, unsigned code) {
    if (code < 0x80) {
        to += static_cast<char>(code);
        return;
    }
    if (code >= 0x800) {
        to += static_cast<char>(0xE0 | (code >> 12));
        to += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    } else {
        to += static_cast<char>(0xC0 | (code >> 6));
    }
    to += static_cast<char>(0x80 | (code & 0x3F));
}

// The character that seven bytes stand for; 0 for none.
unsigned escapedCharacter(std::string_view text) {
    if (text.size() < 7 || text[0] != '_' || text[1] != 'x' || text[6] != '_') return 0;
    unsigned code = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 6, code, 16);
    const bool isHalf = code >= 0xD800 && code < 0xE000;
    return end == text.data() + 6 && error == std::errc() && !isHalf ? code : 0;
}

}  // namespace

const Relations::Target* Relations::byId(std::string_view id) const {
    const auto found = std::find_if(targets_.begin(), targets_.end(),
                                    [&](const Target& target) { return target.id == id; });
    return found == targets_.end() ? nullptr : &*found;
}

const Relations::Target* Relations::byKind(std::string_view kind) const {
    const auto found = std::find_if(targets_.begin(), targets_.end(),
                                    [&](const Target& target) { return target.kind == kind; });
    return found == targets_.end() ? nullptr : &*found;
}

void Relations::begin(std::string_view name, const XmlAttributes& attributes) {
    if (name != "Relationship" || attributes["TargetMode"] == "External") return;
    if (targets_.size() == mostParts) return;
    targets_.push_back({std::string(attributes["Id"]),
                        std::string(behindLast(attributes["Type"], '/')),
                        resolved(folder_, attributes["Target"])});
}

void WorkbookSheets::begin(std::string_view name, const XmlAttributes& attributes) {
    if (name == "workbookPr") from1904 = isTrue(attributes["date1904"]);
    if (name != "sheet" || sheets.size() == mostParts) return;
    const std::string_view state = attributes["state"];
    sheets.push_back({std::string(attributes["name"]), std::string(attributes["id"]),
                      state == "hidden" || state == "veryHidden"});
}

const NumberFormat& CellStyles::format(std::size_t style) const {
    if (style >= numbers_.size()) return general_;
    const auto own = own_.find(numbers_[style]);
    if (own != own_.end()) return own->second;
    const auto known = known_.find(numbers_[style]);
    return known == known_.end() ? general_ : known->second;
}

void CellStyles::begin(std::string_view name, const XmlAttributes& attributes) {
    if (name == "numFmt") {
        const std::string_view code = attributes["formatCode"];
        if (own_.size() == mostFormats || code.size() > longestFormat) return;
        own_.insert_or_assign(numberIn(attributes["numFmtId"]), NumberFormat(code));
    } else if (name == "cellXfs") {
        isInCells_ = true;
    } else if (name == "xf" && isInCells_) {
        numbers_.push_back(numberIn(attributes["numFmtId"]));
        const std::string_view code = builtInFormat(numbers_.back());
        if (code != "General") known_.try_emplace(numbers_.back(), code);
    }
}

void CellStyles::end(std::string_view name) {
    if (name == "cellXfs") isInCells_ = false;
}

void RunText::begin(std::string_view name) {
    if (name == "rPh") ++spoken_;
    if (name == "t") isText_ = true;
}

void RunText::end(std::string_view name) {
    if (name == "rPh") --spoken_;
    if (name == "t") isText_ = false;
}

void SharedTexts::begin(std::string_view name, const XmlAttributes&) {
    run_.begin(name);
}

void SharedTexts::end(std::string_view name) {
    run_.end(name);
    if (name != "si") return;
    resolveWrittenOut(texts_, ends_.empty() ? 0 : ends_.back());
    ends_.push_back(texts_.size());
}

void SharedTexts::text(std::string_view piece) {
    run_.add(piece, texts_);
}

void resolveWrittenOut(std::string& text, std::size_t from) {
    std::size_t at = text.find("_x", from);
    if (at == std::string::npos) return;
    std::string made;
    std::size_t done = from;
    while (at != std::string::npos) {
        const unsigned code = escapedCharacter(std::string_view(text).substr(at));
        made.append(text, done, at - done);
        if (code != 0) addUtf8(made, code);
        if (code == 0) made += "_x";
        done = at + (code == 0 ? 2 : 7);
        at = text.find("_x", done);
    }
    made.append(text, done);
    text.replace(from, std::string::npos, made);
}

void readPart(ZipArchive& archive, const std::string& entry, const std::string& file,
              XmlReceiver& receiver) {
    XmlStream stream(receiver, concat(file, ": ", entry));
    archive.read(entry, [&](std::string_view piece) { stream.take(piece); });
    stream.finish();
}

}  // namespace vek::formats
