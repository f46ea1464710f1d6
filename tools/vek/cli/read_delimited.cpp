#include <algorithm>

#include "tools/vek/cli/progress.h"
#include "tools/vek/cli/readers.h"

namespace vek {

namespace {

// Comma-separated text as people's programs write it: cells between quotes may hold separators,
// line ends and doubled quotes. Nothing in a cell is touched.
class CellScanner {
public:
    CellScanner(std::string_view text, char separator) : text_(text), separator_(separator) {}

    bool atEnd() const { return at_ >= text_.size(); }
    std::size_t line() const { return line_; }
    bool sawCr() const { return sawCr_; }
    std::size_t place() const { return at_; }
    std::size_t openQuoteLine() const { return openQuoteLine_; }

    // Takes the cells of one record. They live until the next call.
    void takeRecord(std::vector<std::string_view>& cells) {
        cells.clear();
        unescaped_.clear();
        do {
            bool isQuoted = !atEnd() && text_[at_] == '"';
            cells.push_back(isQuoted ? takeQuoted() : takePlain());
        } while (takeSeparator());
        takeLineEnd();
        resolve(cells);
    }

private:
    // A cell whose text differs from the file's stands in a string of its own; strings move as
    // their vector grows, so cells are pointed at them only when all are there.
    struct Unescaped {
        std::size_t cell;
        std::string text;
    };

    bool takeSeparator() {
        ++cell_;
        if (atEnd() || text_[at_] != separator_) return false;
        ++at_;
        return true;
    }

    void takeLineEnd() {
        cell_ = 0;
        if (!atEnd() && text_[at_] == '\r') {
            ++at_;
            sawCr_ = true;
        }
        if (!atEnd() && text_[at_] == '\n') ++at_;
        ++line_;
    }

    bool endsCell(std::size_t at) const {
        char c = text_[at];
        return c == separator_ || c == '\n' ||
               (c == '\r' && at + 1 < text_.size() && text_[at + 1] == '\n') ||
               (c == '\r' && at + 1 == text_.size());
    }

    std::string_view takePlain() {
        std::size_t start = at_;
        while (!atEnd() && !endsCell(at_)) ++at_;
        return text_.substr(start, at_ - start);
    }

    std::size_t findQuote(std::size_t from) const {
        return std::min(text_.find('"', from), text_.size());
    }

    std::string_view takeQuoted() {
        std::size_t openedOn = line_;
        std::size_t start = ++at_;
        std::size_t end = findQuote(at_);
        std::string whole;
        bool isWhole = true;
        while (end + 1 < text_.size() && text_[end + 1] == '"') {
            whole.append(text_, start, end + 1 - start);
            isWhole = false;
            start = end + 2;
            end = findQuote(start);
        }
        countLines(at_, end);
        if (end == text_.size()) openQuoteLine_ = openedOn;
        at_ = std::min(end + 1, text_.size());
        std::string_view last = text_.substr(start, end - start);
        std::string_view behind = takePlain();
        if (isWhole && behind.empty()) return last;
        unescaped_.push_back({cell_, whole + std::string(last) + std::string(behind)});
        return {};
    }

    void countLines(std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) line_ += text_[i] == '\n' ? 1 : 0;
    }

    void resolve(std::vector<std::string_view>& cells) const {
        for (const Unescaped& piece : unescaped_) cells[piece.cell] = piece.text;
    }

    std::string_view text_;
    char separator_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
    std::size_t cell_ = 0;
    std::size_t openQuoteLine_ = 0;
    bool sawCr_ = false;
    std::vector<Unescaped> unescaped_;
};

std::vector<std::string> asStrings(const std::vector<std::string_view>& cells) {
    return {cells.begin(), cells.end()};
}

bool isBlankLine(const std::vector<std::string_view>& cells) {
    return cells.size() == 1 && cells[0].empty();
}

}  // namespace

void readDelimited(std::string_view text, char separator, Log& log) {
    CellScanner scanner(text, separator);
    if (scanner.atEnd()) {
        throw Failure{unreadable, log.name + ":1: nothing, expected a line of column names"};
    }
    std::vector<std::string_view> cells;
    scanner.takeRecord(cells);
    TableBuilder builder(log, asStrings(cells));
    Progress progress("reading " + log.name, text.size());
    while (!scanner.atEnd()) {
        progress.reach(scanner.place());
        std::size_t line = scanner.line();
        scanner.takeRecord(cells);
        // An empty line is no row, but in a log of one column it is an empty cell.
        if (isBlankLine(cells) && log.columnCount() > 1) continue;
        builder.addRow(line, cells);
    }
    if (scanner.openQuoteLine() != 0) {
        log.problems.push_back({scanner.openQuoteLine(), "", "a quote that is never closed",
                                "a closing quote", "everything behind it is in one cell"});
    }
    log.endsLinesWithCr = scanner.sawCr();
    builder.finish();
}

}  // namespace vek
