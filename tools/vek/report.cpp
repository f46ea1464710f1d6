#include "formats/reading/open_log.h"
#include "tools/vek/report/page.h"

#include "formats/input/input.h"
#include "tools/vek/cli/each_log.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// Those that the command in the page needs, too.
std::vector<std::string> readingOptions(const Args& args) {
    std::vector<std::string> words;
    for (const char* name : {"from", "delimiter", "encoding", "skip-lines", "sheet"}) {
        if (args.has(name)) words.insert(words.end(), {concat("--", name), args.text(name)});
    }
    if (args.has("no-header")) words.emplace_back("--no-header");
    return words;
}

page::Wishes wishesFrom(const Args& args) {
    return {args.text("lanes"), args.text("columns"), args.has("all"),
            wantedRate(args),   &wantedGauge(args),   readingOptions(args)};
}

// What is wrong with a log is told by the page; here only how much that is.
void tellFindings(const Findings& findings) {
    const std::size_t problems = findings.problemCount();
    if (problems > 0)
        say(findings.file + ": " + counted(problems, "problem") + ", told in the page");
}

std::unique_ptr<page::LogOnPage> readForPage(const std::string& path, unsigned number,
                                             const Args& args, const page::Wishes& wishes) {
    const Opening opening = openingFrom(args);
    Input input(path, opening);
    Log log = openLog(input, path, opening);
    requireUse(log, args);
    noteRead(log.bytesRead);
    Findings findings = findingsOf(log, input, *wishes.gauge);
    tellFindings(findings);
    auto page =
        std::make_unique<page::LogOnPage>(std::move(log), std::move(findings), number, wishes);
    tellOtherRate(page->log(), page->rates().counting);
    return page;
}

void requireOut(const Printout& out) {
    if (!out.isTerminal()) return;
    throw Failure{wrongUsage, "report: a page is nothing for a terminal; name a file, -o day.html"};
}

void requireNames(const Args& args) {
    for (const char* name : {"lanes", "columns"}) {
        if (!args.has(name) || !args.text(name).empty()) continue;
        throw Failure{wrongUsage, concat("report: --", name,
                                         " is empty, expected the name of a column, [] for one "
                                         "without a name")};
    }
}

int run(const Args& args) {
    requireNames(args);
    const page::Wishes wishes = wishesFrom(args);
    const std::vector<std::string>& paths = args.all("FILE");
    requireNoInput("report", paths, args.text("output"), "the page");
    Printout out(args.text("output"));
    requireOut(out);
    // The process ends with the command, and its memory with it, faster than row by row.
    static page::LogsOnPage& logs = *new page::LogsOnPage;
    const int result = forEachLog(
        args,
        [&](const Args& one) {
            const auto number = static_cast<unsigned>(logs.size() + 1);
            logs.push_back(readForPage(one.text("FILE"), number, args, wishes));
            return readingResult(logs.back()->log());
        },
        [](const std::string&, const std::string&) {});
    if (logs.empty()) return result;
    page::writePage(logs, out);
    out.close();
    return result;
}

}  // namespace

Command reportCommand() {
    return {
        "report",
        "make a page to look at, of one log or several",
        "Makes one HTML page that stands alone: it asks for nothing of the network, can be mailed, "
        "printed and kept. It has the numbers of the day, what vek check finds, a timeline with a "
        "lane for each reel, scenes against takes, running times, and the rows as a table, which "
        "is sorted by a click, takes the conditions of vek show --where, and gives a choice as "
        "CSV or as the vek command that makes it. Several logs have totals, too. Without script "
        "the page shows the first 1000 rows. Nothing in a log can become markup or script there. "
        "Ends "
        "with 1 when a file was damaged. Of several logs one that cannot be read is told, with 3, "
        "and the page is made of the others.",
        {{"vek report samples/dailies.vek -o day.html", "a page of a day"},
         {"vek report samples/docs.vek samples/dailies.vek -o shoot.html",
          "several logs, and their totals"},
         {"vek report samples/dailies.vek --lanes 'cam reel' --all -o day.html",
          "other lanes, all columns"}},
        {{"FILE", "a log, or - for standard input", false, true}},
        {{"-o,--output", "OUT", "the page; standard output as a rule"},
         {"--lanes", "COLUMN",
          "a lane of the timeline for each value of this column; reels as a rule"},
         {"-c,--columns", "A,B",
          "the columns of the table, in this order; those of the field map as a rule"},
         {"-a,--all", "", "all columns"},
         fpsOption(),
         gaugeOption(),
         fromOption()},
        run,
    };
}

}  // namespace vek
