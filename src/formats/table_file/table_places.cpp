#include "formats/table_file/table_places.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vekdb/row_lines.h>
#include "formats/input/input.h"
#include "formats/saving/reading_back.h"
#include "formats/saving/rows_in_place.h"

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

// Stands in the first piece as a rule; what does not is not looked for.
std::string headingOf(const Log& log) {
    const Input& input = *log.source->input;
    std::string text(std::min<std::uint64_t>(FirstLook::size, input.size()), '\0');
    input.readAgain(0, text.data(), text.size());
    const std::size_t end = endOfLines(text, log.source->headingLines);
    text.resize(end == text.npos ? 0 : end);
    return text;
}

// Behind the line that begins there; the text's end where it has no end.
std::uint64_t endOfLineAt(const Input& input, std::uint64_t place) {
    std::string piece;
    for (std::size_t got = 1; got != 0; place += got) {
        piece.resize(std::size_t{1} << 12);
        got = input.readFrom(place, piece.data(), piece.size());
        const std::size_t end = std::string_view(piece).substr(0, got).find('\n');
        if (end != std::string_view::npos) return place + end + 1;
    }
    return place;
}

// Finds the places by those of the values in memory, whose text began as a copy of the file's.
class PlacesByRows {
public:
    PlacesByRows(const Log& log, std::string_view heading)
        : log_(log),
          input_(*log.source->input),
          rows_(log.rowCount()),
          heading_(heading.size()),
          lineEnd_(endOfLine(heading).size()) {}

    bool find() {
        if (!areLinesOneByOne() || beginOf(0) != heading_) return false;
        places.beginAt(heading_);
        std::uint64_t at = heading_;
        for (unsigned row = 0; row < rows_; ++row) {
            at = add(row, at);
            if (at == 0) return false;
        }
        places.endAt(input_.size());
        return true;
    }

    RowPlaces places;
    std::vector<bool> odd;

private:
    // From the heading on each line is a row, to the last one.
    bool areLinesOneByOne() const {
        const Source& source = *log_.source;
        if (source.isDamaged || log_.leftOut != 0) return false;
        return rows_ == 0 || log_.lines[rows_ - 1] == source.headingLines + rows_;
    }

    // The end of a text that has fewer rows.
    std::uint64_t beginOf(unsigned row) const {
        return rows_ == 0 ? heading_ : RowLines::placeAsRead(recordOf(log_, row)).value_or(0);
    }

    // The end of the line that begins there; 0 where it is not known.
    std::uint64_t add(unsigned row, std::uint64_t begin) {
        const bool isLast = row + 1 == rows_;
        const std::uint64_t end = isLast ? endOfLineAt(input_, begin) : beginOf(row + 1);
        if (end <= begin) return 0;
        places.add({begin, end});
        const std::size_t made = RowLines::sizeAsRead(recordOf(log_, row));
        const bool hasEnd = !isLast || !log_.endsInLine || end != input_.size();
        if (made == 0 || !hasEnd || made + lineEnd_ != end - begin) noteOdd(row);
        return end;
    }

    void noteOdd(unsigned row) {
        if (odd.empty()) odd.resize(rows_);
        odd[row] = true;
    }

    const Log& log_;
    const Input& input_;
    const unsigned rows_;
    const std::uint64_t heading_;
    const std::size_t lineEnd_;
};

}  // namespace

// No line is shorter than what writing its row makes, so where all together are as long, each is. A
// last line without an end may be.
bool isAsWritten(const Log& log, std::uint64_t heading, std::uint64_t size) {
    if (log.endsInLine) return false;
    std::uint64_t at = heading;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        const std::size_t line = RowLines::sizeAsRead(recordOf(log, row));
        if (line == 0) return false;
        at += line + 1;
    }
    return at == size;
}

void notePlaces(Log& log) {
    const std::string heading = headingOf(log);
    if (heading.empty()) return;
    PlacesByRows found(log, heading);
    if (!found.find()) return;
    log.source->places = std::move(found.places);
    log.source->oddRows = std::move(found.odd);
}

}  // namespace vek::formats
