#include "tools/vek/cli/choosing.h"

#include "formats/choosing/ranges.h"
#include "tools/vek/cli/reading.h"

namespace vek {

std::vector<Option> choosingOptions() {
    return {
        {"-w,--where", "COND",
         "rows where COLUMN=TEXT (contains; case ignored), COLUMN==TEXT (exactly), !=, <, <=, "
         ">, >= (numbers and timecodes by value), COLUMN~REGEX, or COLUMN= (empty); all of "
         "several must hold",
         true},
        {"--any", "", "one of several conditions is enough"},
        {"--at", "CODE",
         "rows whose start and end hold the timecode or keycode, in any pair of columns"},
        {"--tagged", "", "tagged rows"},
        {"--unique", "COLUMN", "the first row of each value, case ignored"},
        {"--duplicates", "COLUMN", "rows whose value another row has, too, case ignored"},
    };
}

std::vector<Option> orderingOptions() {
    return {
        {"-s,--sort", "A,B", "sort by these columns; empty values last"},
        {"-r,--reverse", "", "the exact reverse of the order"},
        {"--limit", "N", "at most N rows"},
        {"--offset", "N", "leave the first N rows out"},
    };
}

std::vector<Option> selectionOptions() {
    return join(choosingOptions(), orderingOptions());
}

Selection selectionFrom(const Args& args) {
    for (const char* name : {"sort", "unique", "duplicates"}) {
        if (!args.has(name) || !args.text(name).empty()) continue;
        throw Failure{wrongUsage, concat("--", name, " needs the name of a column")};
    }
    Selection selection;
    selection.where = args.all("where");
    selection.any = args.has("any");
    selection.at = args.text("at");
    if (args.has("at")) requireCode(selection.at, programTerms());
    selection.tagged = args.has("tagged");
    selection.unique = args.text("unique");
    selection.duplicates = args.text("duplicates");
    selection.sort = args.text("sort");
    selection.reverse = args.has("reverse");
    selection.limit = args.number("limit", 0);
    selection.offset = args.number("offset", 0);
    if (args.has("limit") && selection.limit == 0) {
        throw Failure{wrongUsage, "--limit takes a number of 1 or more"};
    }
    return selection;
}

Option everyOption() {
    return {"--every", "", "all rows, when there is no condition"};
}

void requireChoice(const std::string& command, const Selection& selection, const Args& args) {
    if (narrows(selection) || args.has("every")) return;
    throw Failure{wrongUsage, command +
                                  ": which rows? expected --where or another choice, or "
                                  "--every for all of them"};
}

}  // namespace vek
