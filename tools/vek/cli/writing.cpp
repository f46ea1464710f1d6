#include "tools/vek/cli/writing.h"

#include <algorithm>

#include "formats/formats.h"
#include "tools/vek/cli/reading.h"

namespace vek {

namespace {

// What a file of the format is called where it holds no text, else null.
const char* binaryFile(Format format) {
    if (format == Format::xlsx) return "a workbook";
    if (format == Format::parquet) return "a Parquet file";
    return format == Format::arrow ? "an Arrow file" : nullptr;
}

// A rate says something of the log, whatever it is written as. The cells of a workbook are texts,
// whatever they begin with.
struct StyleOption {
    const char* name;
    const char* formats;  // "csv|tsv", those that it does something to
};

constexpr StyleOption styles[] = {
    {"crlf", "csv|tsv|ale|edl"},
    {"guard-formulas", "csv|tsv|xlsx"},
    {"short-reels", "edl"},
    {"video-format", "ale"},
    {"audio-format", "ale"},
    {"tracks", "ale"},
    {"map", "ale"},
};

bool isFor(const StyleOption& option, std::string_view target) {
    const std::vector<std::string> formats = choicesOf(option.formats);
    return std::find(formats.begin(), formats.end(), target) != formats.end();
}

// "csv, tsv and xlsx"
std::string listed(const StyleOption& option) {
    const std::vector<std::string> formats = choicesOf(option.formats);
    std::string list = formats.front();
    for (std::size_t i = 1; i < formats.size(); ++i) {
        list += concat(i + 1 == formats.size() ? " and " : ", ", formats[i]);
    }
    return list;
}

}  // namespace

void requireStyleOf(const Args& args, std::string_view target) {
    for (const StyleOption& option : styles) {
        if (!args.has(option.name) || isFor(option, target)) continue;
        throw Failure{wrongUsage,
                      concat("--", option.name, " is for ", listed(option), ", not ", target)};
    }
    wantedRate(args);
}

WriteStyle styleFrom(const Args& args, Format target) {
    requireStyleOf(args, formatName(target));
    WriteStyle style;
    if (args.has("crlf")) style.lineEnd = LineEnd::crlf;
    style.rate = wantedRate(args);
    style.shortReels = args.has("short-reels");
    style.guardsFormulas = args.has("guard-formulas");
    style.ale = {args.text("video-format"), args.text("audio-format"), args.text("tracks"),
                 args.all("map")};
    return style;
}

void requireFile(Format target, const Printout& out) {
    const char* const what = binaryFile(target);
    if (what == nullptr || !out.isTerminal()) return;
    throw Failure{wrongUsage, concat(what, " is nothing for a terminal; name a file for it")};
}

std::vector<Option> styleOptions() {
    return {
        {"--crlf", "", "end lines of CSV, TSV, ALE and EDL with CR and LF"},
        {"--guard-formulas", "",
         "CSV and TSV for spreadsheets: an apostrophe in front of cells that begin with =, +, -, "
         "@, a tab or CR, which would be read as formulas; says how many; a workbook needs none"},
        {"--short-reels", "", "reels of an edit list in 8 characters, the whole name beside them"},
        fpsOption(),
        {"--video-format", "FORMAT", "the heading of an ALE says this: 1080, 720, PAL, ..."},
        {"--audio-format", "FORMAT", "the heading of an ALE says this: 48khz, ..."},
        {"--tracks", "TRACKS", "a column Tracks in an ALE, the same for all clips: V, VA1A2, ..."},
        {"--map", "OLD=NEW",
         "an ALE calls the column OLD by the name NEW; those it knows, as Reel and Clip Name, "
         "become Tape and Name by themselves",
         true},
    };
}

bool asksForStyle(const Args& args) {
    const std::vector<Option> options = styleOptions();
    return std::any_of(options.begin(), options.end(), [&](const Option& option) {
        return args.has(std::string_view(longName(option)).substr(2));
    });
}

Option backupOption() {
    return {"--backup", "", "keep the old file beside the new one, as FILE.bak"};
}

}  // namespace vek
