#include <algorithm>
#include <unordered_map>

#include "host/timecode.h"
#include "tools/vek/cli/readers.h"
#include "tools/vek/cli/writers.h"
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

// Joins further logs to the first one.
class Merger {
public:
    Merger(Log& into, Prefer prefer) : into_(into), prefer_(prefer) {}

    void useKey(const std::string& name) {
        key_ = into_.requireColumn(name);
        for (unsigned row = 0; row < into_.rowCount(); ++row) {
            std::string value(into_.cell(row, key_));
            if (!rows_.try_emplace(value, row).second && !value.empty()) {
                say(worded(into_.name, {into_.lineOf(row), name, inQuotes(value) + " a second time",
                                        "each key once", "rows are joined to the first"}));
            }
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

private:
    // Two columns of one name would end up in one, and a cell of them be lost.
    static void refuseRepeated(const Log& from, unsigned column) {
        std::string name = from.columnName(column);
        if (name.empty() || from.findColumn(name) == column) return;
        throw Failure{wrongUsage, from.name + ": column " + inQuotes(name) +
                                      " is there twice, expected names that differ; give one of "
                                      "them another name"};
    }

    void addColumns(const Log& from) {
        columns_.clear();
        for (unsigned i = 0; i < from.columnCount(); ++i) {
            refuseRepeated(from, i);
            columns_.push_back(into_.table->addField(
                {cellText(from.columnName(i)), from.table->get_field_type(i)}));
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

    // The library appends by column name and converts timecodes. It drops blanks in front of a
    // value and passes by columns without a name; what it left out is put back.
    void append(const Log& from) {
        unsigned first = into_.rowCount();
        VDBView all(from.table.get());
        all->displayAllRecords();
        into_.table->merge_all_matching(all.get());
        for (unsigned row = 0; row < from.rowCount(); ++row) {
            for (unsigned i = 0; i < columns_.size(); ++i) restoreCell(from, row, i, first + row);
            into_.lines.push_back(static_cast<std::uint32_t>(from.lineOf(row)));
        }
    }

    void restoreCell(const Log& from, unsigned row, unsigned column, unsigned target) {
        std::string value = inOurForm(from, row, column);
        if (value != into_.cell(target, columns_[column])) store(target, columns_[column], value);
    }

    void join(const Log& from) {
        unsigned key = from.requireColumn(into_.columnName(key_));
        std::unordered_map<std::string, unsigned> seen;
        for (unsigned row = 0; row < from.rowCount(); ++row) {
            std::string value = inOurForm(from, row, key);
            if (!seen.try_emplace(value, row).second && !value.empty()) {
                say(worded(from.name, {from.lineOf(row), from.columnName(key),
                                       inQuotes(value) + " a second time", "each key once",
                                       "it is joined all the same"}));
            }
            joinRow(from, row, targetRow(value, from.lineOf(row)));
        }
    }

    // The row of a key; a new one for a key that is not there, and for rows without a key.
    unsigned targetRow(const std::string& value, std::size_t line) {
        auto known = rows_.find(value);
        if (known != rows_.end() && !value.empty()) return known->second;
        unsigned row = into_.table->add_records(1);
        into_.lines.push_back(static_cast<std::uint32_t>(line));
        rows_[value] = row;
        return row;
    }

    std::string inOurForm(const Log& from, unsigned row, unsigned column) const {
        return inForm(from.cell(row, column), from.table->get_field_type(column),
                      into_.table->get_field_type(columns_[column]));
    }

    void joinRow(const Log& from, unsigned row, unsigned target) {
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

    void store(unsigned row, unsigned column, std::string_view value) {
        into_.table->get_record(row)->setField(static_cast<unsigned short>(column),
                                               cellText(value));
    }

    Log& into_;
    Prefer prefer_;
    unsigned key_ = noColumn;
    std::vector<unsigned> columns_;  // of the log that is being added, in ours
    std::unordered_map<std::string, unsigned> rows_;
    std::size_t conflicts_ = 0;
};

Target wantedTarget(const Args& args) {
    if (args.has("to")) return targetNamed(args.text("to"));
    if (!args.has("output") || args.text("output") == "-") return Target::table;
    return targetOfPath(args.text("output"));
}

int run(const Args& args) {
    const std::vector<std::string>& paths = args.all("FILE");
    if (args.has("prefer") && !args.has("key")) {
        throw Failure{wrongUsage, "merge: --prefer is for rows of one key, expected --key"};
    }
    Target target = wantedTarget(args);
    Log into = readLog(paths[0], args.text("from"));
    int result = readingResult(into);
    Merger merger(into, preferOf(args));
    if (args.has("key")) merger.useKey(args.text("key"));
    for (std::size_t i = 1; i < paths.size(); ++i) {
        Log from = readLog(paths[i], args.text("from"));
        result = std::max(result, readingResult(from));
        merger.add(from);
    }
    Output out(args.text("output"));
    Losses losses;
    writeSheet(wholeSheet(into), target, {}, out, losses);
    out.close();
    losses.tell(out.name());
    if (merger.conflicts() == 0) return result;
    say(counted(merger.conflicts(), "conflict") + "; choose with --prefer first, last or filled");
    return found;
}

}  // namespace

Command mergeCommand() {
    return {
        "merge",
        "join logs: rows appended by column name, or rows of one key field by field",
        "Appends the rows of further logs to those of the first. Columns go by their names, case "
        "ignored; new ones are added, and timecodes are stored in the form of the first log's "
        "column. With --key, a row whose key is there already fills the empty cells of that row, "
        "and every cell in which the two differ is told; ends with 1 then.",
        {{"vek merge day1.vek day2.vek -o both.vek", "one log of two"},
         {"vek merge log.vek sound.csv --key Name -o full.vek", "sound notes beside the clips"},
         {"vek merge log.vek fixes.csv --key Name --prefer last -o fixed.vek",
          "where both have a value, take the second"}},
        {{"FILE", "logs of any format, at least one", false, true}},
        {{"-k,--key", "COLUMN", "join rows that have the same value here"},
         {"--prefer", "WHICH",
          "of two values keep the first, the last (also when it is empty), or the last that is "
          "filled",
          false, "first|last|filled"},
         {"-o,--output", "OUT", "write this file; standard output as a rule"},
         {"--to", "FORMAT", "what to write; the ending of OUT as a rule", false,
          "vekdb|csv|tsv|json|jsonl|ale|markdown|html"},
         fromOption()},
        run,
    };
}

}  // namespace vek
