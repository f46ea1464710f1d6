#include "tools/vek/cli/printout.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

std::string spaced(const char* choices) {
    std::string out;
    for (const std::string& word : choicesOf(choices)) out += (out.empty() ? "" : " ") + word;
    return out;
}

std::string commandNames() {
    std::string out;
    for (const Command& command : allCommands()) out += std::string(command.name) + " ";
    return out + "help";
}

// A text between single quotes of a shell.
std::string shellQuoted(std::string_view text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string optionNames(const Command& command) {
    std::string out = "--help";
    for (const Option& option : command.options) {
        std::string brief = shortName(option);
        out += concat(" ", longName(option), brief.empty() ? "" : " ", brief);
    }
    return out;
}

std::string argumentChoices(const Command& command) {
    std::string out;
    for (const Argument& argument : command.arguments) {
        if (*argument.choices != '\0') out = spaced(argument.choices);
    }
    return out;
}

// "show:--format" and "show:-f", each with its choices.
std::string bashValueCases(const Command& command) {
    std::string out;
    for (const Option& option : command.options) {
        if (*option.choices == '\0') continue;
        std::string key = std::string(command.name) + ":";
        out += "        " + key + longName(option);
        if (!shortName(option).empty()) out += "|" + key + shortName(option);
        out += ") words='" + spaced(option.choices) + "' ;;\n";
    }
    return out;
}

std::string bash() {
    std::string values;
    std::string options;
    std::string choices;
    for (const Command& command : allCommands()) {
        std::string name = command.name;
        values += bashValueCases(command);
        options += concat("        ", name, ") words='", optionNames(command), "' ;;\n");
        std::string first = argumentChoices(command);
        if (!first.empty()) choices += concat("        ", name, ") words='", first, "' ;;\n");
    }
    return "# bash completion for vek\n"
           "_vek() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
           "    local command=${COMP_WORDS[1]} words=\n"
           "    if [[ $COMP_CWORD -eq 1 ]]; then\n"
           "        COMPREPLY=($(compgen -W '" +
           commandNames() +
           "' -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case $command:$before in\n" +
           values +
           "    esac\n"
           "    if [[ -z $words && $word == -* ]]; then\n"
           "        case $command in\n" +
           options +
           "        esac\n"
           "    elif [[ -z $words && $COMP_CWORD -eq 2 ]]; then\n"
           "        case $command in\n" +
           choices + "        help) words='" + commandNames() +
           "' ;;\n"
           "        esac\n"
           "    fi\n"
           "    if [[ -n $words ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
           "    else\n"
           "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F _vek vek\n";
}

// In a description brackets and colons would end it.
std::string zshText(std::string_view text) {
    std::string out;
    for (char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
        out += c;
    }
    return out;
}

std::string zshOption(const Option& option, const std::string& name) {
    std::string text = (option.repeats ? "*" : "") + name + "[" + zshText(option.help) + "]";
    if (*option.value == '\0') return shellQuoted(text);
    text += std::string(":") + option.value + ":";
    text += *option.choices != '\0' ? concat("(", spaced(option.choices), ")") : "_files";
    return shellQuoted(text);
}

std::string zshCommand(const Command& command) {
    std::string out = std::string("        ") + command.name + ") _arguments";
    out += " \\\n            '(-h --help)'{-h,--help}'[help]'";
    for (const Option& option : command.options) {
        out += " \\\n            " + zshOption(option, longName(option));
        if (!shortName(option).empty()) {
            out += " \\\n            " + zshOption(option, shortName(option));
        }
    }
    for (const Argument& argument : command.arguments) {
        std::string what =
            *argument.choices != '\0' ? concat("(", spaced(argument.choices), ")") : "_files";
        std::string title = zshText(argument.name);
        out += " \\\n            " + shellQuoted((argument.repeats    ? "*:"
                                                  : argument.optional ? "::"
                                                                      : ":") +
                                                 title + ":" + what);
    }
    return out + " ;;\n";
}

std::string zsh() {
    std::string list;
    std::string cases;
    for (const Command& command : allCommands()) {
        list += "        " +
                shellQuoted(std::string(command.name) + ":" + zshText(command.summary)) + "\n";
        cases += zshCommand(command);
    }
    return "#compdef vek\n"
           "_vek() {\n"
           "    local -a commands=(\n" +
           list +
           "    )\n"
           "    if (( CURRENT == 2 )); then\n"
           "        _describe command commands\n"
           "        return\n"
           "    fi\n"
           "    local command=$words[2]\n"
           "    shift words\n"
           "    (( CURRENT-- ))\n"
           "    case $command in\n" +
           cases +
           "    esac\n"
           "}\n"
           "if [[ $zsh_eval_context[-1] == loadautofunc ]]; then _vek \"$@\"; "
           "else compdef _vek vek; fi\n";
}

std::string fishOption(const std::string& command, const Option& option) {
    std::string line = "complete -c vek -n '__fish_seen_subcommand_from " + command + "' -l " +
                       longName(option).substr(2);
    if (!shortName(option).empty()) line += " -s " + shortName(option).substr(1);
    if (*option.choices != '\0')
        line += " -x -a " + shellQuoted(spaced(option.choices));
    else if (*option.value != '\0')
        line += " -r";
    return line + " -d " + shellQuoted(option.help) + "\n";
}

std::string fish() {
    std::string out = "# fish completion for vek\n";
    for (const Command& command : allCommands()) {
        std::string name = command.name;
        out += "complete -c vek -n __fish_use_subcommand -f -a " + name + " -d " +
               shellQuoted(command.summary) + "\n";
        std::string choices = argumentChoices(command);
        if (!choices.empty()) {
            out += "complete -c vek -n '__fish_seen_subcommand_from " + name + "' -a " +
                   shellQuoted(choices) + "\n";
        }
        for (const Option& option : command.options) out += fishOption(name, option);
    }
    return out;
}

int run(const Args& args) {
    std::string shell = args.text("SHELL");
    Printout out;
    out.write(shell == "bash" ? bash() : shell == "zsh" ? zsh() : fish());
    out.close();
    return done;
}

}  // namespace

Command completionsCommand() {
    return {
        "completions",
        "print completions for bash, zsh or fish",
        "Prints a script for a shell that completes commands, options, what they take, and files. "
        "It is made from the same declarations as the help.",
        {{"vek completions bash > vek.bash", "to be sourced from ~/.bashrc"},
         {"vek completions zsh > _vek", "into a folder of $fpath"},
         {"vek completions fish > vek.fish", "into ~/.config/fish/completions"}},
        {{"SHELL", "for which one", false, false, "bash|zsh|fish"}},
        {},
        run,
    };
}

}  // namespace vek
