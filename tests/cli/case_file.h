#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/program.h"

/// A case is one file of sections, each begun by a line "== ...":
///
///     == file NAME        a file to be there before
///     == link NAME TARGET a symbolic link to be there before
///     == stdin            what the next command reads
///     == env NAME=VALUE   for the next command
///     == terminal N       the next command writes to a terminal of N columns
///     == to PATH          the next command writes to this device or file
///     == vek ARGUMENTS    the command, with quotes as a shell has them
///     == exit N           how it ends; 0 when not given
///     == stdout           what it prints; nothing when not given
///     == stderr           what it says; nothing when not given
///     == after NAME       what is in a file then
///     == absent NAME      a file that is not there then
///
/// What stands in front of the first section tells what the case shows. A section that ends in
/// the word "escaped" may hold \t, \r, \xHH and \\; a backslash at a line's end takes the line
/// end away.
struct Step {
    Start start;
    Finish expected;
    std::vector<std::pair<std::string, std::string>> after;
    std::vector<std::string> absent;
};

struct CaseFile {
    std::vector<std::pair<std::string, std::string>> files;
    std::vector<std::pair<std::string, std::string>> links;
    std::vector<Step> steps;
};

/// Reads a case; throws std::runtime_error for a section that it does not know.
CaseFile readCase(const std::filesystem::path& path);

/// Every case of the folder, sorted, as paths relative to it.
std::vector<std::string> allCases(const std::filesystem::path& folder);
