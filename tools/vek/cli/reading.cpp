#include "tools/vek/cli/reading.h"

#include <vekdb/formats/timecode.h>
#include "formats/reading/limits.h"

namespace vek {

Log readLog(const Args& args, std::string_view argument, const Wanted& wanted) {
    return readLog(args.text(argument), args.text("from"), wanted);
}

Log readLogToChange(const Args& args, std::string_view argument) {
    return readLogToChange(args.text(argument), args.text("from"));
}

Option fromOption() {
    return {"--from", "FORMAT", "what the input is; found out by name and content as a rule", false,
            readableFormats().c_str()};
}

Option fpsOption() {
    return {"--fps", "RATE", "frames a second: 24, 25, 29.97, 29.97df (drop-frame), ..."};
}

std::string wantedRate(const Args& args) {
    std::string text = args.text("fps");
    if (!args.has("fps") || parseFrameRate(text)) return text;
    throw Failure{wrongUsage, "--fps takes a rate such as 24 or 29.97, not " + inQuotes(text)};
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
         "found out as a rule"},
        {"--encoding", "NAME",
         "how texts are encoded: utf-8, utf-16, windows-1252, macroman or what iconv knows; found "
         "out as a rule"},
        {"--skip-lines", "N", "lines of CSV and TSV in front of the heading"},
        {"--no-header", "", "CSV and TSV have no heading; columns are called Column 1, 2, ..."},
    };
}

void setLimits(const Args& args) {
    limits().bytes = args.number("max-bytes", limits().bytes);
    limits().cells = args.number("max-cells", limits().cells);
    limits().output = args.number("max-output", limits().output);
    ReadingWishes& wishes = readingWishes();
    if (args.has("delimiter")) wishes.delimiter = delimiterNamed(args.text("delimiter"));
    wishes.encoding = args.text("encoding");
    wishes.skippedLines = args.number("skip-lines", 0);
    wishes.hasNoHeading = args.has("no-header");
}

}  // namespace vek
