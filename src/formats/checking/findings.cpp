#include "formats/checking/findings.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/text_util.h>
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"
#include "formats/writing/table_values.h"

namespace vek::formats {

namespace {

// Most cells are too long or too short for one, or begin with a letter.
bool isTimecode(std::string_view text) {
    return text.size() >= 8 && text.size() <= 11 && isAsciiDigit(text.front()) &&
           parseTimecode(text).has_value();
}

// "1:00:00", as a sheet of cells shows a time: digits, with a colon between them twice or more.
bool isClockTime(std::string_view text) {
    const bool isPlain = text.find_first_not_of("0123456789:.") == text.npos;
    const auto colons = std::count(text.begin(), text.end(), ':');
    return isPlain && colons >= 2 && isAsciiDigit(text.front()) && isAsciiDigit(text.back());
}

// Whether it can be read as one: feet, a plus and two digits of frames.
bool isKeycode(std::string_view text) {
    if (text.size() < 4) return false;
    const char* const end = text.data() + text.size();
    return end[-3] == '+' && isAsciiDigit(end[-4]) && isAsciiDigit(end[-2]) &&
           isAsciiDigit(end[-1]);
}

int framesOfKeycode(std::string_view text) {
    const char* const end = text.data() + text.size();
    return (end[-2] - '0') * 10 + (end[-1] - '0');
}

// What the filled cells of a column are.
struct ColumnKinds {
    std::size_t filled = 0;
    std::size_t timecodes = 0;
    std::size_t keycodes = 0;

    /// `isInRange`: the name of the column says that it begins or ends something.
    void add(std::string_view cell, bool isInRange) {
        if (cell.empty()) return;
        ++filled;
        cell = trimmed(cell);
        if (isTimecode(cell) || (isInRange && !cell.empty() && isClockTime(cell)))
            ++timecodes;
        else
            keycodes += isKeycode(cell) ? 1 : 0;
    }
    bool areMostly(std::size_t count) const { return filled > 0 && count * 2 >= filled; }
    /// Whether it is certain what most cells are, whatever others are to come.
    bool areSure(std::size_t rows) const {
        const std::size_t most = std::max(timecodes, keycodes);
        return 2 * most > rows || 2 * (filled - most) > rows;
    }
};

constexpr int hoursInDay = 24;

// Goes through a log and notes everything that is wrong with it.
class Checker {
public:
    Checker(const Log& log, Input& input, const Gauge& gauge)
        : log_(log), input_(input), gauge_(gauge), counting_(log), ranges_(rangeColumns(log)) {}

    ProblemList check() {
        addAll(log_.problems);
        addAll(counting_.contradictions());
        ++at_;
        const auto tell = [this](const Problem& one) { found_.add(at_, one); };
        tellText(input_, log_, tell);
        const std::size_t first = ++at_;
        forms_.resize(log_.columnCount());
        checkRows(first);
        checkForms(first);
        checkIdentifiers();
        tellRows(log_, tell);
        found_.sort();
        return std::move(found_);
    }

    /// How many of them are remarks, about what is odd and yet right.
    std::size_t remarks() const { return remarks_; }

private:
    void add(unsigned row, unsigned column, const std::string& found, const std::string& expected) {
        found_.add(at_, {log_.lineOf(row), log_.columnName(column), found, expected, ""});
    }

    void addAll(const std::vector<Problem>& problems) {
        for (const Problem& one : problems) found_.add(at_, one);
    }

    // How a column that may drop frames writes its times.
    struct Forms {
        struct Form {
            std::size_t count = 0;
            unsigned first = 0;  // row
        };
        Form drop;
        Form other;

        bool areTwo() const { return drop.count > 0 && other.count > 0; }
        const Form& rarer() const { return drop.count < other.count ? drop : other; }
    };

    void noteForm(unsigned row, unsigned column, const Timecode& code) {
        if (!mayDrop(row, column)) return;
        Forms::Form& form = code.dropFrame ? forms_[column].drop : forms_[column].other;
        if (form.count++ == 0) form.first = row;
    }

