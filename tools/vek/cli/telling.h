#pragma once

#include "formats/json/json_writer.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// What such a --format takes, by which commands that tell something are known, too.
inline constexpr const char* tellings = "text|json";

/// The --format of commands that tell something: text for people, or json for programs.
Option tellingOption();
bool tellsJson(const Args& args);

/// One object for programs that says why a command ended early, where it was asked to tell what
/// it finds as json and could not begin to. It may be for the words themselves.
void tellFailure(const Failure& failure, const Command& command,
                 const std::vector<std::string>& words);

}  // namespace vek
