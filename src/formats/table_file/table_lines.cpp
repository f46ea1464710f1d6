#include "formats/table_file/table_lines.h"

#include <algorithm>
#include <string>
#include <utility>

#include <vekdb/byte_marks.h>
#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include "formats/input/input.h"
#include "formats/table_file/table_places.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

bool isKnownType(std::string_view name) {
    std::string text(trimmed(name));
    return vekdb_string_to_fieldtype(text.c_str()) != DBFieldTypes::none;
}

bool hasOuterBlanks(std::string_view value) {
    return trimmed(value).size() != value.size();
}

// 1 for yes, without a branch.
unsigned char isBlank(char c) {
    return static_cast<unsigned char>((c == ' ') | (static_cast<unsigned char>(c - '\t') < 5));
}

bool isBlankAtEdge(std::string_view value) {
    return !value.empty() && (isBlank(value.front()) | isBlank(value.back())) != 0;
}

unsigned char isAtEdge(char c) {
    return static_cast<unsigned char>((c == '"') | (c == ','));
}

// A blank at the end of a value has what separates values beside it, or the line's end. Looks at
// all bytes, so that many can be looked at together.
bool mayHaveOuterBlanks(std::string_view line) {
    if (line.empty()) return false;
    unsigned char may = isBlank(line.front()) | isBlank(line.back());
    for (std::size_t i = 1; i < line.size(); ++i) {
        may |= isBlank(line[i - 1]) & isAtEdge(line[i]);
        may |= isAtEdge(line[i - 1]) & isBlank(line[i]);
    }
    return may != 0;
}

// Whether there is a backslash or a control character.
bool mayBeEscaped(std::string_view line) {
    unsigned char may = 0;
    for (char c : line) {
        const bool isEscape = (c == '\\') | (static_cast<unsigned char>(c) < ' ');
        may |= static_cast<unsigned char>(isEscape);
    }
    return may != 0;
}

// Takes the lines of a file off, which is read again piece by piece.
class LinesAgain {
public:
    explicit LinesAgain(Input& input) : input_(input) { input_.loaderDescriptor(); }

    /// Valid until the next call.
    bool next(std::string_view& line) {
        std::size_t end = text_.find('\n', at_);
        while (end == text_.npos && readMore()) end = text_.find('\n', text_.size() - last_);
        if (at_ == text_.size()) return false;
        line = std::string_view(text_).substr(at_, end - at_);
        at_ = end == text_.npos ? text_.size() : end + 1;
        if (line.ends_with('\r')) line.remove_suffix(1);
        ++number_;
        return true;
    }
    std::size_t number() const { return number_; }
    /// Bytes of the lines that were taken off, with their ends.
    std::uint64_t taken() const { return read_ - (text_.size() - at_); }

private:
    static constexpr std::size_t piece = 1 << 18;

    // Behind what is left of the line that was begun.
    bool readMore() {
        text_.erase(0, std::exchange(at_, 0));
        const std::size_t kept = text_.size();
        text_.resize(kept + piece);
        last_ = input_.readFrom(read_, text_.data() + kept, piece);
        text_.resize(kept + last_);
        read_ += last_;
        return last_ != 0;
    }

    Input& input_;
    std::string text_;
    std::size_t at_ = 0;
    std::size_t last_ = 0;  // bytes that were read last
    std::uint64_t read_ = 0;
    std::size_t number_ = 0;
};

// A value as it stands between its quotes; `at` goes behind it and the comma there.
std::string_view takeRawValue(std::string_view line, std::size_t& at) {
    const std::size_t start = at;
    bool isQuoted = line[at] == '"';
    if (isQuoted) ++at;
    while (at < line.size() && (isQuoted || line[at] != ',')) {
        if (isQuoted) at = std::min(line.find('"', at), line.size());
        if (at < line.size() && line[at++] == '"') isQuoted = !isQuoted;
    }
    std::string_view value = line.substr(start, at - start);
    ++at;
    const bool isEnclosed = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    return isEnclosed ? value.substr(1, value.size() - 2) : value;
}

class TableText {
public:
    using Tell = std::function<void(const Problem&)>;

    TableText(Input& input, const Log& log, const Tell& tell)
        : input_(input), lines_(input), log_(log), tell_(tell) {}

    void check() {
        std::string_view line;
        bool isHeader = true;
        while (isHeader && lines_.next(line)) isHeader = !isMagicLine(line);
        lines_.next(line);
        if (lines_.next(line)) checkTypes(rawValues(line));
        if (lines_.next(line)) checkValues(line);
        // Values of such a line have no blanks at their ends.
        if (isAsWritten(log_, lines_.taken(), input_.size())) return;
        while (lines_.next(line) && !trimmed(line).empty()) checkValues(line);
    }

private:
    void checkTypes(const std::vector<std::string_view>& types) {
        for (std::size_t i = 0; i < types.size(); ++i) {
            if (!isKnownType(types[i]))
                add(i, "type " + inQuotes(types[i]),
                    "a known type; it is "
                    "read as text");
        }
    }

    void checkValues(std::string_view line) {
        if (!mayHaveOuterBlanks(line)) return;
        std::size_t column = 0;
        for (std::size_t at = 0; at < line.size(); ++column) {
            const std::string_view value = takeRawValue(line, at);
            if (!hasOuterBlanks(value)) continue;
            add(column, inQuotes(value), "no blanks at the ends, which are lost on reading");
        }
    }

    void add(std::size_t column, const std::string& what, const std::string& expected) {
        std::string name = log_.columnName(static_cast<unsigned>(column));
        tell_({lines_.number(), name, what, expected, ""});
    }

    const Input& input_;
    LinesAgain lines_;
    const Log& log_;
    const Tell& tell_;
};

}  // namespace

bool takePlainValues(std::string_view line, std::vector<std::string_view>& values) {
    constexpr std::size_t longest = 4000;
    values.clear();
    if (line.size() > longest || mayBeEscaped(line)) return false;
    const char* const lineEnd = line.data() + line.size();
    ByteMarks quotes(line.data(), lineEnd, {'"', '"', '"', '"'});
    for (const char* at = line.data(); at != lineEnd && *at == '"'; ++at) {
        const char* const end = quotes.next(at + 1);
        if (end == lineEnd) return false;
        values.emplace_back(at + 1, static_cast<std::size_t>(end - at - 1));
        if (isBlankAtEdge(values.back())) return false;
        at = end + 1;
        if (at == lineEnd) return true;
        if (*at != ',') return false;
    }
    return false;
}

std::vector<std::string_view> rawValues(std::string_view line) {
    std::vector<std::string_view> values;
    for (std::size_t at = 0; at < line.size();) values.push_back(takeRawValue(line, at));
    return values;
}

bool isMagicLine(std::string_view line) {
    TextFile file;
    file.appendLine(line);
    dbrecord values(0);
    values.read(file);
    return values.get_num_fields() > 0 && sameText(values.fieldView(0), "VEKDB");
}

void tellTableText(Input& input, const Log& log, const std::function<void(const Problem&)>& tell) {
    TableText(input, log, tell).check();
}

}  // namespace vek::formats
