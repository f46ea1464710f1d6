#include <filesystem>

#include <vekdb/formats/format.h>
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/reading/decoding.h"
#include "formats/reading/documents.h"
#include "formats/saving/save_in_place.h"
#include "formats/signs.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"
#include "tools/vek/convert/many.h"
#include "tools/vek/convert/partition.h"

namespace vek {

namespace {

Format wantedTarget(const Args& args) {
    if (args.has("to")) return targetNamed(args.text("to"));
    if (args.text("OUT") != "-") return targetOfPath(args.text("OUT"), programTerms());
    throw Failure{wrongUsage, "convert: the format is missing for standard output, expected --to"};
}

// An edit list that stays one keeps its lines, where nothing is asked for that changes them.
bool mayStay(Format target, const WriteStyle& style) {
    return target == Format::edl && style.lineEnd == LineEnd::lf && style.rate.empty() &&
           !style.shortReels;
}

bool isFolder(const std::string& path) {
    std::error_code ignored;
    return path != "-" && std::filesystem::is_directory(path, ignored) && !isDocumentFolder(path);
}

bool isNamedAsFolder(const std::string& path) {
    return path.ends_with('/') && !isDocumentFolder(path);
}

std::vector<std::string> wordsOf(const Args& args) {
    std::vector<std::string> words = {args.text("IN")};
    if (args.has("OUT")) words.push_back(args.text("OUT"));
    const std::vector<std::string>& more = args.all("MORE");
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

// "*.vek" may be two logs, and the second is not to be written in another format.
bool isLogOfOtherFormat(const std::string& path, const Args& args) {
    std::error_code ignored;
    const std::string file = pathOfDocument(path);
    if (!args.has("to") || !std::filesystem::is_regular_file(file, ignored)) return false;
    const std::optional<Format> format = formatOfPath(file);
    return format && canRead(*format) && *format != targetNamed(args.text("to"));
}

bool isOneLog(const std::vector<std::string>& words, const Args& args) {
    if (words.size() != 2 || args.has("output")) return false;
    if (words[1] == "-") return true;
    if (isFolder(words[0]) || isFolder(words[1])) return false;
    return !isLogOfOtherFormat(words[1], args);
}

// What the file itself shows, whatever it is called.
bool holds(const std::string& path, Format target) {
    try {
        Input input(path);
        Log log;
        decode(input, log);
        const Format found = recognised({}, input.head());
        if (found != Format::json) return found == target;
        return target == (firstFilledLine(input.head()).starts_with('{') ? Format::jsonl : found);
    } catch (const Failure&) {
        return false;  // who reads it as a log says why
    }
}

// What was written by these words before is neither lost nor taken for a log the next time.
void requireSecondLog(const std::string& first, const std::string& second, const Args& args) {
    // Those of one name would become one file, which is refused as such.
    const bool hasOtherName =
        std::filesystem::path(first).filename() != std::filesystem::path(second).filename();
    if (hasOtherName && isInput({first}, second)) {
        throw Failure{wrongUsage, concat("convert: ", first, " and ", second,
                                         " are one log; name another file to write")};
    }
    const std::string target = args.text("to");
    if (!holds(pathOfDocument(second), targetNamed(target))) return;
    const std::string named = formatName(*formatOfPath(pathOfDocument(second)));
    throw Failure{
        wrongUsage,
        concat("convert: ", second, ": holds ", target, " already and is called ", named,
               ", so it may be what to write or a second log; to write it, give it the "
               "ending of ",
               target, " or move it away first; to convert both, say where to with -o FOLDER")};
}

// Where to is the folder of -o or, of several words, the last one that is a folder or has to be.
int convertMany(std::vector<std::string> words, const Args& args) {
    std::string output = args.text("output");
    const bool isIntoLast =
        output.empty() && words.size() > 1 &&
        (isFolder(words.back()) || isNamedAsFolder(words.back()) ||
         (words.size() == 2 && isFolder(words.front()) && !isLogOfOtherFormat(words[1], args)));
    if (isIntoLast) {
        output = words.back();
        words.pop_back();
    }
    if (words.size() == 1 && !output.empty() && !isFolder(words[0]) && !args.has("to")) {
        throw Failure{wrongUsage, concat("convert: ", output,
                                         ": a folder for files of one format, expected --to, or "
                                         "the name of a file as the last word")};
    }
    const bool isBesides = output.empty() && words.size() == 2 && !isFolder(words.front());
    if (isBesides && isLogOfOtherFormat(words[1], args)) requireSecondLog(words[0], words[1], args);
    return convert::convertEach(words, output, args);
}

Printout outputOf(const Args& args, Held held) {
    if (!args.has("dry-run")) return Printout(args.text("OUT"), std::move(held));
    requireWritable(args.text("OUT"));
    return Printout::trial(args.text("OUT"));
}

void tellPlan(const std::string& output, Format target, const Args& args) {
    if (!args.has("dry-run")) return;
    Printout out;
    out.line(concat(args.text("IN"), " -> ", output));
    out.close();
    say(concat("convert: 1 log would be written as ", formatName(target)));
}

// A file that is there is replaced, with or without --overwrite, as cp does it.
int convertOne(const Args& args) {
    Format target = wantedTarget(args);
    const bool isTrial = args.has("dry-run");
    Held held = isTrial ? nullptr : holdInput({args.text("IN")}, args.text("OUT"));
    const WriteStyle style = styleFrom(args, target);
    Log log = mayStay(target, style) ? readLogToCopy(args, "IN") : readLog(args, "IN");
    Printout out = outputOf(args, held);
    requireFile(target, out);
    Losses losses;
    if (log.format == target && mayStay(target, style))
        writeInPlace(InPlace(log), false, out, losses);
    else
        writeSheet(wholeSheet(log), target, style, out, losses);
    out.close();
    tellPlan(out.name(), target, args);
    tellLosses(losses, out.name());
    return readingResult(log);
}

int run(const Args& args) {
    const std::vector<std::string> words = wordsOf(args);
    if (args.has("partition")) return convert::partitionLogs(words, args);
    for (const char* option : {"append", "part-size"}) {
        if (args.has(option)) {
            throw Failure{wrongUsage, concat("convert: --", option, " is for --partition")};
        }
    }
    if (words.size() == 1 && !args.has("to") && !args.has("output")) {
        throw Failure{wrongUsage,
                      "convert: OUT is missing, expected: vek convert [OPTIONS] IN OUT (vek "
                      "convert --help shows how)"};
    }
    return isOneLog(words, args) ? convertOne(args) : convertMany(words, args);
}

}  // namespace

Command convertCommand() {
    return {
        "convert",
        "turn a log into another format, no cell changed",
        "Reads a log of any format and writes all its rows and columns. Heading entries become "
        "parameters and the other way round. No cell is trimmed, rounded or given another type; "
        "what the target cannot hold is said. An edit list takes its events from the source and "
        "record times; where a log has no record times the events are laid end to end, which "
        "needs a frame rate. Several logs, and folders, become a file each in the format of --to, "
        "with its ending and else the same name: beside each log, or in the folder of -o or of the "
        "last word, below which what stands in a folder keeps its place. No file is overwritten "
        "unless asked, and never one of the logs; what cannot be read is told, and the others go "
        "on. --partition makes one dataset of all logs for engines that run on many machines: a "
        "folder COLUMN=value for each value, the column left out of the files; no value is "
        "__HIVE_DEFAULT_PARTITION__, and what has no place in a path is written as %2F and the "
        "like. A log without a column of the others has no values in it.",
        {{"vek convert samples/docs.vek docs.csv", "a table file as CSV"},
         {"vek convert docs.csv docs.vek", "and back"},
         {"vek convert samples/docs.vek - --to ale", "a log exchange file on standard output"},
         {"vek convert samples/docs.vek docs.edl", "an edit list, its events end to end"},
         {"vek convert - docs.json --from csv < docs.csv", "from a pipe"},
         {"vek convert samples/*.vek --to jsonl -o json/", "a file for each of several"},
         {"vek convert samples/d*.vek --partition Scene --to jsonl -o scenes/",
          "a dataset with a folder for each scene"}},
        {{"IN", "the log to read, or - for standard input"},
         {"OUT", "the file to write, its ending names the format; or - for standard output", true},
         {"MORE", "further logs and folders; the last may be the folder to write to", true, true}},
        join(join({fromOption(),
                   {"--to", "FORMAT", "what to write; the ending of OUT as a rule", false,
                    writableFormats().c_str()},
                   {"-o,--output", "FOLDER", "where the files of several logs go to"},
                   {"--overwrite", "",
                    "of several logs: replace files that are there; one is written to OUT in any "
                    "case"},
                   {"-n,--dry-run", "", "list what the logs would become, write nothing"}},
                  join(convert::partitionOptions(), screenOptions())),
             styleOptions()),
        run,
    };
}

}  // namespace vek
