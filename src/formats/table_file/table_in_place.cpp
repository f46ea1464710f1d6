#include <algorithm>
#include <tuple>

#include <vekdb/host/text_file.h>
#include "formats/reading/readers.h"
#include "formats/saving/change_formats.h"
#include "formats/table_file/exact_cells.h"
#include "formats/table_file/table_lines.h"
#include "formats/table_file/table_rows.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// The heading of a table file with other parameters, names or types: each line that says
// something else is replaced, and parameters that are new stand behind the last one. Widths say
// how columns of these names are shown, and stay as long as the names do.
class TableHeading {
public:
    explicit TableHeading(const Saving& saving)
        : saving_(saving),
          source_(*saving.log.source),
          changed_(changedParameters(saving.log)),
          now_(tableHeading(saving.log, saving.losses)) {}

    std::string whole() const {
        std::string text;
        for (const std::string& line : now_) text += line + "\n";
        return text;
    }

    std::string patched(std::string_view came) {
        LineWalk walk(came, LineWalk::Ends::lineFeed);
        std::string_view line;
        while (walk.next(line)) {
            const auto begin = static_cast<std::size_t>(line.data() - came.data());
            addLine(line, came.substr(begin, came.size() - walk.rest().size() - begin));
        }
        return std::move(text_);
    }

    static bool hasTypesAsTheyCame(const Log& log) {
        for (unsigned i = 0; i < log.columnCount(); ++i) {
            if (log.source->columns[i].type != log.table->get_field_type(i)) return false;
        }
        return true;
    }

private:
    static constexpr std::size_t widths = 1, types = 2, names = 3;

    void addLine(std::string_view line, std::string_view whole) {
        if (behindMagic_ > 0) return addColumnLine(behindMagic_++, whole);
        if (isMagicLine(line)) {
            addNewParameters(endOfLine(whole));
            behindMagic_ = widths;
            text_ += whole;
            return;
        }
        const std::vector<std::string_view> values = rawValues(trimmed(line));
        const std::string_view first = values.empty() ? std::string_view() : trimmed(values[0]);
        const std::string* now = changeOf(trimmed(first.substr(0, first.find(':'))));
        text_ += now == nullptr ? std::string(whole) : concat(*now, endOfLine(whole));
    }

    void addColumnLine(std::size_t which, std::string_view whole) {
        const Log& log = saving_.log;
        bool isSame = saving_.hasColumnsAsTheyCame();
        if (isSame && which == widths) isSame = saving_.hasNamesAsTheyCame();
        if (isSame && which == types) isSame = hasTypesAsTheyCame(log);
        if (isSame && which == names) isSame = saving_.hasNamesAsTheyCame();
        text_ += isSame ? std::string(whole)
                        : concat(now_[now_.size() - 1 - names + which], endOfLine(whole));
    }

    // The lines of parameters stand in their order.
    const std::string* lineOf(std::string_view name) const {
        for (unsigned i = 0; i < saving_.log.table->get_num_params(); ++i) {
            if (sameText(saving_.log.table->get_param_name(i), name)) return &now_[i];
        }
        return nullptr;
    }

    const std::string* changeOf(std::string_view name) const {
        const bool isChanged =
            std::any_of(changed_.begin(), changed_.end(),
                        [&](const ParameterText& one) { return sameText(one.name, name); });
        return isChanged ? lineOf(name) : nullptr;
    }

    void addNewParameters(std::string_view end) {
        for (const ParameterText& one : changed_) {
            if (!wasThere(saving_.log, one.name)) text_ += concat(*lineOf(one.name), end);
        }
    }

    const Saving& saving_;
    const Source& source_;
    std::vector<ParameterText> changed_;
    std::vector<std::string> now_;
    std::size_t behindMagic_ = 0;
    std::string text_;
};

// Where rows of a log stand among those that are written.
class RowsAsWritten {
public:
    explicit RowsAsWritten(const std::vector<unsigned>& rows) {
        rows_.reserve(rows.size());
        for (unsigned i = 0; i < rows.size(); ++i) rows_.emplace_back(rows[i], i);
        if (!std::is_sorted(rows_.begin(), rows_.end())) std::sort(rows_.begin(), rows_.end());
    }

    // noColumn for a row that is not written.
    unsigned placeOf(unsigned row) const {
        const auto at = std::lower_bound(rows_.begin(), rows_.end(), std::pair(row, 0U));
        return at == rows_.end() || at->first != row ? noColumn : at->second;
    }

private:
    std::vector<std::pair<unsigned, unsigned>> rows_;
};

class TableInPlace : public RowsInPlace {
public:
    explicit TableInPlace(const Saving& saving) : saving_(saving) {}

    // A cell that a table file changes reads as another one, which a note puts right.
    bool reads(std::string_view piece, unsigned row) override {
        const Log& log = saving_.log;
        piece.remove_suffix(endOfLine(piece).size());
        takeValues(piece);
        cells_.resize(std::max<std::size_t>(values_.size(), log.columnCount()));
        values_.resize(cells_.size());
        log.cells(row, cells_);
        std::vector<ExactCell> exact;
        for (unsigned i = 0; i < cells_.size(); ++i) {
            if (values_[i] == cells_[i]) continue;
            if (tableFileLoss(cells_[i]) == TableLoss::none) return false;
            if (values_[i] != afterTableFile(cells_[i])) return false;
            exact.push_back({row, i, std::string(cells_[i])});
        }
        noteLooked(row);
        exact_.insert(exact_.end(), exact.begin(), exact.end());
        return true;
    }