    // Told once for a column, where what is rare begins.
    void checkForms(std::size_t first) {
        for (unsigned column = 0; column < forms_.size(); ++column) {
            const Forms& forms = forms_[column];
            if (!forms.areTwo()) continue;
            const std::size_t at = std::exchange(at_, first + column);
            const unsigned row = forms.rarer().first;
            add(row, column, inQuotes(log_.cell(row, column)),
                concat("one form in the column: ", counted(forms.drop.count, "time"),
                       " with a semicolon before the frames, ", std::to_string(forms.other.count),
                       " without"));
            at_ = at;
        }
    }

    // A column whose cells are looked at one by one.
    struct CodeColumn {
        unsigned column;
        bool hasKeycodes;
    };

    // The rows are gone through once for all columns. What is found is told column by column.
    void checkRows(std::size_t first) {
        const std::vector<CodeColumn> codes = codeColumns();
        std::vector<std::string_view> cells(log_.columnCount());
        times_.resize(cells.size());
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            log_.cells(row, cells);
            for (const CodeColumn& code : codes) {
                at_ = first + code.column;
                checkCode(row, code, cells[code.column]);
            }
            if (log_.format != Format::table) checkHolds(first, row, cells);
            at_ = first + cells.size();
            for (const RangeColumns& pair : ranges_) {
                checkRange(row, pair, cells);
                ++at_;
            }
        }
        at_ = first + cells.size() + ranges_.size();
    }

    // What most of a column's cells are is counted where no type says it.
    std::vector<CodeColumn> codeColumns() const {
        std::vector<unsigned> untyped;
        for (unsigned i = 0; i < log_.columnCount(); ++i) {
            if (!isTyped(i)) untyped.push_back(i);
        }
        const std::vector<ColumnKinds> counts = kindsOf(untyped);
        std::vector<CodeColumn> codes;
        for (unsigned i = 0; i < counts.size(); ++i) {
            const ColumnKinds& kinds = counts[i];
            if (isTyped(i) || kinds.areMostly(kinds.timecodes))
                codes.push_back({i, false});
            else if (kinds.areMostly(kinds.keycodes))
                codes.push_back({i, true});
        }
        return codes;
    }

    // A column is looked at until it is certain what its cells are.
    std::vector<ColumnKinds> kindsOf(std::vector<unsigned> columns) const {
        constexpr unsigned atOnce = 1024;
        std::vector<ColumnKinds> counts(log_.columnCount());
        std::vector<bool> isInRange(counts.size());
        for (const RangeColumns& pair : ranges_) isInRange[pair.start] = isInRange[pair.end] = true;
        std::vector<std::string_view> cells(counts.size());
        const unsigned rows = log_.rowCount();
        for (unsigned row = 0; row < rows && !columns.empty();) {
            for (const unsigned end = std::min(rows, row + atOnce); row < end; ++row) {
                log_.cells(row, cells);
                for (unsigned column : columns) {
                    counts[column].add(cells[column], isInRange[column]);
                }
            }
            std::erase_if(columns, [&](unsigned column) { return counts[column].areSure(rows); });
        }
        return counts;
    }

    bool isTyped(unsigned column) const {
        const DBFieldTypes::eType type = log_.table->get_field_type(column);
        return type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s;
    }

    void checkCode(unsigned row, const CodeColumn& code, std::string_view cell) {
        if (cell.empty()) return;
        if (code.hasKeycodes)
            checkKeycode(row, code.column, trimmed(cell));
        else
            checkTimecode(row, code.column, cell);
    }

    void checkHolds(std::size_t first, unsigned row, const std::vector<std::string_view>& cells) {
        if (areSurelyKept(cells.data(), cells.size())) return;
        for (unsigned i = 0; i < cells.size(); ++i) {
            at_ = first + i;
            checkHolds(row, i, cells[i]);
        }
    }

