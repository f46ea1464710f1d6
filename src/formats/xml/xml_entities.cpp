#include "formats/xml/xml_entities.h"

#include <charconv>
#include <cstdint>
#include <map>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::size_t deepest = 64;
constexpr std::size_t costOfEach = 16;  // of one that stands for nothing, too
constexpr std::size_t mostUnknown = 1000;

bool isNameByte(char c) {
    const char small = asciiLower(c);
    const bool isLetter = small >= 'a' && small <= 'z';
    return isLetter || isAsciiDigit(c) || c == '_' || c == '-' || c == '.' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool isOfXml(std::string_view name) {
    return name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos";
}

// The name of "&name;" at the front of a text; "" where it is none.
std::string_view referenceAt(std::string_view text) {
    std::size_t end = 1;
    while (end < text.size() && isNameByte(text[end])) ++end;
    const bool isOne = end > 1 && end < text.size() && text[end] == ';';
    return isOne ? text.substr(1, end - 1) : std::string_view();
}

// Where a part ends in which no entity is one; 0 where none begins.
std::size_t endOfVerbatim(std::string_view text) {
    struct Part {
        std::string_view begin, end;
    };
    static constexpr Part parts[] = {{"<![CDATA[", "]]>"}, {"<!--", "-->"}, {"<?", "?>"}};
    for (const Part& part : parts) {
        if (!text.starts_with(part.begin)) continue;
        const std::size_t end = text.find(part.end, part.begin.size());
        return end == text.npos ? text.size() : end + part.end.size();
    }
    return 0;
}

void addUtf8(std::string& to, std::uint32_t code) {
    if (code < 0x80) {
        to += static_cast<char>(code);
        return;
    }
    const int rest = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr unsigned char marks[] = {0, 0xC0, 0xE0, 0xF0};
    to += static_cast<char>(marks[rest] | (code >> (6 * rest)));
    for (int i = rest - 1; i >= 0; --i) to += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
}

// The character of "&#10;" or "&#x41;" at the front of a text, and how long that is.
std::optional<std::pair<std::uint32_t, std::size_t>> characterAt(std::string_view text) {
    const bool isHex = text.starts_with("&#x");
    const char* const begin = text.data() + (isHex ? 3 : 2);
    const char* const end = text.data() + text.size();
    if (!text.starts_with("&#") || begin >= end) return {};
    std::uint32_t code = 0;
    const auto [at, error] = std::from_chars(begin, end, code, isHex ? 16 : 10);
    const bool isHalf = code >= 0xD800 && code <= 0xDFFF;
    if (error != std::errc() || at == end || *at != ';') return {};
    if (code == 0 || code > 0x10FFFF || isHalf) return {};
    return std::pair(code, static_cast<std::size_t>(at + 1 - text.data()));
}

// What a declared value stands for: characters that are written by number are that character.
std::string valueOf(std::string_view written) {
    std::string value;
    for (std::size_t at = 0; at < written.size(); ++at) {
        const auto character = characterAt(written.substr(at));
        if (!character) {
            value += written[at];
            continue;
        }
        addUtf8(value, character->first);
        at += character->second - 1;
    }
    return value;
}

// In the place of an entity: quotes end no attribute there, and lines keep their numbers.
std::string inItsPlace(std::string_view value) {
    const bool isMarkup = value.find('<') != value.npos;
    std::string text;
    for (char c : value) {
        if (c == '\n' || c == '\r')
            text += isMarkup ? " " : c == '\n' ? "&#10;" : "&#13;";
        else if (!isMarkup && (c == '"' || c == '\''))
            text += c == '"' ? "&quot;" : "&apos;";
        else
            text += c;
    }
    return text;
}

class Declarations {
public:
    /// Reads those of a document type, the text behind "<!DOCTYPE"; how long that is.
    std::size_t read(std::string_view text) {
        std::size_t at = 0;
        bool isInside = false;
        while (at < text.size()) {
            const std::size_t verbatim = endOfVerbatim(text.substr(at));
            if (verbatim != 0) {
                at += verbatim;
            } else if (text.substr(at).starts_with("<!ENTITY")) {
                at += declare(text.substr(at));
            } else if (text[at] == '"' || text[at] == '\'') {
                at = std::min(text.find(text[at], at + 1), text.size() - 1) + 1;
            } else if (text[at] == '>' && !isInside) {
                return at + 1;
            } else {
                isInside = text[at] == '[' || (isInside && text[at] != ']');
                ++at;
            }
        }
        return at;
    }

    /// Null for one that stands for nothing here.
    const std::string* find(std::string_view name) const {
        const auto known = values_.find(name);
        return known == values_.end() ? nullptr : &known->second;
    }
    bool areThere() const { return !values_.empty(); }

private:
    // The first one of a name holds.
    std::size_t declare(std::string_view text) {
        std::size_t at = std::string_view("<!ENTITY").size();
        const std::string_view name = wordAt(text, at);
        const std::size_t quote = text.find_first_not_of(" \t\r\n", at);
        const bool isValue = quote != text.npos && (text[quote] == '"' || text[quote] == '\'');
        if (name.empty() || !isValue) return at;
        const std::size_t end = std::min(text.find(text[quote], quote + 1), text.size());
        values_.try_emplace(std::string(name), valueOf(text.substr(quote + 1, end - quote - 1)));
        return std::min(end + 1, text.size());
    }

    static std::string_view wordAt(std::string_view text, std::size_t& at) {
        at = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
        const std::size_t begin = at;
        while (at < text.size() && isNameByte(text[at])) ++at;
        return text.substr(begin, at - begin);
    }

    std::map<std::string, std::string, std::less<>> values_;
};

class Expansion {
public:
    Expansion(std::string_view text, std::size_t most) : text_(text), left_(most) {}

    ExpandedXml make() {
        std::size_t at = 0;
        while (at < text_.size() && made_.refused.empty()) {
            const std::size_t size = sizeOfPart(at);
            if (size == 0) {
                addReference(at);
                continue;
            }
            made_.text += text_.substr(at, size);
            at += size;
        }
        return std::move(made_);
    }

private:
    // How much from here on is written as it is; 0 in front of what may be an entity.
    std::size_t sizeOfPart(std::size_t at) {
        const std::string_view rest = text_.substr(at);
        if (const std::size_t verbatim = endOfVerbatim(rest)) return verbatim;
        constexpr std::string_view type = "<!DOCTYPE";
        if (rest.starts_with(type)) return type.size() + known_.read(rest.substr(type.size()));
        if (rest[0] == '&') return 0;
        return std::min(rest.find_first_of("<&", 1), rest.size());
    }

    void addReference(std::size_t& at) {
        at_ = at;
        const std::string_view name = referenceAt(text_.substr(at));
        at += name.empty() ? 1 : name.size() + 2;
        const std::string* value = known_.find(name);
        if (value != nullptr) return add(*value, 1);
        if (!name.empty() && !isOfXml(name)) noteUnknown(name);
        made_.text += text_.substr(at_, at - at_);
    }

    void noteUnknown(std::string_view name) {
        if (made_.unknown.size() == mostUnknown) return;
        if (unknown_.emplace(name, true).second)
            made_.unknown.push_back({std::string(name), made_.text.size()});
    }

    // A value, in which further entities may stand.
    void add(std::string_view value, std::size_t depth) {
        if (depth > deepest) return refuse("an entity within itself, or 64 within one another");
        if (value.size() + costOfEach > left_) return refuse("entities that make too much text");
        left_ -= value.size() + costOfEach;
        std::size_t at = 0;
        while (at < value.size() && made_.refused.empty()) {
            const std::size_t next = std::min(value.find('&', at), value.size());
            made_.text += inItsPlace(value.substr(at, next - at));
            if (next == value.size()) return;
            const std::string_view name = referenceAt(value.substr(next));
            const std::string* inner = known_.find(name);
            at = next + (name.empty() ? 1 : name.size() + 2);
            if (inner != nullptr)
                add(*inner, depth + 1);
            else
                made_.text += value.substr(next, at - next);
        }
    }

    void refuse(const char* why) {
        made_.refused = why;
        made_.refusedAt = at_;
    }

    std::string_view text_;
    std::size_t left_;
    std::size_t at_ = 0;  // of the entity that is replaced
    Declarations known_;
    std::map<std::string, bool, std::less<>> unknown_;
    ExpandedXml made_;
};

bool refersToEntities(std::string_view text) {
    for (std::size_t at = text.find('&'); at != text.npos; at = text.find('&', at + 1)) {
        const std::string_view name = referenceAt(text.substr(at));
        if (!name.empty() && !isOfXml(name)) return true;
    }
    return false;
}

}  // namespace

std::optional<ExpandedXml> expandedEntities(std::string_view text, std::size_t most) {
    if (!refersToEntities(text)) return {};
    return Expansion(text, most).make();
}

}  // namespace vek::formats
