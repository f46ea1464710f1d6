#include <algorithm>
#include <unordered_set>
#include <utility>

#include <vekdb/host/keyed_hash.h>
#include "formats/text/letters.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// The cells by which rows are told apart.
class RowKeys {
public:
    RowKeys(const Log& log, std::vector<unsigned> columns, bool ignoresCase)
        : log_(log), columns_(std::move(columns)), ignoresCase_(ignoresCase) {}

    bool isBlank(unsigned row) const {
        for (unsigned column : columns_) {
            if (!log_.cell(row, column).empty()) return false;
        }
        return true;
    }

    std::size_t hash(unsigned row) const {
        std::size_t sum = 0;
        for (unsigned column : columns_) {
            const std::size_t one = Quor::KeyedHash()(folded(log_.cell(row, column), a_));
            sum = sum * 0x9E3779B97F4A7C15u + (one ^ (sum >> 32));
        }
        return sum;
    }

    bool areSame(unsigned one, unsigned other) const {
        for (unsigned column : columns_) {
            const std::string_view a = folded(log_.cell(one, column), a_);
            const std::string_view b = folded(log_.cell(other, column), b_);
            if (a != b) return false;
        }
        return true;
    }

private:
    std::string_view folded(std::string_view cell, std::string& room) const {
        if (!ignoresCase_) return cell;
        room.clear();
        addLower(room, cell);
        return room;
    }

    const Log& log_;
    std::vector<unsigned> columns_;
    bool ignoresCase_;
    mutable std::string a_;
    mutable std::string b_;
};

std::size_t filledCells(const Log& log, unsigned row) {
    std::size_t filled = 0;
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        filled += !log.cell(row, column).empty();
    }
    return filled;
}

// Which of the rows that are the same stays.
class StayingRow {
public:
    StayingRow(const Log& log, const Args& args) : log_(log), which_(args.text("keep", "first")) {}

    bool isBetter(unsigned row, unsigned known) const {
        if (which_ == "filled") return filledCells(log_, row) > filledCells(log_, known);
        return which_ == "last";
    }

private:
    const Log& log_;
    std::string which_;
};

// For each row whether it stays.
std::vector<char> rowsThatStay(const Log& log, const RowKeys& keys, const StayingRow& choice,
                               bool blankOnesStay) {
    auto hash = [&](unsigned row) { return keys.hash(row); };
    auto areSame = [&](unsigned a, unsigned b) { return keys.areSame(a, b); };
    std::unordered_set<unsigned, decltype(hash), decltype(areSame)> known(log.rowCount(), hash,
                                                                          areSame);
    std::vector<unsigned> kept(log.rowCount());  // of the first row of each key
    std::vector<char> stays(log.rowCount(), 1);
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        if (blankOnesStay && keys.isBlank(row)) continue;
        auto [first, isNew] = known.insert(row);
        unsigned& best = kept[*first];
        if (!isNew) stays[choice.isBetter(row, best) ? best : row] = 0;
        if (isNew || stays[row] != 0) best = row;
    }
    return stays;
}

std::vector<unsigned> rowsMarked(const std::vector<char>& marks, char mark) {
    std::vector<unsigned> rows;
    for (unsigned row = 0; row < marks.size(); ++row) {
        if (marks[row] == mark) rows.push_back(row);
    }
    return rows;
}

int run(const Args& args) {
    Log log = readLogToSave(args);
    const bool isBySome = args.has("by");
    RowKeys keys(log, isBySome ? columnList(log, args.text("by")) : allColumns(log),
                 args.has("ignore-case"));
    std::vector<char> stays = rowsThatStay(log, keys, StayingRow(log, args), isBySome);
    const auto count = static_cast<std::size_t>(std::count(stays.begin(), stays.end(), char{0}));
    const std::string summary =
        concat(log.name, ": ", counted(count, "duplicate"), " of ", counted(log.rowCount(), "row"));
    const bool isTrial = args.has("dry-run");
    if (isTrial) printRows(log, rowsMarked(stays, 0));
    const bool isToBeWritten = count > 0 || args.has("output") || args.text("FILE") == "-";
    if (isToBeWritten) saveResult(log, rowsMarked(stays, 1), args);
    say(count == 0 ? log.name + ": no duplicates" : summary + (isTrial ? " would go" : " deleted"));
    return done;
}

}  // namespace

Command dedupeCommand() {
    return {
        "dedupe",
        "delete rows that are there twice",
        "Deletes all but one of the rows that are the same, byte for byte, in the columns of --by, "
        "or in all columns. With --by, rows that have nothing in these columns stay. The rows that "
        "stay keep their order. Ends with 0 also when there were no duplicates.",
        {{"vek dedupe log.vek", "rows of which all cells are the same"},
         {"vek dedupe log.vek --by Reel,'Start time' --keep filled",
          "of each start on a reel the row that says most"},
         {"vek dedupe log.vek --by Description -i --dry-run", "print what would go"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"}},
        {{"-b,--by", "A,B", "rows are the same that are so in these columns"},
         {"-i,--ignore-case", "", "upper and lower case are the same"},
         {"-k,--keep", "WHICH",
          "the row that stays: the first (as a rule), the last, or the first of those with the "
          "most filled cells",
          false, "first|last|filled"},
         {"-n,--dry-run", "", "print the rows that would go as CSV, delete nothing"},
         savingOption(),
         backupOption(),
         fromOption()},
        run,
    };
}

}  // namespace vek