    void checkTimecode(unsigned row, unsigned column, std::string_view cell) {
        const std::optional<Timecode> code = parseTimecode(cell);
        times_[column] = {row, code};
        if (!code)
            add(row, column, inQuotes(cell), "a timecode such as 01:00:00:00");
        else
            checkCounting(row, column, cell, *code);
        if (code && code->hours >= hoursInDay) {
            addRemark(row, column, inQuotes(cell), "a time beyond a day");
        }
        if (code) noteForm(row, column, *code);
    }

    // Drop-frame counting leaves out the first numbers of most minutes. How many frames a
    // second has is known from the log; logs of two rates name the higher one.
    void checkCounting(unsigned row, unsigned column, std::string_view cell, const Timecode& code) {
        const int nominal = counting_.nominal(row, column);
        if (nominal != 0 && code.frames >= nominal) {
            add(row, column, inQuotes(cell),
                concat("frames below ", std::to_string(nominal), ", as the FPS ",
                       counting_.ownRate(row, column) ? "of the row" : "parameter", " says"));
        } else if (isLeftOut(row, column, code)) {
            addLeftOut(row, column, cell);
        } else if (code.dropFrame && !mayDrop(row, column)) {
            add(row, column, inQuotes(cell),
                "a colon before the frames, as FPS or FCM says that none are dropped");
        }
    }

    bool mayDrop(unsigned row, unsigned column) const {
        const int nominal = counting_.nominal(row, column);
        const bool canDrop = nominal == 0 || canDropFrames(nominal);
        return canDrop && counting_.counting(row, column) != Counting::nonDrop;
    }

    int nominalOfDropFrame(unsigned row, unsigned column) const {
        const int nominal = counting_.nominal(row, column);
        return canDropFrames(nominal) && nominal != 0 ? nominal : 30;
    }

    bool isLeftOut(unsigned row, unsigned column, Timecode code) const {
        const Counting said = counting_.counting(row, column);
        code.dropFrame = code.dropFrame || said == Counting::dropFrame;
        const int nominal = nominalOfDropFrame(row, column);
        return code.frames < nominal && !isCounted(code, nominal);
    }

    void addLeftOut(unsigned row, unsigned column, std::string_view cell) {
        std::string first = std::to_string(droppedEachMinute(nominalOfDropFrame(row, column)));
        add(row, column, inQuotes(cell),
            "frame 0" + first + " or later: drop-frame counting leaves out " +
                (first == "2" ? "00 and 01 here" : "the numbers before it here"));
    }

    void checkKeycode(unsigned row, unsigned column, std::string_view cell) {
        if (cell.empty()) return;
        if (!isKeycode(cell))
            add(row, column, inQuotes(cell), "a keycode that ends in feet+frames");
        else if (framesOfKeycode(cell) >= gauge_.mostFramesInFoot())
            add(row, column, inQuotes(cell),
                "frames below " + std::to_string(gauge_.mostFramesInFoot()) + ", as " +
                    gauge_.title + " has, or another --gauge");
    }

    // What a table file would change. A table's own cells have been through one already; what
    // was lost on the way is told by its lines.
    void checkHolds(unsigned row, unsigned column, std::string_view cell) {
        if (cell.size() > longestTableValue) {
            add(row, column, "a value of " + std::to_string(cell.size()) + " bytes",
                "at most 4094, which is what a table file holds");
        }
        TableLoss loss = tableFileLoss(cell);
        if (loss != TableLoss::none) add(row, column, inQuotes(cell), wantedInsteadOf(loss));
    }

    static const char* wantedInsteadOf(TableLoss loss) {
        switch (loss) {
            case TableLoss::blanks:
                return "no blanks at the ends, which a table file drops";
            case TableLoss::carriageReturns:
                return "no carriage returns, which a table file drops";
            case TableLoss::backslash:
                return "no backslash before n or a line end, which a table file changes";
            default:
                return "a text that a table file holds";
        }
    }

