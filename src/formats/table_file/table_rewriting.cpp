#include "formats/table_file/table_rewriting.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/row_lines.h>
#include "formats/choosing/select.h"
#include "formats/reading/input.h"
#include "formats/reading/progress.h"
#include "formats/saving/patched_text.h"
#include "formats/saving/rows_in_place.h"
#include "formats/saving/save_in_place.h"
#include "formats/table_file/table_rows.h"
#include "formats/text/text_lines.h"
#include "formats/writing/reading_back.h"

namespace vek::formats {

namespace {

// Behind so many lines; none where the text has fewer that end.
std::size_t endOfLines(std::string_view text, std::size_t lines) {
    std::size_t at = 0;
    for (; lines > 0; --lines) {
        const std::size_t end = text.find('\n', at);
        if (end == text.npos) return text.npos;
        at = end + 1;
    }
    return at;
}

// A heading of lines that end as those of rows do. It stands in the first piece as a rule.
std::size_t endOfHeading(const Log& log) {
    const Input& input = *log.source->input;
    std::string text(std::min<std::uint64_t>(FirstLook::size, input.size()), '\0');
    input.readAgain(0, text.data(), text.size());
    const std::size_t end = endOfLines(text, log.source->headingLines);
    return std::string_view(text).substr(0, end).find('\r') == text.npos ? end : text.npos;
}

// The rows of a log, written one behind the other into the place of its file.
class TableRewriting {
public:
    TableRewriting(const Saving& saving, const std::vector<unsigned>& rows)
        : saving_(saving),
          log_(saving.log),
          source_(*log_.source),
          rows_(rows),
          reader_(*source_.input),
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
        writeRows(out);
        return Rewriting::done;
    }

private:
    bool isNew(unsigned row) const { return row >= source_.places.count(); }

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
        const std::string came(reader_.read(source_.places.heading()));
        const Sheet none{log_, noRows_, saving_.columns};
        form_->begin(none, rows_);
        heading_ = form_->heading(came);
        isHeadingSame_ = heading_ == came;
    }

    bool isAnyChanged() {
        if (!isHeadingSame_ || areAll_ || !areRowsAsTheyCame()) return true;
        return std::any_of(rows_.begin(), rows_.end(), [&](unsigned row) {
            return recordOf(log_, row).get_changed() &&
                   !form_->reads(reader_.read(source_.places.row(row)), row);
        });
    }

    bool areRowsAsTheyCame() const {
        const auto isOther = [next = 0u](unsigned row) mutable { return row != next++; };
        return rows_.size() == source_.places.count() &&
               std::none_of(rows_.begin(), rows_.end(), isOther);
    }

    PatchedText beginning() const {
        TextFile lines;
        RowLines(*log_.table).append(rows_.data(), rows_.size(), FirstLook::size, lines);
        PatchedText text;
        text.own() += heading_;
        text.own() += textOf(lines);
        return text;
    }

    static std::string_view textOf(const TextFile& lines) {
        return lines.block() ? std::string_view(lines.block()->data(), lines.textSize())
                             : std::string_view();
    }

    void writeRows(Output& out) const {
        constexpr std::size_t piece = 1 << 18;
        const RowLines lines(*log_.table);
        Progress progress(log_.opening.watcher, "writing", rows_.size());
        for (std::size_t row = 0; row < rows_.size();) {
            progress.reach(row);
            TextFile text;
            row += lines.append(rows_.data() + row, rows_.size() - row, piece, text);
            out.write(textOf(text));
        }
    }

    const Saving& saving_;
    const Log& log_;
    const Source& source_;
    const std::vector<unsigned>& rows_;
    SourceReader reader_;
    std::unique_ptr<RowsInPlace> form_;
    VDBView noRows_;
    bool areAll_;
    std::vector<std::string_view> cells_;
    std::string heading_;
    bool isHeadingSame_ = false;
};

// What is in another encoding or packed is written as a whole, and pieces have no gaps between
// rows.
bool mayRewrite(const Saving& saving, const InPlace& now) {
    const Log& log = saving.log;
    return log.format == Format::table && log.source->places.areKnown() && !now.isPiece &&
           log.source->exactCells.empty() && log.form.encoding.empty() &&
           log.lineEnd == LineEnd::lf && saving.columns == allColumns(log);
}

}  // namespace

// No line is shorter than what writing its row makes, so where all together are as long, each is. A
// last line without an end may be.
bool isAsWritten(const Log& log, std::uint64_t heading, std::uint64_t size, RowPlaces* places) {
    if (log.endsInLine) return false;
    if (places != nullptr) places->beginAt(heading);
    std::uint64_t at = heading;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        const std::size_t line = RowLines::sizeAsRead(recordOf(log, row));
        if (line == 0) return false;
        if (places != nullptr) places->add({at, at + line + 1});
        at += line + 1;
    }
    if (places != nullptr) places->endAt(at);
    return at == size;
}

void notePlacesAsWritten(Log& log) {
    const std::size_t heading = endOfHeading(log);
    if (heading == std::string_view::npos) return;
    RowPlaces places;
    if (isAsWritten(log, heading, log.source->input->size(), &places)) {
        log.source->places = std::move(places);
    }
}

Rewriting rewriteTable(const Saving& saving, const InPlace& now, bool mayStay, Output& out) {
    if (!mayRewrite(saving, now)) return Rewriting::notPossible;
    return TableRewriting(saving, now.rows).rewrite(mayStay, out);
}

}  // namespace vek::formats