    void begin(const Sheet& rows, const std::vector<unsigned>& all) override {
        RowsInPlace::begin(rows, all);
        changed_ = writeTableRows(rows, lines_);
        for (unsigned i = 0; i < rows.rowCount(); ++i) noteLooked(rows.view->baseIndex(i));
    }

    void add(std::string& text, unsigned row, std::string_view piece) override {
        requireWithoutZeros(piece, rows().line(row));
        text += lines_.line(row);
    }

    std::string heading(std::string_view came) override {
        std::string now = headingFrom(came);
        requireZerosOfHeading(came, now);
        return now;
    }

private:
    std::string headingFrom(std::string_view came) {
        noteExact();
        const Log& log = saving_.log;
        if (log.source->isDamaged) return TableHeading(saving_).whole();
        const bool isSame = saving_.hasNamesAsTheyCame() && changedParameters(log).empty() &&
                            TableHeading::hasTypesAsTheyCame(log);
        return isSame ? std::string(came) : TableHeading(saving_).patched(came);
    }

    // What stands behind a zero byte is in no cell, and would not be written again.
    void requireWithoutZeros(std::string_view line, std::size_t number) const {
        if (line.find('\0') == line.npos) return;
        throw Failure{
            unwritable,
            saving_.log.name,
            {number, "", "a zero byte, which hides what stands behind it", "a line without one",
             concat("not changed, as the line would be written anew and that be lost; take zero "
                    "bytes out of the file, or write a copy with ",
                    saving_.log.opening.terms->saving)}};
    }

    // Lines of the heading that change nothing keep theirs.
    void requireZerosOfHeading(std::string_view came, std::string_view now) const {
        if (std::count(came.begin(), came.end(), '\0') == std::count(now.begin(), now.end(), '\0'))
            return;
        LineWalk walk(came, LineWalk::Ends::lineFeed);
        std::string_view line;
        while (walk.next(line)) requireWithoutZeros(line, walk.number());
    }

    void noteLooked(unsigned row) {
        if (!saving_.log.source->exactCells.empty()) looked_.push_back(row);
    }

    // As a reader of the file finds them.
    void takeValues(std::string_view line) {
        if (takePlainValues(line, values_)) return;
        TextFile file;
        file.appendLine(line);
        read_.read(file);
        values_.resize(read_.get_num_fields());
        read_.fieldViews(values_.data(), read_.get_num_fields());
    }

    // The notes name rows by where they will stand.
    void noteExact() {
        const Log& log = saving_.log;
        const std::vector<ExactCell> cells = exactCells();
        const std::vector<Source::Cell>& came = log.source->exactCells;
        const bool isSame =
            std::equal(cells.begin(), cells.end(), came.begin(), came.end(),
                       [](const ExactCell& a, const Source::Cell& b) {
                           return a.row == b.row && a.column == b.column && a.value == b.value;
                       });
        const std::size_t noted = isSame ? cells.size() : noteExactCells(*log.table, cells);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const unsigned row = all()[cells[i].row];
            const std::string place = concat(log.name, ":", std::to_string(log.lineOf(row)), ":",
                                             log.columnName(cells[i].column));
            tellExactCell(cells[i], place, i < noted, saving_.losses);
        }
    }

    // All that the file will have, with the rows as they will stand in it.
    std::vector<ExactCell> exactCells() {
        std::vector<ExactCell> cells = exact_;
        for (const ExactCell& cell : changed_) {
            cells.push_back({rows().view->baseIndex(cell.row), cell.column, cell.value});
        }
        putInPlace(cells);
        addThoseNotLookedAt(cells);
        std::sort(cells.begin(), cells.end(), [](const ExactCell& a, const ExactCell& b) {
            return std::tie(a.row, a.column) < std::tie(b.row, b.column);
        });
        return cells;
    }

    void putInPlace(std::vector<ExactCell>& cells) const {
        if (cells.empty()) return;
        const RowsAsWritten written(all());
        for (ExactCell& cell : cells) cell.row = written.placeOf(cell.row);
        std::erase_if(cells, [](const ExactCell& cell) { return cell.row == noColumn; });
    }

    // Of the many files that a log becomes each has few rows, and the log may have many such cells.
    void addThoseNotLookedAt(std::vector<ExactCell>& cells) {
        const std::vector<Source::Cell>& came = saving_.log.source->exactCells;
        if (came.empty()) return;
        std::sort(looked_.begin(), looked_.end());
        for (unsigned i = 0; i < all().size(); ++i) {
            const unsigned row = all()[i];
            auto cell = std::lower_bound(
                came.begin(), came.end(), row,
                [](const Source::Cell& one, unsigned wanted) { return one.row < wanted; });
            if (cell == came.end() || cell->row != row) continue;
            if (std::binary_search(looked_.begin(), looked_.end(), row)) continue;
            for (; cell != came.end() && cell->row == row; ++cell) {
                cells.push_back({i, cell->column, cell->value});
            }
        }
    }

    Saving saving_;
    dbrecord read_{0};
    std::vector<std::string_view> values_;  // of a line of the file
    std::vector<std::string_view> cells_;   // of its row
    TextFile lines_;
    std::vector<ExactCell> changed_;  // by the rows that are written
    std::vector<ExactCell> exact_;    // of pieces that read as their row with a note
    std::vector<unsigned> looked_;    // rows whose cells are known from these two, if any was noted
};

}  // namespace

std::unique_ptr<RowsInPlace> tableInPlace(const Saving& saving) {
    return std::make_unique<TableInPlace>(saving);
}

}  // namespace vek::formats
