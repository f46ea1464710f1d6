#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/timecode.h>
#include "formats/text/text_lines.h"
#include "formats/timecode/counting.h"
#include "formats/timecode/timecode.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

enum class Prefer { report, first, last, filled };

Prefer preferOf(const Args& args) {
    std::string word = args.text("prefer");
    if (word == "first") return Prefer::first;
    if (word == "last") return Prefer::last;
    if (word == "filled") return Prefer::filled;
    return Prefer::report;
}

bool isTimecodeType(DBFieldTypes::eType type) {
    return type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s;
}

// A value of one timecode form in the form of another column; other values as they are.
std::string inForm(std::string_view value, DBFieldTypes::eType from, DBFieldTypes::eType to) {
    if (from == to || !isTimecodeType(from) || !isTimecodeType(to)) return std::string(value);
    char buffer[time_def::maxForm];
    return std::string(to == DBFieldTypes::timecode ? time_def::punctuatedForm(value, buffer)
                                                    : time_def::databaseForm(value, buffer));
}

// What "FPS" says, where it says a frame rate.
std::optional<FrameRate> rateOf(const Log& log) {
    return parseFrameRate(log.parameter("FPS"));
}

// Timecodes of two rates count differently, and nothing in a joined log tells which is which.
void refuseOtherRate(const Log& into, const Log& from) {
    std::optional<FrameRate> ours = rateOf(into);
    std::optional<FrameRate> theirs = rateOf(from);
    if (!ours || !theirs || ours->isAsFastAs(*theirs)) return;
    throw Failure{found, from.name + ": FPS is " + from.parameter("FPS") + ", expected " +
                             into.parameter("FPS") + " as in " + into.name +
                             "; nothing is written, --yes joins the logs all the same"};
}

std::string counts(const Log& log) {
    const bool drops = LogCounting(log).countingOfAll() == Counting::dropFrame;
    return concat(log.name, drops ? " counts drop-frame" : " counts non-drop");
}

// Nor does anything tell which rows count drop-frame where colons stand before the frames.
void refuseOtherCounting(const Log& into, const Log& from) {
    const Counting ours = LogCounting(into).countingOfAll();
    const Counting theirs = LogCounting(from).countingOfAll();
    if (ours == Counting::unsaid || theirs == Counting::unsaid || ours == theirs) return;
    throw Failure{found, concat(counts(from), " by its FPS or FCM, and ", counts(into),
                                "; nothing is written, --yes joins the logs all the same")};
}

// Joins further logs to the first one.
class Merger {
public:
    Merger(Log& into, Prefer prefer) : into_(into), prefer_(prefer) {}

    void useKey(const std::string& name) {
        key_ = into_.requireColumn(name);
        for (unsigned row = 0; row < into_.rowCount(); ++row) {
            std::string value(into_.cell(row, key_));
            if (value.empty()) continue;
            std::vector<unsigned>& rows = rows_[value];
            if (!rows.empty()) tellRepeated(into_, row, key_, value);
            rows.push_back(row);
        }
    }

    void add(const Log& from) {
        addColumns(from);
        addParameters(from);
        if (key_ == noColumn)
            append(from);
        else
            join(from);
    }

    std::size_t conflicts() const { return conflicts_; }
    std::size_t repeatedKeys() const { return repeatedKeys_; }

private:
    // Two columns of one name would end up in one, and a cell of them be lost.
    static void refuseRepeated(const Log& from) {
        if (from.repeatedNames.empty()) return;
        std::string name = from.columnName(from.repeatedNames.front().columns.front());
        throw Failure{wrongUsage, from.name + ": column " + inQuotes(name) +
                                      " is there twice, expected names that differ; give one of "
                                      "them another name"};
    }

    void addColumns(const Log& from) {
        refuseRepeated(from);
        columns_.clear();
        for (unsigned i = 0; i < from.columnCount(); ++i) {
            unsigned column = into_.table->addField(
                {cellText(from.columnName(i)), from.table->get_field_type(i)});
            if (column == noColumn) {
                throw Failure{unwritable, from.name + ": no room for column " +
                                              inQuotes(from.columnName(i)) +
                                              ", a log holds at most 65535"};
            }
            columns_.push_back(column);
        }
    }

    void addParameters(const Log& from) {
        for (unsigned i = 0; i < from.table->get_num_params(); ++i) {
            std::string name = from.table->get_param_name(i);
            std::string value = from.table->get_param_text(i);
            bool isOwn = sameText(name, "VEKDB") || sameText(name, "V5_FIELD_MAP");
            if (isOwn || into_.parameter(name.c_str()) == value) continue;
            if (into_.table->get_param_val(name.c_str()) != nullptr) {
                say(from.name + ": parameter " + inQuotes(name) + " is " + inQuotes(value) + ", " +
                    inQuotes(into_.parameter(name.c_str())) + " in " + into_.name +
                    "; the first is kept");
            } else if (!into_.setParameter(name, value)) {
                say(from.name + ": parameter " + inQuotes(name) + " has no room, 40 are there");
            }
        }
    }

