#pragma once

#include "formats/writing/writers.h"
#include "tools/vek/cli/command.h"

/// How a command that makes another log of one comes by it and leaves it: in the place of the old
/// one, in the file that -o names, or, with --dry-run, not at all.
namespace vek {

/// The log of FILE, held where it is to be replaced.
Log readLogToSave(const Args& args);

/// The format that a path's ending gives, or else the log's own; a Failure where that is one that
/// is not written back.
Target targetFor(const Log& log, const std::string& path);

/// Writes these rows in this order into the log's own file, or into that of -o, whose ending gives
/// the format; one that says nothing, and "-", the standard output, get the log's own. --backup
/// keeps what is replaced.
void saveResult(const Log& log, const std::vector<unsigned>& rows, const Args& args);
/// All of them.
void saveResult(const Log& log, const Args& args);

/// Prints rows as CSV, for --dry-run.
void printRows(const Log& log, const std::vector<unsigned>& rows);

/// The -o option.
Option savingOption();

}  // namespace vek
