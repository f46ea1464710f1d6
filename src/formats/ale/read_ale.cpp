#include "formats/ale/ale_entries.h"
#include "formats/ale/field_delimiter.h"
#include "formats/delimited/delimited_scanner.h"
#include "formats/reading/delimiters.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::string_view delimiterEntry = "FIELD_DELIM";

// A log exchange file: a Heading of name/value pairs, a Column line and the rows behind Data.
class AleReader {
public:
    AleReader(Text text, Log& log)
        : log_(log),
          builder_(log, std::move(text.block)),
          begin_(builder_.text() + text.start),
          walk_({begin_, static_cast<std::size_t>(builder_.textEnd() - begin_)}) {}

    void read() {
        expectSection("Heading");
        readHeading();
        readColumns();
        if (!hasColumns_) refuse("the end of the file", "a line of column names behind \"Column\"");
        expectSection("Data");
        readRows();
        builder_.finish();
    }

private:
    struct Entry {
        std::size_t line;
        AleEntry entry;
    };

    [[noreturn]] void refuse(const std::string& found, const std::string& expected) const {
        throw Failure{unreadable, log_.name, {walk_.number(), "", found, expected, ""}};
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
            if (beginsAleColumns(line)) return;
            if (!takeDelimiter(line)) addEntries(line);
        }
        refuse("the end of the file", "a line \"Column\"");
    }

    // FIELD_DELIM and, behind whatever mark, what separates the cells.
    bool takeDelimiter(std::string_view line) {
        if (!sameText(line.substr(0, delimiterEntry.size()), delimiterEntry) ||
            line.size() <= delimiterEntry.size() + 1) {
            return false;
        }
        const std::string_view value = line.substr(delimiterEntry.size() + 1);
        const bool isAlone = value.find('\t') == value.npos;
        if (isAlone || aleDelimiter(value)) settleDelimiter(value);
        if (!aleDelimiter(value)) return false;
        entries_.push_back({walk_.number(), {delimiterEntry, value}});
        return true;
    }

    void settleDelimiter(std::string_view value) {
        const std::optional<char> delimiter = aleDelimiter(value);
        if (!delimiter) return reportDelimiter(value);
        delimiter_ = *delimiter;
        if (delimiter_ != '\t') log_.form.delimiter = delimiter_;
    }

    void reportDelimiter(std::string_view value) {
        log_.report([&]() -> Problem {
            return {walk_.number(), "", "FIELD_DELIM " + inQuotes(value),
                    "TABS, COMMAS, SPACES, another such name, or the mark itself",
                    "the file is read with tabs"};
        });
    }

    // What separates the cells may stand between a name and its value, too.
    void addEntries(std::string_view line) {
        const std::size_t mark = line.find(delimiter_);
        const bool hasTab = line.find('\t') != std::string_view::npos;
        if (!hasTab && mark != std::string_view::npos) {
            entries_.push_back({walk_.number(), {line.substr(0, mark), line.substr(mark + 1)}});
            return;
        }
        const std::vector<AleEntry> entries = aleEntries(line);
        for (const AleEntry& entry : entries) {
            const bool isDelimiter = entries.size() > 1 && sameText(entry.name, delimiterEntry);
            if (isDelimiter) settleDelimiter(entry.value);
            entries_.push_back({walk_.number(), entry});
        }
    }

    void readColumns() {
        std::string_view line;
        if (!nextFilled(line)) return;
        if (isTabbedAllTheSame(line)) reportTabs();
        std::vector<std::string_view> names = split(line, delimiter_);
        while (names.size() > 1 && trimmed(names.back()).empty()) names.pop_back();
        builder_.setColumns(asStrings(names));
        hasColumns_ = true;
        for (const auto& [number, entry] : entries_) {
            builder_.addParameter(number, entry.name, entry.value);
        }
    }

    // FIELD_DELIM may say what another program made of the file before, and no name has a tab in
    // it.
    bool isTabbedAllTheSame(std::string_view names) const {
        return delimiter_ != '\t' && names.find(delimiter_) == names.npos &&
               names.find('\t') != names.npos;
    }

    void reportTabs() {
        log_.report([&]() -> Problem {
            return {walk_.number(), "", "columns with tabs between them",
                    "what FIELD_DELIM says, " + delimiterName(delimiter_),
                    "the file is read with tabs"};
        });
        delimiter_ = '\t';
        log_.form.delimiter = '\0';
    }

    void readRows() {
        char* const first = builder_.textEnd() - walk_.rest().size();
        builder_.endHeading(first);
        const bool isTabbed = delimiter_ == '\t';
        DelimitedScanner scanner(
            first, builder_.textEnd(), delimiter_,
            isTabbed ? DelimitedScanner::Quotes::ordinary : DelimitedScanner::Quotes::respected,
            walk_.number() + 1);
        while (!scanner.atEnd()) {
            const std::size_t line = scanner.line();
            const std::vector<std::string_view>& cells = scanner.takeRecord();
            if (cells.size() == 1 && trimmed(cells[0]).empty()) continue;
            if (cells.size() == 1 && builder_.columnCount() > 1) reportHeading(line, cells[0]);
            builder_.addRow(line, cells, scanner.room(), hasClosingTab(cells) ? 1 : 0);
        }
        const bool isCrlf = scanner.lineEnd() == LineEnd::crlf;
        if (log_.source) {
            log_.source->hasLoneReturns = scanner.sawLoneReturns() || walk_.sawLoneReturns();
        }
        log_.lineEnd = isCrlf ? LineEnd::crlf : walk_.lineEnd();
    }

    // Of two files that were put behind each other.
    void reportHeading(std::size_t line, std::string_view cell) {
        if (trimmed(cell) != "Heading") return;
        log_.report([&]() -> Problem {
            return {line, "", "a line \"Heading\" among the rows", "one log in a file",
                    "all of the log that begins there is read as rows"};
        });
    }

    // Rows may end in a tab as the column line may; it opens no further cell.
    bool hasClosingTab(const std::vector<std::string_view>& cells) const {
        return cells.size() == builder_.columnCount() + 1 && cells.back().empty();
    }

    Log& log_;
    TableBuilder builder_;
    char* begin_;
    LineWalk walk_;
    std::vector<Entry> entries_;
    bool hasColumns_ = false;
    char delimiter_ = '\t';
};

}  // namespace

void readAle(Text text, Log& log) {
    AleReader(std::move(text), log).read();
}

}  // namespace vek::formats
