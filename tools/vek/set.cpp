#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_map>

#include "formats/changing/cell_template.h"
#include "formats/text/written_names.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/edits.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/numbering.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"
#include "tools/vek/timecode/speeds.h"

namespace vek {

namespace {

// What one change does to the value of its column: puts another one there, or works on it.
struct Step {
    std::optional<CellTemplate> value;
    std::optional<CellFunction> function;
};

// All that is done to a column, in its order.
struct ColumnChange {
    unsigned short column = 0;
    std::vector<const Step*> steps;
};

[[noreturn]] void refuseChange(const std::string& text) {
    throw Failure{wrongUsage, "set: " + inQuotes(text) +
                                  " is no change, expected COLUMN=VALUE, or COLUMN~FUNCTION"};
}

struct Written {
    std::string columns;
    char sign = '=';
    std::string what;
};

// The sign behind the names of a list, which stands in none that is between brackets.
std::size_t signBehindNames(const std::string& text) {
    std::size_t at = 0;
    for (;;) {
        std::optional<WrittenName> name = bracketedName(std::string_view(text).substr(at));
        at = text.find_first_of(",=~", name ? at + name->size : at);
        if (at == std::string::npos || text[at] != ',') return at;
        ++at;
    }
}

// A name may have a "~" in it, and a substitution a "=".
Written splitChange(const Log& log, const std::string& text) {
    const std::size_t equals = text.find('=');
    const bool isPlain = equals != std::string::npos && equals > 0 &&
                         log.findColumn(text.substr(0, equals)) != noColumn;
    const std::size_t sign = isPlain ? equals : signBehindNames(text);
    if (sign == std::string::npos || sign == 0) refuseChange(text);
    return {text.substr(0, sign), text[sign], text.substr(sign + 1)};
}

// Puts the changes of the command line together, column by column.
class Changes {
public:
    Changes(const Log& log, const std::vector<std::string>& texts) : log_(log) {
        steps_.reserve(texts.size());
        for (const std::string& text : texts) add(text);
    }

    const std::vector<ColumnChange>& columns() const { return columns_; }

    bool count() const {
        return std::any_of(steps_.begin(), steps_.end(),
                           [](const Step& step) { return step.value && step.value->counts(); });
    }

private:
    void add(const std::string& text) {
        const Written written = splitChange(log_, text);
        Step& step = steps_.emplace_back();
        if (written.sign == '=') {
            addTo(log_.requireColumn(written.columns), step);
            step.value.emplace(log_, written.what);
            return;
        }
        step.function.emplace(CellFunction::parse(written.what));
        for (unsigned column : columnsNamed(written.columns)) addTo(column, step);
    }

    std::vector<unsigned> columnsNamed(const std::string& names) const {
        const bool isAll = names == "*" && log_.findColumn(names) == noColumn;
        return isAll ? allColumns(log_) : columnList(log_, names);
    }

    void addTo(unsigned column, const Step& step) {
        const auto [place, isNew] = places_.try_emplace(column, columns_.size());
        if (isNew) columns_.push_back({static_cast<unsigned short>(column), {}});
        columns_[place->second].steps.push_back(&step);
    }

    const Log& log_;
    std::vector<Step> steps_;  // stay where they are
    std::vector<ColumnChange> columns_;
    std::unordered_map<unsigned, std::size_t> places_;  // of a column among those
};

// What an edit list's notes say of an event goes along with the event.
class EventNotes {
public:
    explicit EventNotes(Log& log)
        : work_{log, LogCounting(log), {}, {}, {}}, speeds_(work_, work_.counting.nominal()) {}

    void goWith(std::vector<Edit>& edits) {
        if (!speeds_.concern(edits)) return;
        work_.rows = {edits.front().row};
        work_.notes.clear();
        for (std::size_t i = 0; i < edits.size(); ++i) {
            work_.notes[timecode::Work::placeOf(edits[i].row, edits[i].column)] = i;
        }
        work_.edits.swap(edits);
        speeds_.move();
        work_.edits.swap(edits);
    }

    void tell() const { tellOdd(work_); }

private:
    timecode::Work work_;
    timecode::Speeds speeds_;
};

// Works out what becomes of the rows. All values of a row are made of its cells as they were, and
// then given to who takes them: of many rows they would be many.
class Editor {
public:
    Editor(Log& log, const Changes& changes, Numbering numbering)
        : log_(log),
          changes_(changes),
          notes_(log),
          numbering_(numbering),
          counts_(changes.count()) {}

