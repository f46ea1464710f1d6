#pragma once

#include <string>
#include <vector>

#include "formats/input/held.h"
#include "tools/vek/cli/command.h"

/// What an output must not be, that no log is lost to it.
namespace vek {

/// Whether the output is one of the logs that are read, by whatever name.
bool isInput(const std::vector<std::string>& inputs, const std::string& output);

/// A Failure where the output is one of the logs that are read, as what is written there, `what`,
/// is another thing than that log.
void requireNoInput(const char* command, const std::vector<std::string>& inputs,
                    const std::string& output, const char* what);

/// A Failure where --backup would keep the old file of the output in the place of a log that is
/// read.
void requireNoBackupOver(const std::vector<std::string>& inputs, const std::string& output);

/// A Failure where the file could not be written, as far as that can be known without doing it:
/// for dry runs. Folders that are not there have to be, or with the second are made.
void requireWritable(const std::string& path);
void requireMakeable(const std::string& path);
/// The same of what --backup keeps, where there is an old file.
void requireBackup(const std::string& path);

/// Whether anything has a name, a link that leads nowhere included.
bool isTaken(const std::string& path);

/// For a file that is to be new: who makes one of that name before this is written keeps it, and
/// the command that wanted to write it fails.
Held holdNewFile(const std::string& path);

/// Makes the folder in which a file is to stand, and those around it; a Failure where it cannot be
/// made, or where links of somebody else's lead there.
void makeFolderOf(const std::string& path);

/// One text for all paths to a name, be there a file or not, and whatever links lead to it: names
/// that differ in case alone count as one, as many systems take them.
std::string placeOf(const std::string& path);

}  // namespace vek
