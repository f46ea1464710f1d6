#pragma once

#include <string>
#include <vector>

#include "tools/vek/cli/command.h"

/// The files of a command that takes many.
namespace vek {

struct LogFiles {
    std::vector<std::string> paths;
    bool areAll = true;  ///< false where a folder could not be read, which was said
};

/// The files that stand in these paths: a file and "-" for itself, a folder for all in it and in
/// its folders that have the ending of a format that can be read (of --from, where that is given),
/// in the order of their names. Hidden files and those that programs keep for themselves while
/// they work ("~$day.xlsx") are left out. Links to files are followed; those to folders, too, but
/// each folder is looked into once, behind those that stand in the paths themselves.
LogFiles logFilesIn(const std::vector<std::string>& paths, const Args& args);

/// Paths from a list, "-" for standard input: one a line, or, where there is a zero byte in it,
/// each ended by one. A Failure where it cannot be read.
std::vector<std::string> pathsOfList(const std::string& list);

/// The option --files-from, and the files of it and of what stands in front.
Option filesFromOption();
LogFiles logFilesFrom(std::vector<std::string> paths, const Args& args);

}  // namespace vek
