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

}  // namespace

WriteStyle styleFrom(const Args& args, Format target) {
    WriteStyle style;
    if (args.has("crlf")) style.lineEnd = LineEnd::crlf;
    style.rate = wantedRate(args);
    style.shortReels = args.has("short-reels");
    style.guardsFormulas = args.has("guard-formulas");
    // The cells of a workbook are texts, whatever they begin with.
    const bool knowsFormulas =
        target == Format::csv || target == Format::tsv || target == Format::xlsx;
    if (style.guardsFormulas && !knowsFormulas) {
        throw Failure{wrongUsage, std::string("--guard-formulas is for csv, tsv and xlsx, not ") +
                                      formatName(target)};
    }
    style.ale = {args.text("video-format"), args.text("audio-format"), args.text("tracks"),
                 args.all("map")};
    if (style.ale.isAny() && target != Format::ale) {
        throw Failure{wrongUsage,
                      std::string("--video-format, --audio-format, --tracks and --map are for "
                                  "ale, not ") +
                          formatName(target)};
    }
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
