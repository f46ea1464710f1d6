#include "tools/vek/commands.h"

#include <algorithm>

#include "formats/input/limits.h"
#include "formats/log/log.h"
#include "tools/vek/cli/reading.h"

namespace vek {

namespace {

// Only the one that is asked for is put together, as a rule.
struct CommandEntry {
    const char* name;
    Command (*make)();
};

constexpr CommandEntry commands[] = {
    {"show", showCommand},
    {"browse", browseCommand},
    {"find", findCommand},
    {"info", infoCommand},
    {"check", checkCommand},
    {"convert", convertCommand},
    {"tag", tagCommand},
    {"untag", untagCommand},
    {"set", setCommand},
    {"timecode", timecodeCommand},
    {"delete", deleteCommand},
    {"column", columnCommand},
    {"param", paramCommand},
    {"sort", sortCommand},
    {"dedupe", dedupeCommand},
    {"sample", sampleCommand},
    {"split", splitCommand},
    {"append", appendCommand},
    {"merge", mergeCommand},
    {"diff", diffCommand},
    {"stats", statsCommand},
    {"sql", sqlCommand},
    {"report", reportCommand},
    {"container", containerCommand},
    {"completions", completionsCommand},
    {"man", manCommand},
};

// What commands have in common: whatever reads logs may be told how large they are at most, and
// all may be told to be quiet.
Command withCommonOptions(Command command) {
    const std::string_view from = fromOption().names;
    const bool readsLogs = std::any_of(command.options.begin(), command.options.end(),
                                       [&](const Option& option) { return option.names == from; });
    if (readsLogs) command.options = join(std::move(command.options), limitOptions());
    command.options.push_back(
        {"-q,--quiet", "", "leave messages out that tell of no failure; exit codes stay"});
    return command;
}

}  // namespace

std::vector<Command> allCommands() {
    std::vector<Command> all;
    for (const CommandEntry& entry : commands) all.push_back(withCommonOptions(entry.make()));
    return all;
}

std::string programHelp() {
    std::string out =
        "vek: look at, clean, convert and join the clip logs of film and video\n\n"
        "Usage: vek COMMAND [OPTIONS] FILE...\n\nCommands:\n";
    for (const Command& command : allCommands()) {
        std::string name = command.name;
        out += "  " + name + std::string(13 - name.size(), ' ') + command.summary + "\n";
    }
    return out +
           "\nvek COMMAND --help tells about one, examples first. A file may be \"-\", the "
           "standard input.\nWhat follows \"--\" is no option. Of several columns named Reel the "
           "second is Reel#2;\na name with signs in it such as = < , goes between brackets, "
           "[c<d].\n\nExit codes:\n"
           "  0  done\n"
           "  1  it found a difference, a problem, or nothing that matched\n"
           "  2  wrong usage\n"
           "  3  could not read\n"
           "  4  could not write\n";
}

Command commandNamed(const std::string& name) {
    std::vector<std::string> names;
    for (const CommandEntry& entry : commands) {
        if (name == entry.name) return withCommonOptions(entry.make());
        names.push_back(entry.name);
    }
    throw Failure{wrongUsage, "there is no command " + inQuotes(name) + suggestion(name, names) +
                                  " (vek --help lists them)"};
}

}  // namespace vek
