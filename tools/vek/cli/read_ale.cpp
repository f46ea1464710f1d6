#include <optional>

#include "tools/vek/cli/readers.h"

namespace vek {

namespace {

// A log exchange file: a Heading of name/value pairs, a Column line and the rows behind Data.
class AleReader {
public:
    AleReader(std::string_view text, Log& log) : walk_(text), log_(log) {}

    void read() {
        expectSection("Heading");
        readHeading();
        readColumns();
        if (!builder_) refuse("the end of the file", "a line of column names behind \"Column\"");
        expectSection("Data");
        readRows();
        builder_->finish();
        log_.endsLinesWithCr = walk_.sawCr();
    }

private:
    struct Entry {
        std::size_t line;
        std::string_view name;
        std::string_view value;
    };

    [[noreturn]] void refuse(const std::string& found, const std::string& expected) const {
        throw Failure{unreadable, worded(log_.name, {walk_.number(), "", found, expected, ""})};
    }

    // The next line that is not empty.
    bool nextFilled(std::string_view& line) {
        while (walk_.next(line)) {
            if (!trimmed(line).empty()) return true;
        }
        return false;
    }

    void expectSection(const char* name) {
        std::string_view line;
        std::string expected = "a line " + inQuotes(name);
        if (!nextFilled(line)) refuse("the end of the file", expected);
        if (!sameText(trimmed(line), name)) refuse(inQuotes(trimmed(line)), expected);
    }

    void readHeading() {
        std::string_view line;
        while (nextFilled(line)) {
            if (sameText(trimmed(line), "Column")) return;
            addEntries(line);
        }
        refuse("the end of the file", "a line \"Column\"");
    }

    // One pair a line as a rule; some programs put all of them on one.
    void addEntries(std::string_view line) {
        std::vector<std::string_view> pieces = split(line, '\t');
        while (pieces.size() > 2 && pieces.back().empty()) pieces.pop_back();
        if (pieces.size() <= 2 || pieces.size() % 2 != 0) {
            std::size_t tab = std::min(line.find('\t'), line.size());
            addEntry(line.substr(0, tab), line.substr(std::min(tab + 1, line.size())));
            return;
        }
        for (std::size_t i = 0; i < pieces.size(); i += 2) addEntry(pieces[i], pieces[i + 1]);
    }

    void addEntry(std::string_view name, std::string_view value) {
        entries_.push_back({walk_.number(), name, value});
    }

    void readColumns() {
        std::string_view line;
        if (!nextFilled(line)) return;
        std::vector<std::string_view> names = split(line, '\t');
        while (names.size() > 1 && trimmed(names.back()).empty()) names.pop_back();
        builder_.emplace(log_, std::vector<std::string>(names.begin(), names.end()));
        for (const Entry& entry : entries_) {
            builder_->addParameter(entry.line, entry.name, entry.value);
        }
    }

    void readRows() {
        std::string_view line;
        while (walk_.next(line)) {
            bool isRow = line.find('\t') != std::string_view::npos || !trimmed(line).empty();
            if (isRow) builder_->addRow(walk_.number(), withoutClosingTab(split(line, '\t')));
        }
    }

    // Rows may end in a tab as the column line may; it opens no further cell.
    std::vector<std::string_view> withoutClosingTab(std::vector<std::string_view> cells) const {
        if (cells.size() == log_.columnCount() + 1 && cells.back().empty()) cells.pop_back();
        return cells;
    }

    LineWalk walk_;
    Log& log_;
    std::vector<Entry> entries_;
    std::optional<TableBuilder> builder_;
};

}  // namespace

void readAle(std::string_view text, Log& log) {
    AleReader(text, log).read();
}

}  // namespace vek
