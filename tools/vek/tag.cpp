#include <algorithm>

#include <vekdb/row_copies.h>
#include "formats/log/column_edits.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/edits.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// Nearly every cell of the column is one character.
bool isTagged(std::string_view cell) {
    return cell.size() == 1 ? cell[0] >= '1' && cell[0] <= '9' : isTag(cell);
}

// A text that somebody else put into the column: a number says whether a row is tagged.
bool isForeign(std::string_view cell) {
    if (cell.starts_with('-')) cell.remove_prefix(1);
    return cell.find_first_not_of("0123456789") != std::string_view::npos;
}

// The tags of a log while they are edited. They live in the column "Tag".
class Tags {
public:
    /// No row is tagged at first.
    explicit Tags(Log& log)
        : log_(log), column_(log.findColumn("Tag")), tags_(log.rowCount()) {}

    /// As the column says.
    void load() {
        if (column_ == noColumn) return;
        for (unsigned row = 0; row < tags_.size(); ++row) {
            tags_[row] = isTagged(log_.cell(row, column_));
        }
    }

    void set(unsigned row, bool isTagged) { tags_[row] = isTagged; }
    // A text that is no tag has no other way round, and stays.
    void invert(unsigned row) {
        if (isForeignIn(row))
            ++texts_;
        else
            tags_[row] = !tags_[row];
    }
    std::size_t count() const {
        return static_cast<std::size_t>(std::count(tags_.begin(), tags_.end(), true));
    }

    // Texts that are no tags: which of them stay, and which would go for a tag of ours.
    void tellTexts() const {
        if (texts_ > 0) {
            say(concat(log_.name, ": ", counted(texts_, "text"),
                       " in the column Tag, expected 0 or 1; kept, vek set replaces them"));
        }
        const auto isReplaced = [&](unsigned row) { return isForeignIn(row) && differs(row); };
        std::size_t count = 0;
        unsigned first = 0;
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            if (isReplaced(row) && count++ == 0) first = row;
        }
        if (count == 0) return;
        say(worded(log_.name,
                   {log_.lineOf(first), "Tag", inQuotes(log_.cell(first, column_)), "0 or 1",
                    count == 1 ? std::string("a tag takes its place")
                               : concat("a tag takes its place, and that of ",
                                        counted(count - 1, "more text"))}));
    }

    // Without a column no row is tagged, which needs none to be said.
    bool needsNoColumn() const { return column_ == noColumn && count() == 0; }

    // What stands in the column and is to stand there, which is made where there is none. A cell
    // that says so already, in whatever words, stays as it is.
    std::vector<Edit> edits() {
        std::vector<Edit> edits;
        forEachChange([&](unsigned row, unsigned short column, const char* value) {
            edits.push_back({row, column, value});
        });
        return edits;
    }

    void store() {
        RowCopies copies(*log_.table);
        forEachChange([&](unsigned row, unsigned short column, const char* value) {
            store(row, column, value, copies);
        });
    }

private:
    bool isForeignIn(unsigned row) const {
        return column_ != noColumn && isForeign(log_.cell(row, column_));
    }
    bool differs(unsigned row) const { return tags_[row] != isTagged(log_.cell(row, column_)); }

    template <class Take>
    void forEachChange(Take take) {
        if (needsNoColumn()) return;
        const bool isNew = column_ == noColumn;
        if (isNew) column_ = addColumn(log_, "Tag");
        const auto column = static_cast<unsigned short>(column_);
        for (unsigned row = 0; row < log_.rowCount(); ++row) {
            if (!isNew && !differs(row)) continue;
            take(row, column, tags_[row] ? "1" : "0");
        }
    }

    // In the place of a value that is as long, else with all cells of the row together: none gets
    // memory of its own.
    void store(unsigned row, unsigned short column, const char* value, RowCopies& copies) {
        if (log_.cell(row, column).size() == 1) {
            log_.table->get_record(row)->set_field(column, value);
            return;
        }
        cells_.resize(log_.columnCount());
        log_.cells(row, cells_);
        cells_[column] = value;
        copies.replace(row, cells_.data(), cells_.size());
    }

    Log& log_;
    unsigned column_;
    std::vector<bool> tags_;
    std::size_t texts_ = 0;  // that could not be inverted
    std::vector<std::string_view> cells_;
};

