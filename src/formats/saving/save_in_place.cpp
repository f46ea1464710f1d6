#include "formats/saving/save_in_place.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/input/progress.h"
#include "formats/packed/packed.h"
#include "formats/saving/change_formats.h"
#include "formats/saving/reading_back.h"
#include "formats/saving/row_lengths.h"
#include "formats/text/text_lines.h"
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

// Where lines begin, each asked for behind the one before.
class LineBegins {
public:
    explicit LineBegins(const Input& input) : reader_(input), size_(input.size()) {}

    /// The place of a line, which counts from 1; the text's end where there are not so many.
    std::uint64_t of(std::size_t line) {
        while (line_ < line && at_ < size_) takeLine();
        return line_ < line ? size_ : at_;
    }

private:
    static constexpr std::size_t most = 1 << 17;

    void takeLine() {
        while (at_ < size_) {
            if (rest_.empty())
                rest_ = reader_.read({at_, std::min<std::uint64_t>(size_, at_ + most)});
            const std::size_t end = rest_.find('\n');
            const std::size_t taken = std::min(end, rest_.size() - 1) + 1;
            at_ += taken;
            rest_.remove_prefix(taken);
            if (end != std::string_view::npos) break;
        }
        ++line_;
    }

    SourceReader reader_;
    std::uint64_t size_;
    std::uint64_t at_ = 0;
    std::size_t line_ = 1;
    std::string_view rest_;
};

// Of formats in which a row is a line that the library itself reads.
RowPlaces placesByLines(const Log& log) {
    LineBegins begins(*log.source->input);
    RowPlaces places;
    places.beginAt(begins.of(log.source->headingLines + 1));
    for (std::size_t row = 0; row < log.source->rows; ++row) {
        const std::size_t line = log.lines[row];
        const std::uint64_t begin = begins.of(line);
        places.add({begin, begins.of(line + 1)});
    }
    places.endAt(log.source->input->size());
    return places;
}

// Puts a log of lines together from the pieces of its file and the rows that say something else.
class LinesInPlace {
public:
    LinesInPlace(const Saving& saving, const InPlaceWays& ways, const RowPlaces& places,
                 const std::vector<unsigned>& rows, bool isPiece)
        : saving_(saving),
          hasLinesOfLibrary_(ways.hasLinesOfLibrary),
          keepsGaps_(!isPiece),
          log_(saving.log),
          source_(*log_.source),
          places_(places),
          all_(rows),
          reader_(*source_.input),
          form_(ways.rows(saving)) {}

    PatchedText make() {
        written_ = viewOf(log_, changedRows());
        const Sheet sheet{log_, written_, saving_.columns};
        form_->begin(sheet, all_);
        saysBetween_ = form_->saysBetween();
        putHeading();
        Progress progress(log_.opening.watcher, "writing", all_.size());
        for (std::size_t i = 0; i < all_.size(); ++i) {
            progress.reach(i);
            put(all_[i]);
        }
        // A row without a byte is one by its end alone.
        if (endsInBlank_) putEnd();
        if (!source_.isDamaged && keepsGaps_) keepGapsUpTo(places_.count());
        return std::move(text_);
    }

private:
    bool isNew(unsigned row) const { return row >= places_.count(); }

    std::vector<unsigned> changedRows() {
        const bool areAll = source_.isDamaged || !saving_.hasColumnsAsTheyCame() ||
                            !saving_.hasUnnamedAsTheyCame() || form_->writesAll(all_);
        std::vector<unsigned> rows;
        rows.reserve(all_.size());
        for (std::size_t i = 0; i < all_.size(); ++i) {
            const unsigned row = all_[i];
            if (areAll || isNew(row) || isOpenInside(i) || isChanged(row)) rows.push_back(row);
        }
        return rows;
    }

    bool isWritten(unsigned row) const {
        return nextWritten_ < written_->get_num_records() &&
               written_->baseIndex(nextWritten_) == row;
    }

    bool isChanged(unsigned row) {
        return (wasChanged(row) || (row > 0 && wasChanged(row - 1) && form_->goesWith(row - 1))) &&
               !form_->reads(reader_.read(places_.row(row)), row);
    }

