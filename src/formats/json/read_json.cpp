#include <deque>

#include "formats/input/progress.h"
#include "formats/json/bare_text.h"
#include "formats/json/json.h"
#include "formats/json/json_text.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/encoding.h"
#include "formats/text/name_list.h"

namespace vek::formats {

namespace {

// The cells of the row that is read, a place for every column there is so far.
class RowCells {
public:
    /// False where the row has the column already; the cell is replaced then.
    bool set(std::size_t column, const JsonText::String& cell) {
        if (column >= cells_.size()) {
            cells_.resize(column + 1);
            marks_.resize(column + 1);
        }
        if (cell.hasEscapes) escaped_.push_back(column);
        const bool isNew = marks_[column].row != row_;
        marks_[column] = {row_, cell.hasEscapes};
        cells_[column] = cell.raw;
        count_ = std::max(count_, column + 1);
        return isNew;
    }
    /// Writes what the escapes of the cells stand for in their place, in the text from `begin` on.
    void resolve(char* begin) {
        for (std::size_t column : escaped_) {
            if (!std::exchange(marks_[column].hasEscapes, false)) continue;
            char* const at = begin + (cells_[column].data() - begin);
            cells_[column] = {at, resolveEscapes(at, cells_[column].size())};
        }
    }
    const std::string_view* data() const { return cells_.data(); }
    std::size_t count() const { return count_; }
    void clear() {
        std::fill_n(cells_.begin(), count_, std::string_view());
        escaped_.clear();
        count_ = 0;
        ++row_;
    }

private:
    struct Mark {
        std::size_t row = 0;  // that had the column last
        bool hasEscapes = false;
    };

    std::vector<std::string_view> cells_;
    std::vector<Mark> marks_;
    std::vector<std::size_t> escaped_;  // columns, some more than once
    std::size_t row_ = 1;
    std::size_t count_ = 0;
};

// Objects of names and values, alone or in arrays. Values are kept as they were written (strings
// without their quotes, everything else as its own text, null as nothing). Nothing of a row is
// changed in the text before all of it was accepted, so that the text can be asked what is wrong.
class JsonReader {
public:
    JsonReader(Text text, Log& log)
        : log_(log),
          builder_(log, std::move(text.block)),
          begin_(builder_.text() + text.start),
          text_(begin_, builder_.textEnd()),
          progress_(log.opening.watcher, "reading " + log.name, builder_.textSize()) {}

    void read() {
        noteAccepted("");
        for (text_.skipBetween(); !text_.atEnd(); text_.skipBetween()) readRows();
        if (log_.source) log_.source->memberNames = {names_.begin(), names_.end()};
        builder_.setColumns({names_.begin(), names_.end()});
        builder_.finish();
    }

private:
    // What stands in front of a value: its name and a colon. Rows have the same in the same place,
    // as a rule.
    struct Front {
        std::string text;
        std::size_t lines = 0;
        std::size_t column = 0;
    };

    void readRows() {
        noteAccepted("");
        text_.takeMark();
        text_.skipBlanks();
        if (text_.take('[')) return readArray();
        readRow();
        noteAccepted("");
    }

    void readArray() {
        text_.skipBlanks();
        if (text_.take(']')) return;
        do {
            text_.skipBlanks();
            readRow();
            noteAccepted("[{}");
            text_.skipBlanks();
        } while (text_.take(','));
        if (!text_.take(']')) refuse();
    }

    // What is wrong from here on shows when `before` is taken to stand in front.
    void noteAccepted(std::string_view before) {
        before_ = before;
        accepted_ = text_.at();
        acceptedLine_ = text_.line();
    }

    [[noreturn]] void refuse() {
        const std::string_view rest(accepted_,
                                    static_cast<std::size_t>(builder_.textEnd() - accepted_));
        const JsonFault fault = faultOfJsonRows(before_, rest, acceptedLine_);
        if (isOtherEncoding(fault.found, rest)) refuseEncoding(fault);
        throw Failure{
            unreadable,
            log_.name,
            {fault.line, "", fromTheText(fault.found), "JSON objects of names and values", ""}};
    }

    // Whether a string ends at bytes that are no UTF-8. What was found may end within a character
    // of a text that is.
    static bool isOtherEncoding(std::string_view found, std::string_view text) {
        return found.starts_with("\"\"") && !isWellFormedUtf8(found) && !isWellFormedUtf8(text);
    }