int finish(Log& log, Tags& tags, std::vector<unsigned> rows, const Args& args) {
    const std::size_t matched = rows.size();
    rows = std::vector<unsigned>();
    if (matched == 0) return finishUnmatched(log, "nothing changed", args);
    tags.tellTexts();
    const bool isNothing = tags.needsNoColumn();
    const bool isTrial = args.has("dry-run");
    if (isTrial) printEdits(log, tags.edits(), args);
    tags.store();
    saveInPlace(log, args);
    if (isNothing) {
        say(log.name + ": no column Tag, so no row is tagged; nothing changed");
        return done;
    }
    say(log.name + ": " + counted(matched, "row") + " matched, " + std::to_string(tags.count()) +
        " of " + std::to_string(log.rowCount()) + (isTrial ? " would be tagged" : " tagged"));
    return done;
}

std::vector<unsigned> matchingRows(const Log& log, const Args& args) {
    return selectedRows(log, selectionFrom(args));
}

int runTag(const Args& args) {
    bool wants = narrows(selectionFrom(args)) || args.has("clear") || args.has("invert");
    if (!wants)
        throw Failure{wrongUsage,
                      "tag: which rows? expected --where, or --clear or "
                      "--invert for all"};
    if (args.has("clear") + args.has("invert") + args.has("keep") > 1) {
        throw Failure{wrongUsage, "tag: --keep, --clear and --invert exclude each other"};
    }
    Log log = readLogToSave(args);
    requireWhole(log);
    Tags tags(log);
    std::vector<unsigned> rows = matchingRows(log, args);
    const bool keepsOthers = args.has("keep") || args.has("invert") || args.has("clear");
    if (keepsOthers) tags.load();
    for (unsigned row : rows) {
        if (args.has("invert"))
            tags.invert(row);
        else
            tags.set(row, !args.has("clear"));
    }
    return finish(log, tags, std::move(rows), args);
}

int runUntag(const Args& args) {
    Log log = readLogToSave(args);
    requireWhole(log);
    Tags tags(log);
    tags.load();
    std::vector<unsigned> rows = matchingRows(log, args);
    for (unsigned row : rows) tags.set(row, false);
    return finish(log, tags, std::move(rows), args);
}

}  // namespace

Command tagCommand() {
    return {
        "tag",
        "tag the rows that match, in the column \"Tag\"",
        "Tags the matching rows and untags all others. Tags are the 0 and 1 of the file's column "
        "\"Tag\", which is made where there is none. Ends with 1 when nothing matched.",
        {{"vek tag log.vek --where Notes=print", "these rows, and no others"},
         {"vek tag log.vek --where Take==3 --keep", "these, too"},
         {"vek tag log.vek --invert", "every tag the other way round"},
         {"vek tag log.vek --where Scene=12 --clear", "untag these"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"}},
        join(choosingOptions(),
             {{"--keep", "", "keep the tags of all other rows"},
              {"--clear", "", "untag the matching rows instead, all of them without a condition"},
              {"--invert", "",
               "flip the tags of the matching rows, all of them without a "
               "condition"},
              dryRunOption(),
              backupOption(),
              fromOption()}),
        runTag,
    };
}

Command untagCommand() {
    return {
        "untag",
        "take the tags off the rows that match, or off all",
        "Untags the matching rows, or all rows when no condition is given. Other tags stay. A log "
        "without a column \"Tag\" has no tags and stays as it is.",
        {{"vek untag log.vek", "no row is tagged any more"},
         {"vek untag log.vek --where Reel=B001", "only the tags of a reel go"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"}},
        join(choosingOptions(), {everyOption(), dryRunOption(), backupOption(), fromOption()}),
        runUntag,
    };
}

}  // namespace vek
