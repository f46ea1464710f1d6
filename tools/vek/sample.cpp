#include <charconv>
#include <random>

#include <vekdb/host/text_util.h>
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// Numbers that are the same for a seed on every machine.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}

    // One of 0 to below `sides`, each as likely.
    std::uint64_t roll(std::uint64_t sides) {
        const std::uint64_t unfair = (0 - sides) % sides;
        std::uint64_t number = engine_();
        while (number < unfair) number = engine_();
        return number % sides;
    }

private:
    std::mt19937_64 engine_;
};

std::vector<unsigned> drawn(const VDBView& view, std::size_t count, Dice& dice) {
    std::vector<unsigned> rows;
    rows.reserve(count);
    const std::size_t all = view->get_num_records();
    for (unsigned i = 0; rows.size() < count; ++i) {
        if (dice.roll(all - i) < count - rows.size()) rows.push_back(view->baseIndex(i));
    }
    return rows;
}

[[noreturn]] void refuseCount(const std::string& text) {
    throw Failure{wrongUsage, concat("sample: ", inQuotes(text),
                                     " is no number of rows, expected one such as 100, or a share "
                                     "such as 10%")};
}

// "100" or "2.5%", of so many; no more than there are.
std::size_t countOf(const std::string& text, std::size_t all) {
    const bool isShare = text.ends_with('%');
    const char* end = text.data() + text.size() - (isShare ? 1 : 0);
    if (!isShare) {
        std::size_t count = 0;
        auto [stopped, error] = std::from_chars(text.data(), end, count);
        if (error != std::errc() || stopped != end) refuseCount(text);
        return std::min(count, all);
    }
    double share = 0;
    auto [stopped, error] = std::from_chars(text.data(), end, share, std::chars_format::fixed);
    const bool isOne = error == std::errc() && stopped == end && share >= 0 && share <= 100;
    if (!isOne) refuseCount(text);
    return static_cast<std::size_t>(static_cast<double>(all) * share / 100 + 0.5);
}

std::uint64_t seedFrom(const Args& args) {
    return args.has("seed") ? args.number("seed", 0) : std::random_device()();
}

// Whatever is not drawn goes, from which rows ever it was.
void requireConsent(const Args& args) {
    const std::string file = args.text("FILE");
    const bool isInPlace = !args.has("output") || isInput({file}, args.text("output"));
    const bool deletes = isInPlace && !args.has("dry-run") && file != "-";
    if (!deletes || args.has("every")) return;
    throw Failure{wrongUsage,
                  "sample: in place all other rows are deleted; expected -o OUT, or --every to "
                  "have it so"};
}

int run(const Args& args) {
    requireConsent(args);
    Selection selection = selectionFrom(args);
    Log log = readLogToSave(args);
    VDBView view = selectRows(log, selection).view;
    const std::size_t matched = view->get_num_records();
    const std::size_t count = countOf(args.text("COUNT"), matched);
    const std::uint64_t seed = seedFrom(args);
    Dice dice(seed);
    const std::vector<unsigned> rows = drawn(view, count, dice);
    if (matched == 0 && narrows(selection)) {
        // Whoever reads on gets a log, of as many rows as were drawn.
        const bool isPrinted = goesToStandardOutput(args);
        if (isPrinted) saveResult(log, {}, args);
        say(log.name + ": no row matches, " + (isPrinted ? "none is drawn" : "nothing changed"));
        return found;
    }
    if (args.has("dry-run")) printRows(log, rows);
    saveResult(log, rows, args);
    say(concat(log.name, ": ", std::to_string(count), " of ", counted(matched, "row"), ", --seed ",
               std::to_string(seed), " draws them again"));
    return done;
}

}  // namespace

Command sampleCommand() {
    return {
        "sample",
        "draw rows of a log by chance, the same ones again for a seed",
        "Draws so many of the matching rows, or a share of them, each as likely, in the order of "
        "the log. A seed draws the same rows of the same log on every machine; the one that was "
        "used is told. In place all other rows are deleted, which has to be asked for by name.",
        {{"vek sample log.vek 3 -o some.csv", "three rows"},
         {"vek sample log.vek 10% --seed 7 -o -", "the same tenth each time"},
         {"vek sample log.vek 2 --where Reel=A001 --dry-run", "print two rows of a reel"}},
        {{"FILE", "the log; - reads standard input and prints"},
         {"COUNT", "how many rows, or a share such as 10%"}},
        join({{"--seed", "N", "a number; another one each time as a rule"},
              {"-n,--dry-run", "", "print the rows as CSV, write nothing"},
              savingOption(),
              {"--every", "", "in place: delete every row that is not drawn"},
              backupOption(),
              fromOption()},
             choosingOptions()),
        run,
    };
}

}  // namespace vek