    void append(const Log& from) {
        unsigned first = addRows(from, 0, from.rowCount());
        for (unsigned row = 0; row < from.rowCount(); ++row) fill(from, row, first + row);
    }

    // Rows for so many of the log's from one on; the first of them.
    unsigned addRows(const Log& from, unsigned row, unsigned count) {
        unsigned first = into_.rowCount();
        into_.table->add_records(static_cast<int>(count));
        for (unsigned i = 0; i < count; ++i) {
            into_.lines.push_back(static_cast<std::uint32_t>(from.lineOf(row + i)));
        }
        return first;
    }

    // Puts what a row has into the empty cells of ours.
    void fill(const Log& from, unsigned row, unsigned target) {
        for (unsigned i = 0; i < columns_.size(); ++i) {
            if (from.cell(row, i).empty() || !into_.cell(target, columns_[i]).empty()) continue;
            store(target, columns_[i], inOurForm(from, row, i));
        }
    }

    using RowsOfKeys = std::unordered_map<std::string, std::vector<unsigned>, Quor::KeyedHash>;

    // How many rows of the log that is being added have a key, and how many of them had their turn.
    struct Turns {
        std::size_t count = 0;
        std::size_t done = 0;
    };

    void join(const Log& from) {
        unsigned key = from.requireColumn(into_.columnName(key_));
        std::unordered_map<std::string, Turns, Quor::KeyedHash> turns;
        for (unsigned row = 0; row < from.rowCount(); ++row) {
            std::string value = inOurForm(from, row, key);
            bool isRepeated = turns[value].count++ > 0 && !value.empty();
            if (isRepeated) tellRepeated(from, row, key, value);
        }
        taken_.clear();
        for (unsigned row = 0; row < from.rowCount(); ++row) {
            std::string value = inOurForm(from, row, key);
            joinRow(from, row, value, turns[value]);
        }
    }

    void joinRow(const Log& from, unsigned row, const std::string& key, Turns& turns) {
        auto known = key.empty() ? rows_.end() : rows_.find(key);
        if (known == rows_.end()) return addRow(from, row, key);
        if (turns.count == 1 && known->second.size() == 1) {
            return settleRow(from, row, known->second.front());
        }
        // A key that one of the logs has twice names no single row, so nothing is replaced.
        unsigned target = agreeingRow(from, row, known->second, turns.done++);
        if (target == noRow) return addRow(from, row, key);
        taken_.insert(target);
        fill(from, row, target);
    }

    void addRow(const Log& from, unsigned row, const std::string& key) {
        unsigned target = addRows(from, row, 1);
        fill(from, row, target);
        if (key.empty()) return;
        rows_[key].push_back(target);
        taken_.insert(target);
    }

    // Of some rows one that no other row of this log went to and no cell speaks against. The one
    // whose turn it is comes first; that there is an end to the looking keeps the time in
    // proportion to the logs.
    unsigned agreeingRow(const Log& from, unsigned row, const std::vector<unsigned>& targets,
                         std::size_t turn) const {
        constexpr std::size_t mostLooks = 100;
        for (std::size_t i = 0; i < std::min(targets.size(), mostLooks); ++i) {
            unsigned target = targets[(turn + i) % targets.size()];
            if (!taken_.contains(target) && agrees(from, row, target)) return target;
        }
        return noRow;
    }

    bool agrees(const Log& from, unsigned row, unsigned target) const {
        for (unsigned i = 0; i < columns_.size(); ++i) {
            std::string_view old = into_.cell(target, columns_[i]);
            if (old.empty() || from.cell(row, i).empty()) continue;
            if (old != inOurForm(from, row, i)) return false;
        }
        return true;
    }

    std::string inOurForm(const Log& from, unsigned row, unsigned column) const {
        return inForm(from.cell(row, column), from.table->get_field_type(column),
                      into_.table->get_field_type(columns_[column]));
    }

    void settleRow(const Log& from, unsigned row, unsigned target) {
        for (unsigned i = 0; i < columns_.size(); ++i) {
            unsigned column = columns_[i];
            std::string value = inOurForm(from, row, i);
            std::string_view old = into_.cell(target, column);
            if (value == old) continue;
            if (old.empty())
                store(target, column, value);
            else if (!value.empty())
                settle(from, row, target, column, value);
            else if (prefer_ == Prefer::last)
                store(target, column, value);
        }
    }

