#include "formats/saving/save_in_place.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

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

int run(const Args& args) {
    Format target = wantedTarget(args);
    Held held = holdInput({args.text("IN")}, args.text("OUT"));
    const WriteStyle style = styleFrom(args, target);
    Log log = mayStay(target, style) ? readLogToCopy(args, "IN") : readLog(args, "IN");
    Printout out(args.text("OUT"), held);
    requireFile(target, out);
    Losses losses;
    if (log.format == target && mayStay(target, style))
        writeInPlace(InPlace(log), false, out, losses);
    else
        writeSheet(wholeSheet(log), target, style, out, losses);
    out.close();
    tellLosses(losses, out.name());
    return readingResult(log);
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
        "needs a frame rate.",
        {{"vek convert samples/docs.vek docs.csv", "a table file as CSV"},
         {"vek convert docs.csv docs.vek", "and back"},
         {"vek convert samples/docs.vek - --to ale", "a log exchange file on standard output"},
         {"vek convert samples/docs.vek docs.edl", "an edit list, its events end to end"},
         {"vek convert - docs.json --from csv < docs.csv", "from a pipe"}},
        {{"IN", "the log to read, or - for standard input"},
         {"OUT", "the file to write, its ending names the format; or - for standard output"}},
        join({fromOption(),
              {"--to", "FORMAT", "what to write; the ending of OUT as a rule", false,
               writableFormats().c_str()}},
             styleOptions()),
        run,
    };
}

}  // namespace vek
