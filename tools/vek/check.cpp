#include <algorithm>
#include <unordered_map>

#include "tools/vek/cli/conditions.h"
#include "tools/vek/cli/input.h"
#include "tools/vek/cli/readers.h"
#include "tools/vek/cli/table_lines.h"
#include "tools/vek/cli/timecode.h"
#include "tools/vek/cli/width.h"
#include "tools/vek/cli/write_formats.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

constexpr int anyGauge = 16;  // only the form of keycodes is looked at

bool isTimecode(std::string_view text) {
    return parseTimecode(text).has_value();
}

bool isKeycode(std::string_view text) {
    return keycodeFrames(text, anyGauge).has_value();
}

// Whether at least half of the filled cells are such values.
template <class Is>
bool isMostly(const Log& log, unsigned column, Is is) {
    std::size_t filled = 0;
    std::size_t good = 0;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        std::string_view cell = log.cell(row, column);
        filled += cell.empty() ? 0 : 1;
        good += is(trimmed(cell)) ? 1 : 0;
    }
    return filled > 0 && good * 2 >= filled;
}

// Goes through a log and notes everything that is wrong with it.
class Checker {
public:
    explicit Checker(const Log& log, std::string_view text)
        : log_(log), text_(text), problems_(log.problems) {
        rate_ = parseFrameRate(log.parameter("FPS"));
    }

    std::vector<Problem> check() {
        if (log_.format == Format::table) checkTableLines();
        for (unsigned column = 0; column < log_.columnCount(); ++column) checkColumn(column);
        for (const RangeColumns& pair : rangeColumns(log_)) checkRange(pair);
        checkIdentifiers();
        std::stable_sort(problems_.begin(), problems_.end(),
                         [](const Problem& a, const Problem& b) { return a.line < b.line; });
        return problems_;
    }

private:
    void add(unsigned row, unsigned column, const std::string& found, const std::string& expected) {
        problems_.push_back({log_.lineOf(row), log_.columnName(column), found, expected, ""});
    }

    void checkTableLines() {
        std::vector<Problem> more = problemsOfTableText(text_, log_);
        problems_.insert(problems_.end(), more.begin(), more.end());
    }

    void checkColumn(unsigned column) {
        DBFieldTypes::eType type = log_.table->get_field_type(column);
        bool isTyped = type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s;
        if (isTyped || isMostly(log_, column, isTimecode))
            checkTimecodes(column);
        else if (isMostly(log_, column, isKeycode))
            checkKeycodes(column);
        if (log_.format == Format::table) return;
        for (unsigned row = 0; row < log_.rowCount(); ++row) checkHolds(row, column);
    }

    void checkTimecodes(unsigned column) {
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            std::string_view cell = log_.cell(row, column);
            if (cell.empty()) continue;
            std::optional<Timecode> code = parseTimecode(cell);
            if (!code)
                add(row, column, inQuotes(cell), "a timecode such as 01:00:00:00");
            else
                checkCounting(row, column, cell, *code);
        }
    }

    // Drop-frame counting leaves out the first numbers of most minutes. How many frames a
    // second has is known from the log; logs of two rates name the higher one.
    void checkCounting(unsigned row, unsigned column, std::string_view cell, const Timecode& code) {
        if (rate_ && code.frames >= rate_->nominal) {
            add(row, column, inQuotes(cell),
                "frames below " + std::to_string(rate_->nominal) + ", as the FPS parameter says");
        } else if (code.dropFrame && code.seconds == 0 && code.frames < 2 && code.minutes % 10) {
            add(row, column, inQuotes(cell),
                "frame 02 or later: drop-frame counting leaves out "
                "00 and 01 here");
        }
    }

    void checkKeycodes(unsigned column) {
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            std::string_view cell = trimmed(log_.cell(row, column));
            if (cell.empty() || isKeycode(cell)) continue;
            add(row, column, inQuotes(cell), "a keycode that ends in feet+frames");
        }
    }

    // What a table file would change. A table's own cells have been through one already; what
    // was lost on the way is told by its lines.
    void checkHolds(unsigned row, unsigned column) {
        std::string_view cell = log_.cell(row, column);
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

    void checkRange(const RangeColumns& pair) {
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            std::string_view start = log_.cell(row, pair.start);
            std::string_view end = log_.cell(row, pair.end);
            if (!endsBefore(start, end)) continue;
            add(row, pair.end, inQuotes(end),
                "an end that is not before the start " + inQuotes(start));
        }
    }

    static bool endsBefore(std::string_view start, std::string_view end) {
        std::optional<Timecode> from = parseTimecode(start);
        std::optional<Timecode> to = parseTimecode(end);
        if (from && to) return to->order() < from->order();
        std::optional<std::int64_t> head = keycodeFrames(trimmed(start), 40);
        std::optional<std::int64_t> tail = keycodeFrames(trimmed(end), 40);
        std::string_view roll = keycodeRoll(start);
        return head && tail && roll == keycodeRoll(end) && *tail < *head;
    }

    void checkIdentifiers() {
        unsigned column = log_.findColumn("Cookie");
        if (column == noColumn) return;
        std::unordered_map<std::string, unsigned> first;
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            std::string cell(log_.cell(row, column));
            if (cell.empty()) continue;
            auto [entry, isNew] = first.try_emplace(cell, row);
            if (isNew) continue;
            add(row, column, inQuotes(cell),
                "an identifier of its own; line " + std::to_string(log_.lineOf(entry->second)) +
                    " has it already");
        }
    }

    const Log& log_;
    std::string_view text_;
    std::vector<Problem> problems_;
    std::optional<FrameRate> rate_;
};

std::size_t checkFile(const std::string& path, const Args& args, Output& out) {
    Input input(path);
    Log log = openLog(input, path, args.text("from"));
    std::vector<Problem> problems = Checker(log, input.text()).check();
    for (const Problem& problem : problems) out.line(escaped(worded(log.name, problem)));
    if (!log.notRead.empty()) out.line(escaped(log.notRead));
    return problems.size() + (log.notRead.empty() ? 0 : 1);
}

int run(const Args& args) {
    Output out;
    std::size_t problems = 0;
    int result = done;
    for (const std::string& path : args.all("FILE")) {
        try {
            problems += checkFile(path, args, out);
        } catch (const Failure& failure) {
            if (failure.code != unreadable) throw;
            say(failure.text);
            result = unreadable;
        }
    }
    out.close();
    if (problems > 0) say(counted(problems, "problem"));
    return result != done ? result : problems > 0 ? found : done;
}

}  // namespace

Command checkCommand() {
    return {
        "check",
        "find every problem in logs",
        "Prints one line a problem, file:line:column: what was found, what was expected. It finds "
        "damaged and ragged lines, values that a table file would change on the way, timecodes "
        "and keycodes that do not parse, ends before starts, identifiers that appear twice and "
        "unknown column types. Ends with 1 when it found something, with 3 when a file could not "
        "be read.",
        {{"vek check samples/*.vek", "several files"},
         {"vek check samples/docs.vek && echo fine", "in a script"}},
        {{"FILE", "a log, or - for standard input", false, true}},
        {fromOption()},
        run,
    };
}

}  // namespace vek
