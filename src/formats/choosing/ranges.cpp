#include "formats/choosing/ranges.h"

#include <algorithm>
#include <compare>
#include <optional>

#include <vekdb/formats/keycode.h>
#include <vekdb/formats/timecode.h>
#include <vekdb/host/text_util.h>
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"

namespace vek::formats {

namespace {

bool isOnTime(std::string_view start, std::string_view end, long long wanted) {
    std::optional<Timecode> from = parseTimecode(start);
    std::optional<Timecode> to = parseTimecode(end);
    if (!from || !to) return false;
    bool isBehindStart = from->order() <= wanted;
    bool isBeforeEnd = wanted <= to->order();
    return isOverMidnight(*from, *to) ? isBehindStart || isBeforeEnd : isBehindStart && isBeforeEnd;
}

// Where film is on a roll. Frames are counted within a foot on film of every gauge, so feet and
// frames tell the order without it. Programs write a roll with blanks, dashes or neither.
struct FilmPlace {
    std::string roll;
    std::int64_t feet;
    int frames;

    bool isOnRollOf(const FilmPlace& other) const { return roll == other.roll; }
    std::strong_ordering order(const FilmPlace& other) const {
        const auto byFeet = feet <=> other.feet;
        return byFeet != 0 ? byFeet : frames <=> other.frames;
    }
};

std::optional<FilmPlace> filmPlace(std::string_view text) {
    const std::optional<Keycode> code = parseKeycode(text);
    if (!code) return {};
    FilmPlace place{{}, code->feet, code->frames};
    for (char c : code->roll) {
        if (isAsciiLetterOrDigit(c)) place.roll += asciiLower(c);
    }
    return place;
}

// Nothing where the two are no keycodes. A clip without an end is one frame.
std::optional<bool> isOnFilm(std::string_view start, std::string_view end,
                             const FilmPlace& wanted) {
    const std::optional<FilmPlace> from = filmPlace(start);
    if (!from) return {};
    if (!from->isOnRollOf(wanted) || wanted.order(*from) < 0) return false;
    if (wanted.order(*from) == 0) return true;
    const std::optional<FilmPlace> to = filmPlace(end);
    if (!to) return trimmed(end).empty() ? std::optional(false) : std::nullopt;
    return to->isOnRollOf(wanted) && wanted.order(*to) <= 0;
}

// As the table asks its own columns: as many characters are compared as the text has.
bool isBetweenTexts(std::string_view start, std::string_view end, std::string_view text) {
    if (start.empty()) return false;
    if (start.starts_with(text)) return true;
    return !end.empty() && start.substr(0, text.size()) < text &&
           end.substr(0, text.size()) >= text;
}

// A column that begins a range of the table's own, or ends one.
bool isOfTable(const Log& log, unsigned column) {
    return log.table->isSpecialLabelField(column);
}

bool isPastMidnight(std::string_view cell) {
    const std::optional<Timecode> code = parseTimecode(cell);
    return code && code->hours > 23;
}

// Whether the log goes on counting behind 23:59:59.
bool countsOn(const Log& log, const std::vector<RangeColumns>& pairs) {
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        for (const RangeColumns& pair : pairs) {
            if (isPastMidnight(log.cell(row, pair.start)) ||
                isPastMidnight(log.cell(row, pair.end))) {
                return true;
            }
        }
    }
    return false;
}

[[noreturn]] void refuseTime(const Log& log, const std::string& code, std::string expected) {
    throw Failure{wrongUsage,
                  log.name,
                  {0, "", concat(log.opening.terms->at, " ", inQuotes(code)), std::move(expected),
                   "no row can hold it"}};
}

// A time that no clip of the log can have was mistyped.
void requireTime(const Log& log, const std::vector<RangeColumns>& pairs, const Timecode& time,
                 const std::string& code) {
    if (time.hours > 23 && !countsOn(log, pairs)) {
        refuseTime(log, code, "a time before 24:00:00:00, as all of the log are");
    }
    const LogCounting counting(log);
    const bool isKnown = counting.nominal() > 0 && counting.rateColumn() == noColumn;
    if (!isKnown || isCounted(time, counting.nominal())) return;
    refuseTime(log, code, concat("a frame that is there at ", rateText(*counting.rate())));
}

template <class Holds>
RowTest testOfPairs(const Log& log, std::vector<RangeColumns> pairs, Holds holds) {
    return [&log, pairs = std::move(pairs), holds](unsigned row) {
        return std::any_of(pairs.begin(), pairs.end(), [&](const RangeColumns& pair) {
            return holds(log.cell(row, pair.start), log.cell(row, pair.end));
        });
    };
}

}  // namespace

void requireCode(const std::string& code, const Terms& terms) {
    if (parseTimecode(code) || filmPlace(code)) return;
    throw Failure{wrongUsage, concat(terms.at,
                                     " takes a timecode such as 01:00:05:00 or a keycode such as "
                                     "\"KJ 230012 0345+08\", not ",
                                     inQuotes(code))};
}

RowTest codeTest(const Log& log, const std::string& code) {
    requireCode(code, *log.opening.terms);
    const std::optional<Timecode> time = parseTimecode(code);
    const std::optional<FilmPlace> film = filmPlace(code);
    std::vector<RangeColumns> pairs = rangeColumns(log);
    if (pairs.empty()) {
        throw Failure{
            wrongUsage,
            log.name,
            {0, "", concat("no pair of start and end columns for ", log.opening.terms->at), "",
             ""}};
    }
    if (time) {
        requireTime(log, pairs, *time, code);
        return testOfPairs(log, std::move(pairs), [order = time->order()](auto start, auto end) {
            return isOnTime(start, end, order);
        });
    }
    return testOfPairs(log, std::move(pairs), [wanted = *film](auto start, auto end) {
        return isOnFilm(start, end, wanted).value_or(false);
    });
}

bool isOfLabelRange(const Log& log, unsigned column) {
    if (isOfTable(log, column) || !namesFilmCode(log.columnName(column))) return false;
    return rangeOf(log, column).start != noColumn;
}

RowTest labelRangeTest(const Log& log, const Condition& condition) {
    const std::optional<FilmPlace> film = filmPlace(condition.text);
    return testOfPairs(log, {rangeOf(log, condition.column)},
                       [film, text = condition.text](auto start, auto end) {
                           std::optional<bool> isThere;
                           if (film) isThere = isOnFilm(start, end, *film);
                           return isThere ? *isThere : isBetweenTexts(start, end, text);
                       });
}

}  // namespace vek::formats
