#include <vekdb/support/version.h>
#include "tools/vek/cli/printout.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// A text for the manual's formatter, whose own signs must not be taken for it.
std::string roff(std::string_view text) {
    std::string out;
    for (char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else if (c == '\'' && out.empty())
            out += "\\(aq";
        else
            out += c;
    }
    return out.starts_with('.') ? "\\&" + out : out;
}

std::string withChoices(const char* help, const char* choices) {
    std::string list;
    for (const std::string& word : choicesOf(choices)) list += (list.empty() ? "" : ", ") + word;
    return list.empty() ? help : std::string(help) + " (" + list + ")";
}

void addEntry(std::string& out, const std::string& bold, const char* value,
              const std::string& help) {
    out += ".TP\n\\fB" + roff(bold) + "\\fR";
    if (*value != '\0') out += " \\fI" + roff(value) + "\\fR";
    out += concat("\n", roff(help), "\n");
}

std::string namesOf(const Option& option) {
    std::string brief = shortName(option);
    return brief.empty() ? longName(option) : brief + ", " + longName(option);
}

void addCommand(std::string& out, const Command& command) {
    out += std::string(".SH ") + "\"vek " + command.name + "\"\n";
    out += roff(command.summary) + "\n.PP\n\\fB" + roff(usageLine(command)) + "\\fR\n.PP\n" +
           roff(command.description) + "\n";
    for (const Argument& argument : command.arguments) {
        addEntry(out, argument.name, "", withChoices(argument.help, argument.choices));
    }
    for (const Option& option : command.options) {
        addEntry(out, namesOf(option), option.value, withChoices(option.help, option.choices));
    }
    out += ".PP\nExamples:\n";
    for (const Example& example : command.examples) {
        addEntry(out, example.command, "", example.does);
    }
}

std::string manualPage() {
    std::string out = ".TH VEK 1 \"\" \"vek " + std::string(vekdbDllVersionStr()) + "\"\n";
    out += ".SH NAME\nvek \\- look at, clean, convert and join the clip logs of film and video\n";
    out += ".SH SYNOPSIS\n\\fBvek\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR] \\fIFILE\\fR...\n";
    out +=
        ".SH DESCRIPTION\nReads table files, CSV, TSV, JSON, JSON lines, ALE and CMX 3600 edit "
        "lists, from a path or, for \\-, standard input. No cell is trimmed, rounded or given "
        "another type. What follows \\-\\- is no option. Of several columns named Reel the second "
        "is Reel#2.\n";
    for (const Command& command : allCommands()) addCommand(out, command);
    out += ".SH EXIT STATUS\n";
    addEntry(out, "0", "", "done");
    addEntry(out, "1", "", "it found a difference, a problem, or nothing that matched");
    addEntry(out, "2", "", "wrong usage");
    addEntry(out, "3", "", "could not read");
    addEntry(out, "4", "", "could not write");
    out += ".SH ENVIRONMENT\n";
    addEntry(out, "NO_COLOR", "", "when set and not empty, no colours");
    return out;
}

int run(const Args&) {
    Printout out;
    out.write(manualPage());
    out.close();
    return done;
}

}  // namespace

Command manCommand() {
    return {
        "man",
        "print the manual page",
        "Prints the manual page, made from the same declarations as the help, for the manual's "
        "formatter.",
        {{"vek man > vek.1", "the page as a file, to be read with man ./vek.1"}},
        {},
        {},
        run,
    };
}

}  // namespace vek
