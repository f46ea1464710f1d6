#include <vekdb/host/split.h>
#include "formats/delimited/delimited_lines.h"
#include "formats/delimited/separated_in_place.h"
#include "formats/reading/table_builder.h"
#include "formats/text/utf8.h"
#include "formats/writing/plain_lines.h"

namespace vek::formats {

namespace {

class DelimitedInPlace : public SeparatedInPlace {
public:
    DelimitedInPlace(const Saving& saving, char separator)
        : SeparatedInPlace(saving, separator, DelimitedScanner::Quotes::respected) {}

    void add(std::string& text, unsigned row, std::string_view piece) override {
        const std::size_t came = piece.empty() ? 0 : cellsOf(piece).size();
        const std::size_t count = length(row, came);
        const std::string_view plain = plainLine(row, count);
        if (!plain.empty())
            text += plain;
        else
            addDelimitedRow(text, rows(), row, count, separator(), saving().losses);
    }

    std::string heading(std::string_view came) override {
        const TextForm& form = saving().log.form;
        if (saving().hasNamesAsTheyCame()) return std::string(came);
        if (form.hasNoHeading) {
            tellNames();
            return std::string(came);
        }
        return concat(came.starts_with(byteOrderMark) ? byteOrderMark : "", form.skipped,
                      delimitedNames(names(), separator(), saving().output, saving().losses),
                      endOfLine(came));
    }

private:
    // Empty where a cell needs more than to be copied, or some are left out.
    std::string_view plainLine(unsigned row, std::size_t count) {
        if (count < 2 || count != rows().columns.size()) return {};
        if (!plain_) plain_.emplace(rows(), separator(), "\"\n\r");
        return plain_->line(row, {});
    }

    // Without a heading columns are called by where they stand.
    void tellNames() const {
        const Log& log = saving().log;
        const std::vector<std::string> now = names();
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (now[i] == numberedColumnName(i)) continue;
            const unsigned from = log.source->whereFrom(saving().columns[i]);
            const bool isRenamed =
                from < log.source->columns.size() && log.source->columns[from].name != now[i];
            if (isRenamed) {
                throw Failure{wrongUsage,
                              concat(log.name, ": has no heading that could say ", inQuotes(now[i]),
                                     "; write one into its first line, and read it "
                                     "as a file with a heading")};
            }
            saving().losses.add("column names have no place in a file without a heading",
                                inQuotes(now[i]));
        }
    }

    std::optional<PlainLines> plain_;
};

// The library's own variant: in lines that a line feed ends, quotes are part of the values, and a
// comma at a line's very start or end makes no further value. A row that this form cannot hold is
// refused.
class PlainCsvInPlace : public RowsInPlace {
public:
    explicit PlainCsvInPlace(const Saving& saving) : saving_(saving) {}

    bool reads(std::string_view piece, unsigned row) override {
        const Values values = valuesOf(piece);
        for (unsigned i = 0; i < saving_.log.columnCount(); ++i) {
            if (valueAt(values, i) != saving_.log.cell(row, i)) return false;
        }
        return true;
    }

    void add(std::string& text, unsigned row, std::string_view piece) override {
        std::vector<std::string_view> cells;
        for (unsigned i = 0; i < rows().columns.size(); ++i) cells.push_back(rows().cell(row, i));
        const Values came = valuesOf(piece);
        if (saving_.hasColumnsAsTheyCame()) {
            for (std::size_t i = cells.size(); i < came.size(); ++i)
                cells.push_back(came[i].view());
        }
        addLine(text, cells, piece,
                concat(saving_.log.name, ":", std::to_string(rows().line(row))));
    }

    std::string heading(std::string_view came) override {
        if (saving_.hasNamesAsTheyCame()) return std::string(came);
        std::vector<std::string> names;
        for (unsigned column : saving_.columns) names.push_back(saving_.log.columnName(column));
        std::string line;
        addLine(line, {names.begin(), names.end()}, {}, saving_.log.name + ":1");
        return line.append(endOfLine(came));
    }

private:
    using Values = std::vector<LightweightString<char>>;

    static Values valuesOf(std::string_view piece) {
        Values values;
        piece.remove_suffix(endOfLine(piece).size());
        Quor::splitIf(cellText(piece), ',', values, Quor::splitKeepsQuotedWhole);
        return values;
    }

    static std::string_view valueAt(const Values& values, std::size_t i) {
        return i < values.size() ? values[i].view() : std::string_view();
    }

    // Empty values at the end need no commas; there are as many as there were.
    void addLine(std::string& text, std::vector<std::string_view> cells, std::string_view piece,
                 const std::string& place) const {
        while (cells.size() > 1 && cells.back().empty()) cells.pop_back();
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) line += concat(i == 0 ? "" : ",", cells[i]);
        const auto commas = std::count(piece.begin(), piece.end(), ',');
        const std::string filled =
            line + std::string(static_cast<std::size_t>(std::max<std::ptrdiff_t>(
                                   commas - std::count(line.begin(), line.end(), ','), 0)),
                               ',');
        if (holds(filled, cells)) line = filled;
        if (!holds(line, cells)) refuse(cells, place, *saving_.log.opening.terms);
        text += line;
    }

    static bool holds(const std::string& line, const std::vector<std::string_view>& cells) {
        const Values values = valuesOf(line);
        const std::size_t count = std::max(values.size(), cells.size());
        for (std::size_t i = 0; i < count; ++i) {
            const std::string_view cell = i < cells.size() ? cells[i] : std::string_view();
            if (valueAt(values, i) != cell) return false;
        }
        return line.find_first_of(std::string_view("\n\r\0", 3)) == std::string::npos;
    }

    [[noreturn]] static void refuse(const std::vector<std::string_view>& cells,
                                    const std::string& place, const Terms& terms) {
        std::string text;
        for (std::string_view cell : cells) text += concat(text.empty() ? "" : " | ", cell);
        throw Failure{unwritable,
                      concat(place, ": ", inQuotes(text.substr(0, 60)),
                             ", expected values that plain CSV can hold: no line ends, commas in "
                             "whole quotes alone, a first one that is not empty; write a table "
                             "file of it with ",
                             terms.saving)};
    }

    Saving saving_;
};

}  // namespace

std::unique_ptr<RowsInPlace> delimitedInPlace(const Saving& saving, char separator) {
    return std::make_unique<DelimitedInPlace>(saving, separator);
}

std::unique_ptr<RowsInPlace> plainCsvInPlace(const Saving& saving) {
    return std::make_unique<PlainCsvInPlace>(saving);
}

}  // namespace vek::formats
