#include "tools/vek/commands.h"

namespace vek {

std::vector<Command> allCommands() {
    return {showCommand(),   infoCommand(),      checkCommand(),       convertCommand(),
            tagCommand(),    untagCommand(),     setCommand(),         deleteCommand(),
            columnCommand(), paramCommand(),     mergeCommand(),       diffCommand(),
            statsCommand(),  containerCommand(), completionsCommand(), manCommand()};
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
           "standard input.\n\nExit codes:\n"
           "  0  done\n"
           "  1  it found a difference, a problem, or nothing that matched\n"
           "  2  wrong usage\n"
           "  3  could not read\n"
           "  4  could not write\n";
}

Command commandNamed(const std::string& name) {
    std::vector<std::string> names;
    for (Command& command : allCommands()) {
        if (name == command.name) return command;
        names.push_back(command.name);
    }
    throw Failure{wrongUsage, "there is no command " + inQuotes(name) + suggestion(name, names) +
                                  " (vek --help lists them)"};
}

}  // namespace vek