    // As it was read before where the column is one of timecodes.
    std::optional<Timecode> timeIn(unsigned row, unsigned column, std::string_view cell) const {
        const LastTime& last = times_[column];
        return last.row == row ? last.time : parseTimecode(cell);
    }

    void checkRange(unsigned row, const RangeColumns& pair,
                    const std::vector<std::string_view>& cells) {
        const std::string_view start = cells[pair.start];
        const std::string_view end = cells[pair.end];
        const std::optional<Timecode> from = timeIn(row, pair.start, start);
        const std::optional<Timecode> to = from ? timeIn(row, pair.end, end) : std::nullopt;
        if (from && to) return checkTimes(row, pair, *from, *to);
        if (!isKeycode(trimmed(start)) || !isKeycode(trimmed(end))) return;
        if (endsBefore(parseKeycode(start), parseKeycode(end))) addEndBefore(row, pair);
    }

    void checkTimes(unsigned row, const RangeColumns& pair, const Timecode& from,
                    const Timecode& to) {
        if (isOverMidnight(from, to))
            addRemark(row, pair.end,
                      concat(inQuotes(log_.cell(row, pair.end)), " is before the start ",
                             inQuotes(log_.cell(row, pair.start))),
                      "a clip over midnight");
        else if (to.order() < from.order())
            addEndBefore(row, pair);
        if (from.dropFrame == to.dropFrame || !mayDrop(row, pair.end)) return;
        add(row, pair.end, inQuotes(log_.cell(row, pair.end)),
            "the form of the start " + inQuotes(log_.cell(row, pair.start)) +
                ": a semicolon before the frames of both, or of none");
    }

    void addEndBefore(unsigned row, const RangeColumns& pair) {
        add(row, pair.end, inQuotes(log_.cell(row, pair.end)),
            "an end that is not before the start " + inQuotes(log_.cell(row, pair.start)));
    }

    void addRemark(unsigned row, unsigned column, const std::string& found, const char* about) {
        ++remarks_;
        found_.add(
            at_, {log_.lineOf(row), log_.columnName(column), found, "", concat("remark: ", about)});
    }

    bool endsBefore(const std::optional<Keycode>& start, const std::optional<Keycode>& end) const {
        return start && end && sameText(start->roll, end->roll) &&
               !perforationsBetween(*start, *end, gauge_);
    }

    void checkIdentifiers() {
        unsigned column = log_.findColumn("Cookie");
        if (column == noColumn) return;
        std::unordered_map<std::string_view, unsigned, Quor::KeyedHash> first;
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            std::string_view cell = log_.cell(row, column);
            if (cell.empty()) continue;
            auto [entry, isNew] = first.try_emplace(cell, row);
            if (isNew) continue;
            add(row, column, inQuotes(cell),
                "an identifier of its own; line " + std::to_string(log_.lineOf(entry->second)) +
                    " has it already");
        }
    }

    const Log& log_;
    Input& input_;
    const Gauge& gauge_;
    LogCounting counting_;
    std::vector<RangeColumns> ranges_;
    // In the order in which they are told of one line: what is said of the whole log, its lines,
    // each column, each range, identifiers.
    ProblemList found_;
    std::size_t at_ = 0;  // what is found now belongs there
    std::size_t remarks_ = 0;
    std::vector<Forms> forms_;  // of the columns
    struct LastTime {
        unsigned row = noColumn;  // none at first
        std::optional<Timecode> time;
    };
    std::vector<LastTime> times_;  // of the columns
};

}  // namespace

Findings findingsOf(const Log& log, Input& input, const Gauge& gauge) {
    Checker checker(log, input, gauge);
    Findings findings{log.name};
    findings.problems = checker.check();
    findings.remarks = checker.remarks();
    findings.more = log.moreProblems;
    findings.notRead = log.notRead;
    return findings;
}

bool isRemark(const Problem& problem) {
    return problem.outcome.starts_with("remark");
}

}  // namespace vek::formats
