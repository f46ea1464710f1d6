#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/row_lines.h>
#include "formats/choosing/select.h"
#include "formats/input/input.h"
#include "formats/input/progress.h"
#include "formats/log/source.h"
#include "formats/saving/change_formats.h"
#include "formats/saving/reading_back.h"
#include "formats/saving/save_in_place.h"
#include "formats/table_file/table_rows.h"
#include "formats/text/text_lines.h"

// Table files in which it is known where each row stands. A line that is what writing its row
// makes, as nearly all are that this library or vek wrote, is made again; of the file only the
// others are read again to be kept.
namespace vek::formats {

namespace {

std::string_view textOf(const TextFile& lines) {
    return lines.block() ? std::string_view(lines.block()->data(), lines.textSize())
                         : std::string_view();
}

// Reads odd lines again: each alone where they are few, so that not all of the file is read for
// them.
class OddLines {
public:
    explicit OddLines(const Source& source)
        : input_(*source.input), reader_(input_), areFew_(isFew(source)) {}

    /// Valid until the next call.
    std::string_view read(Range range) {
        if (!areFew_) return reader_.read(range);
        line_.resize(range.size());
        input_.readAgain(range.begin, line_.data(), line_.size());
        return line_;
    }

private:
    static bool isFew(const Source& source) {
        constexpr std::size_t bytesForOne = 8192;
        const auto count = static_cast<std::size_t>(
            std::count(source.oddRows.begin(), source.oddRows.end(), true));
        return count < source.places.size() / bytesForOne;
    }

    const Input& input_;
    SourceReader reader_;
    bool areFew_;
    std::string line_;
};

// The rows of a log, written one behind the other into the place of its file.
class TableRewriting {
public:
    TableRewriting(const Saving& saving, const std::vector<unsigned>& rows)
        : saving_(saving),
          log_(saving.log),
          source_(*log_.source),
          places_(source_.places),
          rows_(rows),
          odd_(source_),
          form_(tableInPlace(saving)),
          noRows_(log_.table.get()),
          areAll_(!saving.hasColumnsAsTheyCame() || !saving.hasUnnamedAsTheyCame()),
          cells_(log_.columnCount()) {}

    Rewriting rewrite(bool mayStay, Output& out) {
        if (!areRowsPlain()) return Rewriting::notPossible;
        makeHeading();
        if (mayStay && !isAnyChanged()) return Rewriting::notNeeded;
        PatchedText beginning = this->beginning();
        requireSameReading(log_, beginning, out.name(), nullptr);
        out.write(heading_);
        Progress progress(log_.opening.watcher, "writing", rows_.size());
        for (std::size_t at = 0; at < rows_.size(); progress.reach(at)) {
            at = put(at, [&](std::string_view text) { out.write(text); });
        }
        out.copy(*source_.input, places_.gapBefore(places_.count()));
        return Rewriting::done;
    }

private:
    static constexpr std::size_t pieceSize = 1 << 18;

    bool isNew(unsigned row) const { return row >= places_.count(); }

    // Whether a row may say something else than its line in the file.
    bool mayDiffer(unsigned row) const {
        return areAll_ || isNew(row) || recordOf(log_, row).get_changed();
    }

    // In the table's order, in which they stand in memory, whatever order they are written in.
    bool areRowsPlain() {
        const unsigned count = log_.rowCount();
        unsigned row = 0;
        while (row < count && (!mayDiffer(row) || isPlain(row))) ++row;
        return row == count;
    }

    // Whether a row is surely read as it is, and as one.
    bool isPlain(unsigned row) {
        const dbrecord& record = recordOf(log_, row);
        if (sameText(record.fieldView(0), "VEKDB")) return false;
        if (RowLines::isAsRead(record)) return true;
        log_.cells(row, cells_);
        return areSurelyKept(cells_.data(), cells_.size());
    }

    void makeHeading() {
        const std::string came(odd_.read(places_.heading()));
        const Sheet none{log_, noRows_, saving_.columns};
        form_->begin(none, rows_);
        heading_ = form_->heading(came);
        isHeadingSame_ = heading_ == came;
        lineEnd_ = endOfLine(came);
    }

    bool isAnyChanged() {
        if (!isHeadingSame_ || areAll_ || !areRowsAsTheyCame()) return true;
        return std::any_of(rows_.begin(), rows_.end(), [&](unsigned row) {
            return recordOf(log_, row).get_changed() && !stillReads(row);
        });
    }

    bool stillReads(unsigned row) { return form_->reads(odd_.read(places_.row(row)), row); }