    bool wasChanged(unsigned row) const { return log_.table->get_record(row)->get_changed(); }

    // A quote that is never closed takes in all that follows.
    bool isOpenInside(std::size_t i) const {
        return source_.endsOpen && all_[i] + 1 == places_.count() && i + 1 < all_.size();
    }

    void putHeading() {
        const std::string_view came = reader_.read(places_.heading());
        const std::string now = form_->heading(came);
        const bool hasEnd = hasLinesOfLibrary_ && endOfLine(came).ends_with('\n');
        end_ = log_.lineEnd == LineEnd::lf && hasEnd ? std::string(endOfLine(came))
                                                     : bytesOf(log_.lineEnd);
        if (!now.empty() && now != byteOrderMark) noteEnd(now);
        if (now == came)
            keep(places_.heading());
        else
            text_.own() += now;
    }

    void put(unsigned row) {
        if (isNew(row))
            putBetween({}, row);
        else if (!source_.isDamaged && keepsGaps_)
            keepGapsUpTo(row);
        putEnd();
        endsInBlank_ = false;
        if (isWritten(row))
            write(row);
        else
            keep(places_.row(row));
        const bool isLast = !isNew(row) && row + 1 == places_.count();
        if (isLast && !source_.isDamaged) noteEnd(reader_.read(places_.row(row)));
    }

    // What stands between rows stays there also where a row goes. Where rows change places it goes
    // with the row behind it.
    void keepGapsUpTo(std::size_t row) {
        if (row < nextGap_) return putBetween(places_.gapBefore(row), row);
        for (; nextGap_ <= row; ++nextGap_) {
            if (nextGap_ < row && isMoved(nextGap_)) continue;
            const bool isOwn = nextGap_ == row && row < places_.count();
            putBetween(places_.gapBefore(nextGap_), isOwn ? std::optional(row) : std::nullopt);
        }
    }

    // Whether a row comes to stand behind one that it stood in front of.
    bool isMoved(std::size_t row) {
        if (!staying_) staying_ = stayingWhereRowsMove();
        return row < staying_->size() && (*staying_)[row];
    }

    // Of the rows that came, those that stay; none where they stay in their order.
    std::vector<bool> stayingWhereRowsMove() const {
        if (std::is_sorted(all_.begin(), all_.end())) return {};
        std::vector<bool> staying(places_.count());
        for (unsigned row : all_) {
            if (!isNew(row)) staying[row] = true;
        }
        return staying;
    }

    void putBetween(Range range, std::optional<std::size_t> row) {
        if (range.size() != 0 && !saysBetween_) putEnd();
        if (!saysBetween_) return keep(range);
        const std::string came(reader_.read(range));
        const std::string now = form_->between(came, row);
        if (!now.empty()) putEnd();
        if (now == came) return keep(range);
        text_.own() += now;
    }

    void keep(Range range) {
        if (source_.hasLoneReturns && range.size() != 0 && range.begin != keptTo_) {
            putApartFromReturn(byteAt(range.begin));
        }
        text_.keep(range);
        if (range.size() != 0) keptTo_ = range.end;
    }

    // A line feed that comes to stand behind a carriage return would be no line of its own.
    void putApartFromReturn(char first) {
        if (first == '\n' && lastByte() == '\r') text_.own() += '\n';
    }

    char byteAt(std::uint64_t place) const {
        char byte = 0;
        source_.input->readAgain(place, &byte, 1);
        return byte;
    }

    char lastByte() {
        if (const std::string_view own = text_.lastOwn(); !own.empty()) return own.back();
        return keptTo_ == 0 ? '\0' : byteAt(keptTo_ - 1);
    }

    void putEnd() {
        if (!lacking_.empty()) text_.own() += lacking_;
        lacking_.clear();
    }

    void write(unsigned row) {
        const std::string_view piece =
            isNew(row) ? std::string_view() : reader_.read(places_.row(row));
        const std::string_view end =
            isNew(row) || source_.isDamaged ? std::string_view(end_) : endOfLine(piece);
        std::string& text = text_.own();
        const std::size_t begin = text.size();
        form_->add(text, nextWritten_++, piece);
        endsInBlank_ = text.size() == begin;
        if (endsInBlank_ && source_.hasLoneReturns && !end.empty()) putApartFromReturn(end.front());
        text_.own() += end;
    }

