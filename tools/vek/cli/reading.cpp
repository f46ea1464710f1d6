#include "tools/vek/cli/reading.h"

#include <filesystem>

#include <vekdb/formats/timecode.h>
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/reading/delimiters.h"
#include "formats/reading/open_log.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/progress_bar.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/say.h"

namespace vek {

namespace {

constexpr Terms terms = {
    .maxBytes = "--max-bytes",
    .maxCells = "--max-cells",
    .maxOutput = "--max-output",
    .encoding = "--encoding",
    .sheet = "--sheet",
    .from = "--from",
    .format = "with --to",
    .saving = "vek convert",
    .at = "--at",
    .joining = "--yes",
    .rate = "--fps RATE",
    .shortReels = "--short-reels",
    .names = "--map",
    .tracks = "--tracks",
    .likelyTracks = "--tracks VA1A2",
    .likelyVideo = "--video-format 1080",
    .likelyAudio = "--audio-format 48khz",
    .likelyRate = "--fps 24",
};

char wantedDelimiter(const std::string& name) {
    if (name == "\\t") return '\t';
    if (const std::optional<char> known = delimiterNamed(name)) return *known;
    if (name.size() == 1 && canDelimit(name[0])) return name[0];
    throw Failure{
        wrongUsage,
        "--delimiter takes comma, semicolon, tab, pipe or one character, not " + inQuotes(name)};
}

void tellProblems(const Log& log) {
    constexpr std::size_t most = 20;
    for (std::size_t i = 0; i < log.problems.size() && i < most; ++i) {
        say(worded(log.name, log.problems[i]));
    }
    const std::size_t count = log.problems.size() + log.moreProblems;
    if (count > most) {
        say(log.name + ": " + std::to_string(count - most) + " more like these; vek check lists " +
            (log.moreProblems == 0 ? "them all" : "the first thousand"));
    }
    if (!log.notRead.empty()) say(log.notRead);
}

// No sheet is without a name.
std::string wantedSheet(const Args& args) {
    if (!args.has("sheet") || !args.text("sheet").empty()) return args.text("sheet");
    throw Failure{wrongUsage, "--sheet is empty, expected the name or number of a sheet"};
}

Log told(Log log) {
    noteRead(log.bytesRead);
    tellProblems(log);
    return log;
}

Log told(Log log, const Args& args) {
    requireUse(log, args);
    return told(std::move(log));
}

}  // namespace

const Terms& programTerms() {
    return terms;
}

Opening openingFrom(const Args& args) {
    Opening opening;
    if (args.has("from")) opening.format = formatNamed(args.text("from"));
    if (args.has("delimiter")) opening.wishes.delimiter = wantedDelimiter(args.text("delimiter"));
    opening.wishes.encoding = args.text("encoding");
    opening.wishes.skippedLines = args.number("skip-lines", 0);
    opening.wishes.hasNoHeading = args.has("no-header");
    opening.wishes.sheet = wantedSheet(args);
    opening.limits.bytes = args.number("max-bytes", opening.limits.bytes);
    opening.limits.cells = args.number("max-cells", opening.limits.cells);
    opening.terms = &terms;
    opening.watcher = progressBar();
    return opening;
}

Log readLog(const std::string& path, const Opening& opening) {
    return told(openLog(path, opening));
}

Log readLog(const std::string& path, const Args& args) {
    return told(openLog(path, openingFrom(args)), args);
}

Log readLog(const Args& args, std::string_view argument, const Wanted& wanted) {
    Opening opening = openingFrom(args);
    opening.wanted = wanted;
    return told(openLog(args.text(argument), opening), args);
}

Log readGrowingLog(const Args& args) {
    Log log = openLog(args.text("FILE"), openingFrom(args));
    if (log.endsInLine && log.rowCount() > 0) {
        const std::size_t last = log.lineOf(log.rowCount() - 1);
        std::erase_if(log.problems, [&](const Problem& problem) { return problem.line >= last; });
    }
    return told(std::move(log), args);
}

void requireChangeable(const std::string& path) {
    using std::filesystem::file_type;
    std::error_code ignored;
    const file_type type = std::filesystem::status(path, ignored).type();
    const bool isNone = type == file_type::fifo || type == file_type::character ||
                        type == file_type::block || type == file_type::socket;
    if (!isNone || path == "-") return;
    throw Failure{wrongUsage, path +
                                  ": is a pipe or a device and not changed in place; read it as -, "
                                  "the standard input, and the result is printed"};
}

Log readLogToChange(const std::string& path, const Opening& opening) {
    requireChangeable(path);
    return told(openLogToChange(path, opening));
}

Log readLogToChange(const Args& args, std::string_view argument) {
    requireChangeable(args.text(argument));
    return told(openLogToChange(args.text(argument), openingFrom(args)), args);
}

Log readLogToCopy(const std::string& path, const Opening& opening) {
    return told(openLogToCopy(path, opening));
}

Log readLogToCopy(const std::string& path, const Args& args) {
    return told(openLogToCopy(path, openingFrom(args)), args);
}

Log readLogToCopy(const Args& args, std::string_view argument) {
    return readLogToCopy(args.text(argument), args);
}

int readingResult(const Log& log) {
    return isDamaged(log) ? found : done;
}

Option fromOption() {
    return {"--from", "FORMAT", "what the input is; found out by name and content as a rule", false,
            readableFormats().c_str()};
}

Option fpsOption() {
    return {"--fps", "RATE", "frames a second: 24, 25, 29.97, 29.97df (drop-frame), ...",
            false,   "",     "23.976|24|25|29.97|29.97df|30|50|59.94|59.94df|60"};
}

std::string wantedRate(const Args& args) {
    std::string text = args.text("fps");
    if (!args.has("fps") || parseFrameRate(text)) return text;
    throw Failure{wrongUsage, "--fps takes a rate such as 24 or 29.97, not " + inQuotes(text)};
}

void tellOtherRate(const Log& log, const LogCounting& counting) {
    if (!counting.overruled().empty()) say(concat(log.name, ": ", counting.overruled()));
}

Option gaugeOption() {
    return {"--gauge", "MM",
            "35 mm film with 4 perforations a frame (16 frames a foot), 3 or 2 (21 1/3, 32), "
            "16 mm (40), or 65 mm with 5 (12.8)",
            false, "35|35-4|35-3|35-2|16|65"};
}

const Gauge& wantedGauge(const Args& args) {
    return *gaugeNamed(args.text("gauge", "35"));
}

std::vector<Option> limitOptions() {
    return {
        {"--max-bytes", "N", "refuse inputs of more bytes; 16 GiB as a rule"},
        {"--max-cells", "N",
         "refuse logs of more rows times columns; 16 million and 16 for each byte as a rule"},
        {"--max-output", "N",
         "refuse to write more bytes; 256 MiB and 100 for each byte read as a rule"},
        {"--delimiter", "MARK",
         "what separates the cells of CSV and TSV: comma, semicolon, tab, pipe or one character; "
         "found out as a rule",
         false, "", "comma|semicolon|tab|pipe"},
        {"--encoding", "NAME",
         "how texts are encoded: utf-8, utf-16, windows-1252, macroman or what iconv knows; found "
         "out as a rule",
         false, "", "utf-8|utf-16|utf-16le|utf-16be|windows-1252|macroman"},
        {"--skip-lines", "N", "lines of CSV and TSV, rows of a sheet in front of the heading"},
        {"--no-header", "",
         "CSV, TSV and sheets have no heading; columns are called Column 1, 2, ..."},
        {"--sheet", "SHEET", "the sheet of a workbook, by name or number; the first as a rule"},
    };
}

}  // namespace vek