    [[noreturn]] void refuseEncoding(const JsonFault& fault) const {
        throw Failure{unreadable,
                      log_.name,
                      {fault.line, "", concat("bytes that are no UTF-8 in ", fault.found), "UTF-8",
                       concat("say what the file is with ", log_.opening.terms->encoding)}};
    }

    // What was found begins with what was only taken to stand in front.
    std::string fromTheText(const std::string& found) const {
        const std::string front = concat("\"", before_);
        if (before_.empty() || !found.starts_with(front)) return found;
        const std::string rest = found.substr(front.size());
        return rest == "\"" ? "the end of the text" : "\"" + rest;
    }

    void readRow() {
        progress_.reach(static_cast<std::size_t>(text_.at() - begin_));
        char* const first = begin_ + (text_.at() - begin_);
        const std::size_t line = text_.line();
        cells_.clear();
        nested_.clear();
        if (!text_.take('{')) refuse();
        text_.skipBlanks();
        if (!text_.take('}')) readValues(line);
        cells_.resolve(begin_);
        char* const end = begin_ + (text_.at() - begin_);
        builder_.addWholeRow(line, cells_.data(), cells_.count(), {first, end});
    }

    void readValues(std::size_t line) {
        std::size_t place = 0;
        do {
            const std::size_t column = readFront(place++);
            text_.skipBlanks();
            const Bare bare = bareOf(text_.peek());
            const bool isNew = cells_.set(column, readValue());
            if (bare != Bare::no || !isNew) noteBare(column, bare);
            if (!isNew) reportTwice(line, names_[column]);
            text_.skipBlanks();
        } while (text_.take(','));
        if (!text_.take('}')) refuse();
    }

    void noteBare(std::size_t column, Bare bare) {
        const auto row = static_cast<unsigned>(log_.lines.size());
        log_.bare.note(row, static_cast<unsigned>(column), bare);
    }

    // The column of the value that comes.
    std::size_t readFront(std::size_t place) {
        if (place >= fronts_.size()) fronts_.resize(place + 1);
        Front& front = fronts_[place];
        if (!front.text.empty() && text_.takeAgain(front.text, front.lines)) return front.column;
        const char* const first = text_.at();
        const std::size_t line = text_.line();
        text_.skipBlanks();
        const std::size_t column = readName();
        text_.skipBlanks();
        if (!text_.take(':')) refuse();
        front = {std::string(first, text_.at()), text_.line() - line, column};
        return column;
    }

    std::size_t readName() {
        const std::optional<JsonText::String> name = text_.takeString();
        if (!name) refuse();
        if (!name->hasEscapes) return names_.place(name->raw);
        std::string resolved(name->raw);
        resolved.resize(resolveEscapes(resolved.data(), resolved.size()));
        return names_.place(resolved);
    }

    JsonText::String readValue() {
        if (text_.peek() == '{' || text_.peek() == '[') return readNested();
        if (text_.peek() == '"') {
            const std::optional<JsonText::String> string = text_.takeString();
            if (!string) refuse();
            return *string;
        }
        const std::optional<std::string_view> word = text_.takeWord();
        if (!word) refuse();
        if (*word == "null") return {};
        return {*word, false};
    }

    JsonText::String readNested() {
        const std::string_view rest(text_.at(),
                                    static_cast<std::size_t>(builder_.textEnd() - text_.at()));
        std::optional<CompactJson> found = compactJson(rest);
        if (!found) refuse();
        text_.goTo(text_.at() + found->size);
        return {nested_.emplace_back(std::move(found->text)), false};
    }

    void reportTwice(std::size_t line, const std::string& name) {
        log_.report([&]() -> Problem {
            return {line, "", "the name " + inQuotes(name) + " a second time", "once in an object",
                    "the last value is kept"};
        });
    }

    Log& log_;
    TableBuilder builder_;
    char* begin_;
    JsonText text_;
    Progress progress_;
    NameList names_;
    std::vector<Front> fronts_;
    std::deque<std::string> nested_;  // values that stand no more as they were written
    RowCells cells_;
    std::string_view before_;
    const char* accepted_ = nullptr;
    std::size_t acceptedLine_ = 1;
};

}  // namespace

void readJson(Text text, Log& log) {
    JsonReader(std::move(text), log).read();
}

}  // namespace vek::formats
