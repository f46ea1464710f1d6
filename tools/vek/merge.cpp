#include <algorithm>
#include <optional>

#include "formats/changing/merger.h"
#include "formats/formats.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

Merger::Prefer preferOf(const Args& args) {
    std::string word = args.text("prefer");
    if (word == "first") return Merger::Prefer::first;
    if (word == "last") return Merger::Prefer::last;
    if (word == "filled") return Merger::Prefer::filled;
    return Merger::Prefer::report;
}

bool isPrinted(const Args& args) {
    return !args.has("output") || args.text("output") == "-";
}

// Nothing where the first log says it.
std::optional<Format> wantedTarget(const Args& args) {
    if (args.has("to")) return targetNamed(args.text("to"));
    if (isPrinted(args)) return {};
    return targetOfPath(args.text("output"), programTerms());
}

// What is only read becomes a table file.
Format targetLike(const Log& first) {
    const bool isWritten = isChangedInPlace(first.format) && first.format != Format::plainCsv;
    return isWritten ? first.format : Format::table;
}

// What is written in the first log's own format keeps its form.
bool isCopy(const Args& args) {
    return !args.has("to") && (isPrinted(args) || hasTargetEnding(args.text("output")));
}

void write(const Log& log, Format target, const Args& args, Printout& out, Losses& losses) {
    if (isCopy(args) && target != Format::table && target != Format::edl)
        writeCopy(InPlace(log), target, args, out, losses);
    else
        writeSheet(wholeSheet(log), target, styleFrom(args, target), out, losses);
}

// Conflicts are told one by one up to a thousand.
class Telling {
public:
    void tell(const Merger::Conflict& conflict) {
        if (told_ == most) return;
        ++told_;
        say(worded(conflict));
    }
    std::size_t told() const { return told_; }

private:
    static constexpr std::size_t most = 1000;
    std::size_t told_ = 0;
};

bool tellConflicts(const Merger& merger, std::size_t told) {
    const std::size_t all = merger.repeatedKeys() + merger.conflicts();
    if (all > told) say(std::to_string(all - told) + " more like these");
    if (merger.repeatedKeys() > 0) {
        say(counted(merger.repeatedKeys(), "conflict") +
            " of keys; rows of a repeated key are only joined where no cell differs");
    }
    if (merger.conflicts() > 0) {
        say(counted(merger.conflicts(), "conflict") +
            "; choose with --prefer first, last or filled");
    }
    return all > 0;
}

void add(const Merger::Conflict& conflict, JsonWriter& json) {
    json.beginRow();
    json.text("kind", conflict.kind == Merger::Conflict::key ? "key" : "cell");
    json.text("file", conflict.file);
    json.numberOrNothing("line", conflict.line);
    json.text("column", conflict.column);
    json.text("value", conflict.value);
    const bool isCell = conflict.kind == Merger::Conflict::cell;
    isCell ? json.text("kept", conflict.kept) : json.nothing("kept");
    json.numberOrNothing("row", conflict.row);
    json.end();
}

// The conflicts on standard output, where the log itself goes elsewhere.
int printConflicts(const std::vector<Merger::Conflict>& conflicts, const Merger& merger,
                   unsigned rows) {
    Printout out;
    JsonWriter json(out);
    json.beginObject();
    json.number("rows", rows);
    json.number("cells", merger.conflicts());
    json.number("keys", merger.repeatedKeys());
    json.beginArray("conflicts");
    for (const Merger::Conflict& conflict : conflicts) add(conflict, json);
    json.end();
    json.end();
    out.close();
    return conflicts.empty() ? done : found;
}

void requireFile(const Args& args) {
    const std::string output = args.text("output");
    if (!tellsJson(args) || (!output.empty() && output != "-")) return;
    throw Failure{wrongUsage,
                  "merge: --format json prints the conflicts, expected -o OUT for the log"};
}

int run(const Args& args) {
    requireFile(args);
    const std::vector<std::string>& paths = args.all("FILE");
    if (args.has("prefer") && !args.has("key")) {
        throw Failure{wrongUsage, "merge: --prefer is for rows of one key, expected --key"};
    }
    const std::optional<Format> wanted = wantedTarget(args);
    Held held = holdInput(paths, args.text("output"));
    Log into = isCopy(args) ? readLogToCopy(paths[0], args) : readLog(paths[0], args);
    const Format target = wanted ? *wanted : targetLike(into);
    int result = readingResult(into);
    Telling telling;
    std::vector<Merger::Conflict> conflicts;
    const auto tell = [&](const Merger::Conflict& conflict) {
        if (!tellsJson(args))
            telling.tell(conflict);
        else if (conflicts.size() < Log::mostProblems)
            conflicts.push_back(conflict);
    };
    Merger merger(into, preferOf(args), tell, say);
    if (args.has("key")) merger.useKey(args.text("key"));
    for (std::size_t i = 1; i < paths.size(); ++i) {
        Log from = readLog(paths[i], args);
        tellSharedOptions(into, from, args);
        if (!args.has("yes")) requireSameCounting(into, from);
        result = std::max(result, readingResult(from));
        merger.add(from);
    }
    Printout out(args.text("output"), held);
    requireFile(target, out);
    Losses losses;
    write(into, target, args, out, losses);
    out.close();
    tellLosses(losses, out.name());
    if (tellsJson(args)) {
        return std::max(result, printConflicts(conflicts, merger, into.rowCount()));
    }
    return tellConflicts(merger, telling.told()) ? found : result;
}

}  // namespace

Command mergeCommand() {
    return {
        "merge",
        "join logs: rows appended by column name, or rows of one key field by field",
        "Appends the rows of further logs to those of the first. Columns go by their names, case "
        "ignored; new ones are added, and timecodes are stored in the form of the first log's "
        "column. With --key, a row whose key is there already fills the empty cells of that row, "
        "and every cell in which the two differ is told, up to a thousand; ends with 1 then. Rows "
        "of one file stay "
        "rows of their own also where they have one key: that is told as a conflict, whatever "
        "--prefer says, and such a row is joined only to one that it does not contradict. Logs of "
        "two frame rates (FPS) are joined with --yes only.",
        {{"vek merge day1.vek day2.vek -o both.vek", "one log of two"},
         {"vek merge log.vek sound.csv --key Name -o full.vek", "sound notes beside the clips"},
         {"vek merge old.vek new.vek --key Reel,'Start time' -o full.vek",
          "rows that have two columns in common"},
         {"vek merge log.vek fixes.csv --key Name --prefer last -o fixed.vek",
          "where both have a value, take the second"}},
        {{"FILE", "logs of any format, at least one", false, true}},
        join(
            {{"-k,--key", "A,B", "join rows that have the same values here"},
             {"--prefer", "WHICH",
              "of two values keep the first, the last (also when it is empty), or the last that is "
              "filled",
              false, "first|last|filled"},
             {"-y,--yes", "", "join logs of different frame rates all the same"},
             {"-o,--output", "OUT",
              "write this file; standard output as a rule; in the first log's own format it has "
              "that one's delimiter, encoding and line ends"},
             {"--to", "FORMAT",
              "what to write; the ending of OUT as a rule, on standard output the first log's "
              "format",
              false, writableFormats().c_str()},
             {"-f,--format", "FORMAT",
              "how conflicts are told: as text (as a rule), or as json on standard output", false,
              tellings},
             fromOption()},
            styleOptions()),
        run,
    };
}

}  // namespace vek