    // Two values for one cell: the choice is told unless the person made it.
    void settle(const Log& from, unsigned row, unsigned target, unsigned column,
                const std::string& value) {
        bool takesLast = prefer_ == Prefer::last || prefer_ == Prefer::filled;
        if (takesLast) return store(target, column, value);
        if (prefer_ == Prefer::first) return;
        ++conflicts_;
        std::string_view old = into_.cell(target, column);
        say(worded(from.name, {from.lineOf(row), into_.columnName(column), inQuotes(value),
                               inQuotes(old) + ", as row " + std::to_string(target + 1) + " has",
                               "the first is kept"}));
    }

    void tellRepeated(const Log& log, unsigned row, unsigned column, const std::string& value) {
        ++repeatedKeys_;
        say(worded(log.name,
                   {log.lineOf(row), log.columnName(column), inQuotes(value) + " a second time",
                    "each key once", "both rows are kept"}));
    }

    void store(unsigned row, unsigned column, std::string_view value) {
        into_.table->get_record(row)->setField(static_cast<unsigned short>(column),
                                               cellText(value));
    }

    static constexpr unsigned noRow = 0xFFFFFFFF;

    Log& into_;
    Prefer prefer_;
    unsigned key_ = noColumn;
    std::vector<unsigned> columns_;       // of the log that is being added, in ours
    RowsOfKeys rows_;                     // ours, by their keys
    std::unordered_set<unsigned> taken_;  // ours of repeated keys that a row of this log went to
    std::size_t conflicts_ = 0;
    std::size_t repeatedKeys_ = 0;
};

Target wantedTarget(const Args& args) {
    if (args.has("to")) return targetNamed(args.text("to"));
    if (!args.has("output") || args.text("output") == "-") return Target::table;
    return targetOfPath(args.text("output"));
}

bool tellConflicts(const Merger& merger) {
    if (merger.repeatedKeys() > 0) {
        say(counted(merger.repeatedKeys(), "conflict") +
            " of keys; rows of a repeated key are only joined where no cell differs");
    }
    if (merger.conflicts() > 0) {
        say(counted(merger.conflicts(), "conflict") +
            "; choose with --prefer first, last or filled");
    }
    return merger.repeatedKeys() + merger.conflicts() > 0;
}

int run(const Args& args) {
    const std::vector<std::string>& paths = args.all("FILE");
    if (args.has("prefer") && !args.has("key")) {
        throw Failure{wrongUsage, "merge: --prefer is for rows of one key, expected --key"};
    }
    Target target = wantedTarget(args);
    Held held = holdInput(paths, args.text("output"));
    Log into = readLog(paths[0], args.text("from"));
    int result = readingResult(into);
    Merger merger(into, preferOf(args));
    if (args.has("key")) merger.useKey(args.text("key"));
    for (std::size_t i = 1; i < paths.size(); ++i) {
        Log from = readLog(paths[i], args.text("from"));
        if (!args.has("yes")) {
            refuseOtherRate(into, from);
            refuseOtherCounting(into, from);
        }
        result = std::max(result, readingResult(from));
        merger.add(from);
    }
    Output out(args.text("output"), held);
    Losses losses;
    writeSheet(wholeSheet(into), target, styleFrom(args, target), out, losses);
    out.close();
    losses.tell(out.name());
    return tellConflicts(merger) ? found : result;
}

}  // namespace

Command mergeCommand() {
    return {
        "merge",
        "join logs: rows appended by column name, or rows of one key field by field",
        "Appends the rows of further logs to those of the first. Columns go by their names, case "
        "ignored; new ones are added, and timecodes are stored in the form of the first log's "
        "column. With --key, a row whose key is there already fills the empty cells of that row, "
        "and every cell in which the two differ is told; ends with 1 then. Rows of one file stay "
        "rows of their own also where they have one key: that is told as a conflict, whatever "
        "--prefer says, and such a row is joined only to one that it does not contradict. Logs of "
        "two frame rates (FPS) are joined with --yes only.",
        {{"vek merge day1.vek day2.vek -o both.vek", "one log of two"},
         {"vek merge log.vek sound.csv --key Name -o full.vek", "sound notes beside the clips"},
         {"vek merge log.vek fixes.csv --key Name --prefer last -o fixed.vek",
          "where both have a value, take the second"}},
        {{"FILE", "logs of any format, at least one", false, true}},
        join(
            {{"-k,--key", "COLUMN", "join rows that have the same value here"},
             {"--prefer", "WHICH",
              "of two values keep the first, the last (also when it is empty), or the last that is "
              "filled",
              false, "first|last|filled"},
             {"-y,--yes", "", "join logs of different frame rates all the same"},
             {"-o,--output", "OUT", "write this file; standard output as a rule"},
             {"--to", "FORMAT", "what to write; the ending of OUT as a rule", false,
              writableFormats().c_str()},
             fromOption()},
            styleOptions()),
        run,
    };
}

}  // namespace vek