    bool areRowsAsTheyCame() const {
        const auto isOther = [next = 0u](unsigned row) mutable { return row != next++; };
        return rows_.size() == places_.count() && std::none_of(rows_.begin(), rows_.end(), isOther);
    }

    PatchedText beginning() {
        PatchedText text;
        text.own() += heading_;
        std::size_t size = heading_.size();
        for (std::size_t at = 0; at < rows_.size() && size < FirstLook::size;) {
            at = put(at, [&](std::string_view piece) {
                text.own() += piece;
                size += piece.size();
            });
        }
        return text;
    }

    // Lines from that place in the order on, as many as are put together; the place behind them.
    template <class Take>
    std::size_t put(std::size_t at, Take take) {
        if (isOdd(at)) return putOdd(at, take);
        if (at >= endOfMade_ || at < beginOfMade_) findMade(at);
        TextFile lines;
        at += made_.append(rows_.data() + at, endOfMade_ - at, pieceSize, lines);
        take(withLineEnds(textOf(lines)));
        return at;
    }

    bool isOdd(std::size_t at) const {
        const unsigned row = rows_[at];
        return row < source_.oddRows.size() && source_.oddRows[row];
    }

    void findMade(std::size_t at) {
        beginOfMade_ = at;
        endOfMade_ = at;
        if (source_.oddRows.empty()) endOfMade_ = rows_.size();
        while (endOfMade_ < rows_.size() && !isOdd(endOfMade_)) ++endOfMade_;
    }

    // No value holds a line feed where a row is written.
    std::string_view withLineEnds(std::string_view lines) {
        if (lineEnd_ == "\n") return lines;
        ended_.clear();
        for (std::size_t end = 0; !lines.empty(); lines.remove_prefix(end + 1)) {
            end = lines.find('\n');
            ended_.append(lines, 0, end).append(lineEnd_);
        }
        return ended_;
    }

    template <class Take>
    std::size_t putOdd(std::size_t at, Take take) {
        const unsigned row = rows_[at];
        const bool isWritten = areAll_ || (recordOf(log_, row).get_changed() && !stillReads(row));
        const Range range = isWritten ? places_.row(row) : keptFrom(at);
        const std::string_view came = odd_.read(range);
        const std::string_view end = endOfLine(came);
        if (isWritten) take(madeLine(row));
        take(isWritten ? end : came);
        at += isWritten ? 1 : keptRows_;
        if (!end.ends_with('\n') && at < rows_.size()) take(end.empty() ? lineEnd_ : "\n");
        return at;
    }

    // The line of a row that stays, and those behind it that stay behind it.
    Range keptFrom(std::size_t at) {
        Range range = places_.row(rows_[at]);
        keptRows_ = 1;
        for (std::size_t next = at + 1; next < rows_.size() && isOdd(next); ++next) {
            const Range behind = places_.row(rows_[next]);
            if (behind.begin != range.end || range.size() >= pieceSize) break;
            if (recordOf(log_, rows_[next]).get_changed()) break;
            range.end = behind.end;
            ++keptRows_;
        }
        return range;
    }

    std::string madeLine(unsigned row) const {
        TextFile line;
        RowLines::append(recordOf(log_, row), line);
        return std::string(line.line(0));
    }

    const Saving& saving_;
    const Log& log_;
    const Source& source_;
    const RowPlaces& places_;
    const std::vector<unsigned>& rows_;
    OddLines odd_;
    const RowLines made_{*log_.table};
    std::unique_ptr<RowsInPlace> form_;
    VDBView noRows_;
    bool areAll_;
    std::vector<std::string_view> cells_;
    std::string heading_;
    bool isHeadingSame_ = false;
    std::string lineEnd_;  // of lines that are made
    std::string ended_;
    std::size_t beginOfMade_ = 0;  // places in the order, of rows whose lines are made
    std::size_t endOfMade_ = 0;
    std::size_t keptRows_ = 0;
};

// What is in another encoding or packed is written as a whole, and pieces have no gaps between
// rows.
bool mayRewrite(const Saving& saving, const InPlace& now) {
    const Log& log = saving.log;
    return log.format == Format::table && log.source->places.areKnown() && !now.isPiece &&
           log.source->exactCells.empty() && log.table->get_loaded_whole() &&
           log.form.encoding.empty() && log.lineEnd == LineEnd::lf &&
           saving.columns == allColumns(log);
}

}  // namespace

Rewriting rewriteTable(const Saving& saving, const InPlace& now, bool mayStay, Output& out) {
    if (!mayRewrite(saving, now)) return Rewriting::notPossible;
    return TableRewriting(saving, now.rows).rewrite(mayStay, out);
}

}  // namespace vek::formats
