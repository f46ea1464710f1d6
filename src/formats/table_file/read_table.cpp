#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include <vekdb/row_choice.h>
#include <vekdb/row_copies.h>
#include "formats/choosing/conditions.h"
#include "formats/choosing/ranges.h"
#include "formats/input/limits.h"
#include "formats/input/read_errors.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/table_file/exact_cells.h"
#include "formats/table_file/table_lines.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr int allRows = INT_MAX;

LightweightString<wchar_t> wide(const std::string& path) {
    return pathFromBytes(LightweightString<char>(path.c_str()));
}

void requireThatItWasRead(const Log& log, int error) {
    if (error == 0) return;
    if (error == EBUSY) {
        throw Failure{unreadable,
                      log.name,
                      {0, "", "was changed while it was read, a file at rest was expected", "",
                       "try again when nobody writes to it"}};
    }
    refuseReading(log.name, error);
}

// The library bounds what it reads by the file; how much a log may be, a person says.
void requireCellsOf(const Log& log, const Input& input) {
    requireCells(log.name, log.rowsInSource(), log.columnCount(), input.size(), log.opening.limits,
                 *log.opening.terms);
}

// Takes the rows that answer what can be asked of the table in one query, and notes their numbers.
class WantedRows : public RowChoice {
public:
    WantedRows(const Wanted& wanted, const Log& log) : wanted_(wanted), log_(log) {}

    void begin(vekdb&) override {
        numbers_.clear();
        read_ = 0;
        std::vector<Condition> asked = conditions();
        takesAll_ = asked.empty();
        if (!takesAll_) askTable(log_, asked);
    }
    bool takes(const dbrecord&, bool matches) override {
        if (takesAll_) return true;
        ++read_;
        if (matches) numbers_.push_back(read_);
        return matches;
    }

    std::size_t leftOut() const { return read_ - numbers_.size(); }
    /// Of the rows taken; none where all were.
    const std::vector<std::uint32_t>& numbers() const { return numbers_; }

private:
    // Only what can be asked in one query. What is wrong with a condition is said where all are
    // put to the rows. Notes of exact cells tell rows by their numbers, so all are wanted then.
    std::vector<Condition> conditions() const {
        if (hasExactNotes(log_)) return {};
        std::vector<Condition> asked;
        try {
            for (const std::string& text : wanted_) addTo(asked, parseCondition(log_, text));
        } catch (const Failure&) {
            return {};
        }
        return asked;
    }

    void addTo(std::vector<Condition>& asked, const Condition& condition) const {
        const bool isForTable =
            condition.op == Operator::contains && !isOfLabelRange(log_, condition.column);
        if (!isForTable) return;
        if (!asksFor(asked, condition.column)) asked.push_back(condition);
    }

    const Wanted& wanted_;
    const Log& log_;
    bool takesAll_ = false;
    std::vector<std::uint32_t> numbers_;
    std::uint32_t read_ = 0;
};

// Reads a table file through the library, and goes on where the library stops at a line of the
// wrong length: every row is kept and reported.
class TableReader {
public:
    TableReader(Input& input, Log& log)
        : input_(input), file_(input.loaderDescriptor()), log_(log) {}

    void read(const Wanted& wanted) {
        log_.table = std::make_unique<vekdb>();
        const End before = end();
        if (!readWanted(wanted)) readAll();
        requireCellsOf(log_, input_);
        const End after = end();
        log_.endsInLine = before.isInLine || after.isInLine || before.size != after.size;
        reportZeros();
        restoreExactCells(log_);
        log_.table->set_filename(wide(log_.path));
        if (log_.table->get_modified()) log_.table->clear_changed();
    }

private:
    // How the file ends. One that grows may end otherwise than what was read of it.
    struct End {
        std::uint64_t size;
        bool isInLine;
    };

    End end() const {
        const std::uint64_t size = input_.size();
        char last = '\n';
        if (size > 0) input_.readFrom(size - 1, &last, 1);
        return {size, last != '\n'};
    }

    // False where every row is wanted, and where the file has anything but rows of its table.
    bool readWanted(const Wanted& wanted) {
        if (wanted.empty()) return false;
        WantedRows rows(wanted, log_);
        log_.table->loadFromDescriptor(file_, rows, true);
        if (!log_.table->get_loaded_whole()) return false;
        headerLines_ = headerLines();
        log_.leftOut = rows.leftOut();
        log_.numbers = rows.numbers();
        numberRows();
        return true;
    }

    void readAll() {
        log_.table->loadFromDescriptor(file_, allRows, true);
        if (!log_.table->get_valid()) refuse();
        headerLines_ = headerLines();
        if (log_.source) log_.source->headingLines = headerLines_;
        // The library stops at a line of the wrong length, and skips lines behind a row that
        // looks like a header.
        if (log_.table->get_loaded_whole())
            numberRows();
        else
            readRest();
    }

