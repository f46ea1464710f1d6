#include <deque>

#include "formats/json/json.h"
#include "formats/json/json_text.h"
#include "formats/reading/progress.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/name_list.h"

namespace vek::formats {

namespace {

// The cells of the row that is read, a place for every column there is so far.
class RowCells {
public:
    /// False where the row has the column already; the cell is replaced then.
    bool set(std::size_t column, std::string_view cell) {
        if (column >= cells_.size()) {
            cells_.resize(column + 1);
            rowOf_.resize(column + 1);
        }
        const bool isNew = std::exchange(rowOf_[column], row_) != row_;
        cells_[column] = cell;
        count_ = std::max(count_, column + 1);
        return isNew;
    }
    const std::string_view* data() const { return cells_.data(); }
    std::size_t count() const { return count_; }
    void clear() {
        std::fill_n(cells_.begin(), count_, std::string_view());
        count_ = 0;
        ++row_;
    }

private:
    std::vector<std::string_view> cells_;
    std::vector<std::size_t> rowOf_;  // the row that had the column last
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
          progress_("reading " + log.name, builder_.textSize()) {}

    void read() {
        noteAccepted("");
        for (text_.skipBetween(); !text_.atEnd(); text_.skipBetween()) readRows();
        if (log_.source) log_.source->memberNames = {names_.begin(), names_.end()};
        builder_.setColumns({names_.begin(), names_.end()});
        builder_.finish();
    }

private:
    struct Value {
        std::size_t column;
        JsonText::String text;
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
        throw Failure{
            unreadable,
            log_.name,
            {fault.line, "", fromTheText(fault.found), "JSON objects of names and values", ""}};
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
        values_.clear();
        nested_.clear();
        if (!text_.take('{')) refuse();
        text_.skipBlanks();
        if (!text_.take('}')) readValues();
        fillCells(line);
        char* const end = begin_ + (text_.at() - begin_);
        builder_.addWholeRow(line, cells_.data(), cells_.count(), {first, end});
        cells_.clear();
    }

    void readValues() {
        std::size_t expected = 0;  // rows have their names in the same order, as a rule
        do {
            text_.skipBlanks();
            const std::size_t column = readName(expected);
            expected = column + 1;
            text_.skipBlanks();
            if (!text_.take(':')) refuse();
            text_.skipBlanks();
            values_.push_back({column, readValue()});
            text_.skipBlanks();
        } while (text_.take(','));
        if (!text_.take('}')) refuse();
    }

    std::size_t readName(std::size_t expected) {
        const std::optional<JsonText::String> name = text_.takeString();
        if (!name) refuse();
        if (!name->hasEscapes) {
            if (expected < names_.size() && names_[expected] == name->raw) return expected;
            return names_.place(name->raw);
        }
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
        return {*word == "-0" ? word->substr(1) : *word, false};
    }

    JsonText::String readNested() {
        const std::string_view rest(text_.at(),
                                    static_cast<std::size_t>(builder_.textEnd() - text_.at()));
        std::optional<CompactJson> found = compactJson(rest);
        if (!found) refuse();
        text_.goTo(text_.at() + found->size);
        return {nested_.emplace_back(std::move(found->text)), false};
    }

    void fillCells(std::size_t line) {
        for (const Value& value : values_) {
            std::string_view cell = value.text.raw;
            if (value.text.hasEscapes) {
                char* const at = begin_ + (cell.data() - begin_);
                cell = {at, resolveEscapes(at, cell.size())};
            }
            if (!cells_.set(value.column, cell)) reportTwice(line, names_[value.column]);
        }
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
    std::vector<Value> values_;
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
