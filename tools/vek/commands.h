#pragma once

#include "tools/vek/cli/command.h"

/// The subcommands, each declared in the file of its name.
namespace vek {

Command appendCommand();
Command browseCommand();
Command checkCommand();
Command columnCommand();
Command completionsCommand();
Command containerCommand();
Command convertCommand();
Command dedupeCommand();
Command deleteCommand();
Command diffCommand();
Command findCommand();
Command infoCommand();
Command manCommand();
Command mergeCommand();
Command paramCommand();
Command reportCommand();
Command sampleCommand();
Command setCommand();
Command showCommand();
Command sortCommand();
Command splitCommand();
Command sqlCommand();
Command statsCommand();
Command tagCommand();
Command timecodeCommand();
Command untagCommand();

/// All of them, in the order of the help.
std::vector<Command> allCommands();

/// The text of `vek --help`.
std::string programHelp();

/// What the completions of the shells ask while somebody writes a command: the words of it behind
/// the name of the shell, in the way that shell has them. Prints what may stand there, for
/// nothing but those scripts to read; has no messages and is no command for people.
int complete(std::vector<std::string> words);

/// The one that has the name; a Failure with a suggestion when there is none.
Command commandNamed(const std::string& name);

}  // namespace vek