    // As a rule the header stands in the first piece of the text.
    std::size_t headerLines() {
        const std::size_t lines = headerLines(wholeHeadLines());
        return lines != 0 ? lines : headerLines(input_.text());
    }

    std::string_view wholeHeadLines() const {
        const std::string_view head = input_.head();
        return head.substr(0, head.rfind('\n') + 1);
    }

    // The parameter lines, the magic line and the three lines of the column header.
    static std::size_t headerLines(std::string_view text) {
        LineWalk walk(text, LineWalk::Ends::lineFeed);
        std::string_view line;
        while (walk.next(line)) {
            if (isMagicLine(line)) return walk.number() + 3;
        }
        return 0;
    }

    void readRest() {
        text_ = input_.text();
        if (log_.rowCount() == countRowLines())
            numberRows();
        else
            readLineByLine();
        reportRest(headerLines_ + log_.rowCount());
    }

    // Lines up to the end or to an empty one.
    std::size_t countRowLines() const {
        LineWalk walk(text_, LineWalk::Ends::lineFeed);
        std::string_view line;
        while (walk.next(line)) {
            if (walk.number() > headerLines_ && isEssentiallyEmpty(line)) {
                return walk.number() - 1 - headerLines_;
            }
        }
        return walk.number() - std::min(walk.number(), headerLines_);
    }

    // The library tells of lines behind the heading that it did not read to their ends.
    void reportZeros() {
        const bool isRestRead =
            log_.table->get_loaded_whole() && headerLines(wholeHeadLines()) != 0;
        const std::string_view text = isRestRead ? wholeHeadLines() : input_.text();
        if (text.find('\0') == text.npos) return;
        LineWalk walk(text, LineWalk::Ends::lineFeed);
        std::string_view line;
        while (walk.next(line) && walk.number() <= headerLines_ + log_.rowsInSource()) {
            if (line.find('\0') != line.npos) reportZero(walk.number(), line);
        }
    }

    void reportZero(std::size_t number, std::string_view line) {
        const std::size_t at = line.find('\0');
        const std::size_t behind = line.size() - at - 1;
        log_.report([&]() -> Problem {
            return {number, "", concat("a zero byte at byte ", std::to_string(at + 1)), "text",
                    behind == 0 ? "the line ends there"
                                : concat("the line ends there, ", counted(behind, "byte"),
                                         " behind it ", behind == 1 ? "is" : "are", " not read")};
        });
    }

