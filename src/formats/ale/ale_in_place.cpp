#include <vekdb/host/text_util.h>
#include "formats/ale/ale_entries.h"
#include "formats/ale/ale_form.h"
#include "formats/ale/ale_lines.h"
#include "formats/ale/field_delimiter.h"
#include "formats/delimited/delimited_lines.h"
#include "formats/delimited/separated_in_place.h"
#include "formats/log/own_parameters.h"
#include "formats/reading/readers.h"

namespace vek::formats {

namespace {

// The heading of a log exchange file with other entries and names: each line that says something
// else is replaced, and entries that are new stand behind the last one.
class AleHeading {
public:
    AleHeading(const Saving& saving, const std::vector<std::string>& names, char separator)
        : saving_(saving),
          names_(names),
          separator_(separator),
          changed_(changedParameters(saving.log)) {
        for (const ParameterText& one : changed_) {
            if (sameText(one.name, "FIELD_DELIM")) requireDelimiter(one.value);
        }
    }

    std::string patched(std::string_view came) {
        LineWalk walk(came);
        std::string_view line;
        while (walk.next(line)) {
            const auto begin = static_cast<std::size_t>(line.data() - came.data());
            const std::string_view whole =
                came.substr(begin, came.size() - walk.rest().size() - begin);
            addLine(trimmed(line).empty() ? Part::blank : nextPart(line), line, whole);
        }
        return std::move(text_);
    }

private:
    enum class Part { title, entries, columns, names, data, blank };

    // The rows that do not change are left as they are.
    void requireDelimiter(const std::string& value) const {
        if (value.empty() || aleDelimiter(value).value_or('\t') == separator_) return;
        throw Failure{wrongUsage,
                      concat(saving_.log.name, ": FIELD_DELIM ", inQuotes(value),
                             ", expected what separates the cells, which a change in place leaves "
                             "as it is; ",
                             saving_.log.opening.terms->saving, " makes a file with tabs")};
    }

    // The filled lines follow one another as a reader takes them.
    Part nextPart(std::string_view line) {
        const bool isBehind = part_ == Part::title || part_ == Part::entries;
        if (!isBegun_)
            isBegun_ = true;
        else if (isBehind)
            part_ = beginsAleColumns(line) ? Part::columns : Part::entries;
        else
            part_ = part_ == Part::columns ? Part::names : Part::data;
        return part_;
    }

    // Blank lines wait for the line behind them, as a new entry stands in front of them.
    void addLine(Part part, std::string_view line, std::string_view whole) {
        const std::string_view end = endOfLine(whole);
        if (part == Part::blank) {
            blanks_ += whole;
            return;
        }
        if (part == Part::columns) addNewEntries();
        text_ += std::exchange(blanks_, {});
        if (part == Part::entries)
            addEntries(line, whole);
        else if (part == Part::names && !saving_.hasNamesAsTheyCame())
            text_ += concat(namesLine(), end);
        else
            text_ += whole;
        end_ = end;
    }

    void addEntries(std::string_view line, std::string_view whole) {
        if (isSeparated(line)) return addSeparatedEntry(line, whole);
        const std::vector<AleEntry> entries = aleEntries(line);
        std::string text;
        bool isChanged = false;
        for (const AleEntry& entry : entries) {
            const ParameterText* now = changeOf(entry.name);
            isChanged = isChanged || now != nullptr;
            text += text.empty() ? "" : "\t";
            text += now == nullptr ? concat(entry.name, "\t", entry.value)
                                   : aleEntry(std::string(entry.name), now->value, saving_.losses);
        }
        text_ += isChanged ? concat(text, endOfLine(whole)) : std::string(whole);
    }

    // The mark that separates the cells may stand between a name and its value, too.
    bool isSeparated(std::string_view line) const {
        return separator_ != '\t' && line.find('\t') == line.npos &&
               line.find(separator_) != line.npos;
    }

    void addSeparatedEntry(std::string_view line, std::string_view whole) {
        const std::string_view name = line.substr(0, line.find(separator_));
        const ParameterText* const now = changeOf(name);
        text_ += now == nullptr
                     ? std::string(whole)
                     : concat(entryLine(std::string(name), now->value), endOfLine(whole));
        isInMarks_ = true;
    }

    std::string entryLine(const std::string& name, const std::string& value) const {
        std::string line = aleEntry(name, value, saving_.losses);
        const bool isPlain = isInMarks_ && name.find(separator_) == name.npos;
        if (isPlain) line[line.find('\t')] = separator_;
        return line;
    }