    // The last line of a file may have no end. The library ends no line at a return alone.
    void noteEnd(std::string_view piece) {
        const std::string_view end = endOfLine(piece);
        lacking_.clear();
        if (end.empty()) lacking_ = end_;
        if (end == "\r" && hasLinesOfLibrary_) lacking_ = "\n";
    }

    Saving saving_;
    bool hasLinesOfLibrary_;
    bool keepsGaps_;
    const Log& log_;
    const Source& source_;
    const RowPlaces& places_;
    const std::vector<unsigned>& all_;
    SourceReader reader_;
    std::unique_ptr<RowsInPlace> form_;
    bool saysBetween_ = false;
    VDBView written_;
    unsigned nextWritten_ = 0;
    std::size_t nextGap_ = 0;
    std::optional<std::vector<bool>> staying_;
    PatchedText text_;
    std::uint64_t keptTo_ = 0;  // of the file
    std::string end_;
    std::string lacking_;       // of the end of the last line
    bool endsInBlank_ = false;  // the last row is an empty line
};

std::vector<unsigned> allRows(const Log& log) {
    std::vector<unsigned> rows(log.rowCount());
    std::iota(rows.begin(), rows.end(), 0u);
    return rows;
}

// Where the rows stand; looked for where that was not known before, and once for all of many files.
const RowPlaces& placesOf(const InPlace& now, const InPlaceWays& ways, RowPlaces& found) {
    RowPlaces& known = now.log.source->places;
    if (known.areKnown() || !ways.hasLinesOfLibrary) return known;
    return (now.isPiece ? known : found) = placesByLines(now.log);
}

PatchedText patched(const Saving& saving, const InPlaceWays& ways, const RowPlaces& places,
                    const InPlace& now) {
    if (ways.text != nullptr) return ways.text(saving, now.rows);
    return LinesInPlace(saving, ways, places, now.rows, now.isPiece).make();
}

}  // namespace

bool isChangedInPlace(Format format) {
    return inPlaceWays(format) != nullptr;
}

namespace {

// A copy is packed where its name says so; a name that says nothing leaves it as it came.
bool isPackedAs(const Log& log, const std::string& name) {
    if (name == log.path) return log.form.isPacked;
    return isPackedName(name) || (log.form.isPacked && !hasTargetEnding(name));
}

}  // namespace

InPlace::InPlace(const Log& log) : InPlace(log, allRows(log)) {}

InPlace::InPlace(const Log& log, std::vector<unsigned> rows)
    : log(log), rows(std::move(rows)), columns(allColumns(log)) {}

bool writeInPlace(const InPlace& now, bool mayStay, Output& out, Losses& losses) {
    const Log& log = now.log;
    requireWhole(log);
    requireWrittenBack(log);
    const bool isTable = log.format == Format::table;
    const bool holdsNoColumns = log.format == Format::json || log.format == Format::jsonl;
    if (now.columns.empty() && !holdsNoColumns) {
        throw Failure{unwritable,
                      concat(out.name(), ": a ",
                             isTable ? "table file" : concat("file of ", formatName(log.format)),
                             " needs a column, none would be left; nothing is written")};
    }
    out.encode(log.form.encoding, isPackedAs(log, out.name()));
    const Saving saving{log, unnamedLast(log, now.columns), out.name(), losses};
    const InPlaceWays& ways = *inPlaceWays(log.format);
    const Rewriting rewriting =
        ways.rewrite == nullptr ? Rewriting::notPossible : ways.rewrite(saving, now, mayStay, out);
    if (rewriting != Rewriting::notPossible) return rewriting == Rewriting::done;
    RowPlaces found;
    const RowPlaces& places = placesOf(now, ways, found);
    PatchedText text = patched(saving, ways, places, now);
    if (mayStay && text.isFile(places.size())) return false;
    requireSameReading(log, text, out.name(), now.isPiece ? &losses : nullptr);
    if (ways.require != nullptr) ways.require(saving, now, text);
    text.write(*log.source->input, out);
    return true;
}

}  // namespace vek::formats