    template <class Take>
    void edit(const std::vector<unsigned>& rows, Take take) {
        for (unsigned row : rows) {
            if (counts_) number_ = numbering_.next();
            edits_.clear();
            editRow(row);
            notes_.goWith(edits_);
            take(edits_);
        }
        notes_.tell();
    }

private:
    void editRow(unsigned row) {
        for (const ColumnChange& change : changes_.columns()) {
            const std::string_view before = log_.cell(row, change.column);
            value_ = before;
            for (const Step* step : change.steps) apply(*step, row);
            if (before != value_) edits_.push_back({row, change.column, value_});
        }
    }

    void apply(const Step& step, unsigned row) {
        if (step.function) return step.function->apply(value_);
        value_.clear();
        step.value->add(value_, number_, [&](unsigned column) { return log_.cell(row, column); });
    }

    const Log& log_;
    const Changes& changes_;
    EventNotes notes_;
    Numbering numbering_;
    bool counts_;
    std::string number_;
    std::string value_;
    std::vector<Edit> edits_;
};

void requireCounting(const Changes& changes, const Args& args) {
    if (changes.count() || !asksForNumbering(args)) return;
    throw Failure{wrongUsage,
                  "set: --start, --step and --digits are for {#} in a value, which is not there"};
}

std::string summary(const Log& log, std::size_t rows, std::size_t cells) {
    return concat(log.name, ": ", counted(rows, "row"), " matched, ", counted(cells, "cell"));
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    requireChoice("set", selection, args);
    Log log = readLogToSave(args);
    Changes changes(log, args.all("COLUMN=VALUE"));
    requireCounting(changes, args);
    std::vector<unsigned> rows = selectedRows(log, selection);
    const std::size_t matched = rows.size();
    Editor editor(log, changes, numberingFrom(args));
    const char* const outcome = "nothing changed";  // where none matches
    if (args.has("dry-run")) {
        std::vector<Edit> edits;
        editor.edit(rows, [&](std::vector<Edit>& made) {
            std::move(made.begin(), made.end(), std::back_inserter(edits));
        });
        printEdits(log, edits, args);
        EditMaker(log).make(edits);
        if (rows.empty()) return tellUnmatched(log, outcome);
        saveResult(log, args);
        say(summary(log, rows.size(), edits.size()) + " would change");
        return done;
    }
    if (rows.empty()) return finishUnmatched(log, outcome, args);
    std::size_t changed = 0;
    EditMaker maker(log);
    editor.edit(rows, [&](const std::vector<Edit>& made) {
        changed += made.size();
        maker.make(made);
    });
    rows = std::vector<unsigned>();
    saveResult(log, args);
    say(summary(log, matched, changed) + " changed");
    return done;
}

}  // namespace

Command setCommand() {
    return {
        "set",
        "edit cells of the rows that match",
        "Stores the values in all matching rows. Changes of one column are made in the order "
        "given, each on what the former left. In a value {COLUMN} stands for the row's cell of a "
        "column as it was before all of them (so A={B} B={A} swaps two), {COLUMN|FUNCTION} for "
        "what a function makes of it, {#} for a number that counts the matching rows, and {{ or "
        "}} for a brace. COLUMNS~FUNCTION works on "
        "the cells of columns, * for all of them. Functions are upper, lower, trim (blanks at both "
        "ends) and s/EXPRESSION/TEXT/ with the flags g (each place) and i (case ignored): the "
        "expression is one of COLUMN~REGEX, and \\1 in the text what its first group matched. A "
        "name with signs such as = ~ < in it goes between brackets, [c<d]=x. Changing all rows "
        "has to be asked for by name. The file is replaced whole or not at all. Ends with 1 when "
        "nothing matched.",
        {{"vek set log.vek 'Notes=no good' --where Take==1", "a note on first takes"},
         {"vek set log.vek Reel=A002 Scene= --where Reel=A001 --dry-run",
          "show before and after of two columns, change nothing"},
         {"vek set log.vek 'Description={Scene|upper}-{Take}' --every",
          "made of the cells of other columns"},
         {"vek set log.vek 'Notes,Description~s/, *(.)/; \\1/g' --every",
          "replaced in two columns"},
         {"vek set log.vek 'Take={#}' --start 10 --digits 3 --where Scene==12",
          "010, 011, 012, ..."},
         {"vek set log.vek Notes= --every", "empty a column"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"},
         {"COLUMN=VALUE", "a column and its new value, or COLUMNS~FUNCTION", false, true}},
        join(join(join(numberingOptions(), choosingOptions()),
                  {everyOption(), dryRunOption(), savingOption(), backupOption(), fromOption()}),
             screenOptions()),
        run,
    };
}

}  // namespace vek