    const ParameterText* changeOf(std::string_view name) const {
        for (const ParameterText& one : changed_) {
            if (sameText(one.name, name)) return &one;
        }
        return nullptr;
    }

    void addNewEntries() {
        for (const ParameterText& one : changed_) {
            if (wasThere(saving_.log, one.name) || isTableFilesOwn(one.name)) continue;
            const std::string line = entryLine(one.name, one.value);
            // A reader would take it for the end of the heading.
            if (beginsAleColumns(line)) {
                saving_.losses.add("heading entries that would begin the columns, left out",
                                   inQuotes(one.name));
                continue;
            }
            text_ += concat(line, end_);
        }
    }

    std::string namesLine() const {
        AleForm form;
        form.names = names_;
        std::string line = separator_ == '\t' ? aleNames(form, saving_.losses) : separatedNames();
        if (!trimmed(line).empty()) return line;
        throw Failure{unwritable, saving_.output +
                                      ": a log exchange file needs a column with a name, " +
                                      saving_.log.name + " has none"};
    }

    // No quotes are read around names.
    std::string separatedNames() const {
        std::string line;
        for (std::string name : names_) {
            const std::string came = name;
            for (char& c : name) {
                if (c == separator_ || c == '\n' || c == '\r') c = ' ';
            }
            if (name != came) {
                saving_.losses.add("column names whose separators and line ends become blanks",
                                   inQuotes(came));
            }
            line += concat(name, std::string_view(&separator_, 1));
        }
        if (!line.empty()) line.pop_back();
        return line;
    }

    const Saving& saving_;
    const std::vector<std::string>& names_;
    char separator_;
    bool isInMarks_ = false;  // entries, as far as they were gone through
    std::vector<ParameterText> changed_;
    Part part_ = Part::title;
    bool isBegun_ = false;
    std::string text_;
    std::string blanks_;
    std::string_view end_;
};

class AleInPlace : public SeparatedInPlace {
public:
    explicit AleInPlace(const Saving& saving)
        : SeparatedInPlace(saving, separatorOf(saving.log),
                           separatorOf(saving.log) == '\t' ? DelimitedScanner::Quotes::ordinary
                                                           : DelimitedScanner::Quotes::respected) {}

    // A tab that closed the row closes it again.
    void add(std::string& text, unsigned row, std::string_view piece) override {
        std::size_t came = 0;
        bool isClosed = false;
        if (!piece.empty()) {
            const std::vector<std::string_view>& cells = cellsOf(piece);
            isClosed = cells.size() == saving().log.source->named + 1 && cells.back().empty();
            came = cells.size() - (isClosed ? 1 : 0);
        }
        const std::size_t count = length(row, came) + (isClosed ? 1 : 0);
        if (separator() == '\t')
            addAleRow(text, rows(), row, count, saving().losses);
        else
            addSeparatedRow(text, row, count);
    }

    std::string heading(std::string_view came) override {
        const bool isSame =
            saving().hasNamesAsTheyCame() && changedParameters(saving().log).empty();
        if (isSame) return std::string(came);
        AleForm form;
        form.names = names();
        const std::string now = AleHeading(saving(), form.names, separator()).patched(came);
        if (separator() != '\t') return now;
        for (const ParameterText& one : changedParameters(saving().log)) {
            if (!isTableFilesOwn(one.name)) form.heading.push_back({one.name, one.value});
        }
        tellAleHeading(now, form, saving().losses);
        return now;
    }

private:
    static char separatorOf(const Log& log) {
        return log.form.delimiter == '\0' ? '\t' : log.form.delimiter;
    }

    // Readers pass over a blank line; with a separator behind it, it is a row of one blank cell.
    void addSeparatedRow(std::string& text, unsigned row, std::size_t count) {
        const std::size_t begin = text.size();
        addDelimitedRow(text, rows(), row, count, separator(), saving().losses);
        if (count > 1 || rows().columns.empty()) return;
        const std::string_view cell = rows().cell(row, 0);
        if (!trimmed(cell).empty()) return;
        if (cell.empty()) text.resize(begin);
        text += separator();
    }
};

}  // namespace

std::unique_ptr<RowsInPlace> aleInPlace(const Saving& saving) {
    return std::make_unique<AleInPlace>(saving);
}

}  // namespace vek::formats