    void numberRows() {
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            log_.lines.push_back(static_cast<std::uint32_t>(headerLines_ + log_.numberOf(row)));
        }
    }

    [[noreturn]] void refuse(std::size_t line, const std::string& found,
                             const std::string& expected) const {
        throw Failure{unreadable, log_.name, {line, "", found, expected, ""}};
    }

    [[noreturn]] void refuse() {
        requireThatItWasRead(log_, log_.table->get_read_error());
        refuseFirstLine();
        text_ = input_.text();
        headerLines_ = headerLines(text_);
        dberror error{};
        bool isSet = log_.table->read_error_info(error);
        std::string widths = std::to_string(log_.columnCount()) + ", as on the widths line";
        if (isSet && error.values[1] == 3) {
            refuse(headerLines_ - 1, "another number of column types", widths);
        }
        if (isSet && error.values[1] == 4) {
            refuse(headerLines_, "another number of column names", widths);
        }
        refuse(lineOfOddParameter(), headerLines_ == 0 ? "no line \"VEKDB\"" : "no name and colon",
               "parameter lines, a line \"VEKDB\" and the column header");
    }

    // What is no table is not read further for its first line.
    void refuseFirstLine() {
        text_ = input_.head();
        if (text_.starts_with("\xEF\xBB\xBF")) {
            refuse(1, "a byte order mark", "the line \"VEKDB:Rev 1\"");
        }
        if (!startsWithParameters()) {
            throw Failure{
                unreadable,
                log_.name,
                {1, "", inQuotes(firstLine()), "a table file's first line, \"VEKDB:Rev 1\"", ""}};
        }
    }

    std::string_view firstLine() const { return text_.substr(0, text_.find('\n')); }

    bool startsWithParameters() const {
        std::string_view line = trimmed(firstLine());
        if (line.starts_with('"')) line.remove_prefix(1);
        return sameText(trimmed(line).substr(0, 6), "VEKDB:");
    }

    std::size_t lineOfOddParameter() const {
        LineWalk walk(text_, LineWalk::Ends::lineFeed);
        std::string_view line;
        while (walk.next(line)) {
            if (isMagicLine(line)) return 1;
            if (line.find(':') == std::string_view::npos) return walk.number();
        }
        return std::max<std::size_t>(walk.number(), 1);
    }

    // The columns come first, while there is no row that each of them would have to be added to.
    void readLineByLine() {
        if (log_.source) log_.source->isDamaged = true;
        log_.table->delete_records(0, static_cast<int>(log_.rowCount()));
        TextFile file;
        if (!file.load(file_, '\n')) requireThatItWasRead(log_, file.error());
        const unsigned declared = log_.columnCount();
        unsigned most = declared;
        std::size_t rows = 0;
        forEachRow(file, [&](const dbrecord& values, std::size_t) {
            most = std::max(most, filledCount(values));
            requireCells(log_.name, ++rows, most, text_.size(), log_.opening.limits,
                         *log_.opening.terms);
        });
        addExtraColumns(most - declared);
        RowCopies copies(*log_.table);
        forEachRow(file, [&](dbrecord& values, std::size_t steps) {
            addRow(copies, file.currentLine, values, declared);
            if (steps > values.get_num_fields()) reportCut(file.currentLine, values);
        });
    }

    template <class Take>
    void forEachRow(TextFile& file, Take take) {
        const unsigned lines = file.size();
        for (auto i = static_cast<unsigned>(headerLines_); i < lines; ++i) {
            if (isEssentiallyEmpty(file.line(i))) break;
            file.currentLine = i;
            dbrecord values(0);
            const int steps = values.read(file);
            take(values, static_cast<std::size_t>(steps));
        }
    }

    // Up to the last value that is not empty.
    static unsigned filledCount(const dbrecord& values) {
        unsigned count = values.get_num_fields();
        while (count > 0 && values.fieldView(count - 1).empty()) --count;
        return count;
    }

    // Rows that cost no more than those of a table that is whole.
    void addRow(RowCopies& rows, std::size_t line, const dbrecord& values, unsigned declared) {
        log_.lines.push_back(static_cast<std::uint32_t>(line));
        cells_.resize(values.get_num_fields());
        values.fieldViews(cells_.data(), values.get_num_fields());
        rows.append(cells_.data(), cells_.size());
        if (values.get_num_fields() != declared) {
            reportLength(log_, line, values.get_num_fields(), declared);
        }
        reportHeaderLike(line, values.fieldView(0));
    }

    // Control characters between values are steps, too, but lose nothing.
    void reportCut(std::size_t line, const dbrecord& values) {
        constexpr unsigned mostValues = 65535;
        if (values.get_num_fields() < mostValues || !log_.notRead.empty()) return;
        log_.notRead = worded(
            log_.name, {line, "", "more than 65535 values",
                        "as many as a table has columns at most", "the others are not read"});
    }

    void reportHeaderLike(std::size_t line, std::string_view value) {
        if (!sameText(value, "VEKDB")) return;
        log_.report([&]() -> Problem {
            return {line, log_.columnName(0), inQuotes(value), "another value in the first column",
                    "the row is kept, but other programs take it for a header"};
        });
    }

    void addExtraColumns(std::size_t count) {
        for (const std::string& name : extraColumnNames(log_.columnNames(), count)) {
            if (log_.table->addField({cellText(name), DBFieldTypes::text}) != noColumn) continue;
            throw Failure{unreadable, log_.name, {0, "", "more than 65535 columns", "", ""}};
        }
    }

    // An empty line ends the rows; what stands behind it is not the table's.
    void reportRest(std::size_t readLines) {
        LineWalk walk(text_, LineWalk::Ends::lineFeed);
        std::string_view line;
        std::size_t first = 0;
        std::size_t unread = 0;
        bool isEndedByZero = false;
        while (walk.next(line)) {
            if (walk.number() == readLines + 1) isEndedByZero = line.find('\0') != line.npos;
            if (walk.number() <= readLines || trimmed(line).empty()) continue;
            if (first == 0) first = walk.number();
            ++unread;
        }
        if (unread == 0) return;
        log_.notRead = worded(
            log_.name,
            {readLines + 1, "",
             isEndedByZero
                 ? "a line that a zero byte ends before its first value, which ends the rows"
                 : "an empty line, which ends the rows",
             "rows to the end of the file",
             counted(unread, "line") + " from line " + std::to_string(first) + " on not read"});
    }

    Input& input_;
    int file_;
    Log& log_;
    std::string_view text_;
    std::size_t headerLines_ = 0;
    std::vector<std::string_view> cells_;
};

}  // namespace

void readTable(Input& input, const Wanted& wanted, Log& log) {
    TableReader(input, log).read(wanted);
}

void readPlainCsv(Input& input, Log& log) {
    log.table = std::make_unique<vekdb>();
    // The library knows that variant by the name's ending.
    log.table->set_filename(L".csv");
    log.table->loadFromDescriptor(input.loaderDescriptor(), allRows, false);
    if (!log.table->get_valid()) {
        requireThatItWasRead(log, log.table->get_read_error());
        throw Failure{
            unreadable, log.name, {1, "", "could not be read as comma-separated text", "", ""}};
    }
    requireCellsOf(log, input);
    for (unsigned row = 0; row < log.rowCount(); ++row) log.lines.push_back(row + 2);
    if (log.source) log.source->headingLines = 1;
    log.table->set_filename(wide(log.path));
    log.table->set_param_val("VEKDB", "Rev 1");
    log.table->clear_changed();
}

}  // namespace vek::formats
