#pragma once

#include "formats/saving/save_in_place.h"
#include "tools/vek/cli/command.h"
#include "tools/vek/cli/printout.h"

/// How a command that makes another log of one comes by it and leaves it: in the place of the old
/// one, in the file that -o names, or, with --dry-run, not at all.
namespace vek {

/// The log of FILE, held where it is to be replaced, which --dry-run does not do.
Log readLogToSave(const Args& args);

/// The format that a path's ending gives, or else the log's own; a Failure where that is one that
/// is not written back.
Format targetFor(const Log& log, const std::string& path);

/// Writes a log back into the file it came from, in its format, the old file kept as it was on
/// any failure. What was not changed stays as it came, byte for byte; where nothing was, nothing
/// is written. Standard input goes to standard output. --backup keeps the old file beside it. Says
/// what the file could not hold. With --dry-run nothing is written, and all is said and refused
/// that would be otherwise.
void saveInPlace(const InPlace& now, const Args& args);
void saveInPlace(const Log& log, const Args& args);
/// These rows alone, in this order.
void saveInPlace(const Log& log, const std::vector<unsigned>& rows, const Args& args);

/// Logs that are saved back into their files together, as `saveInPlace` does it with one: those
/// that are added stand ready beside the files, which are as they were before `commit`.
class JointSaving {
public:
    explicit JointSaving(const Args& args) : args_(args) {}

    /// These rows of a log, in this order.
    void add(const Log& log, const std::vector<unsigned>& rows);
    /// All of them take their files' places. A Failure where one cannot, which says those that did.
    void commit();

private:
    struct File {
        Printout out;
        Losses losses = {};
    };

    const Args& args_;
    std::vector<File> files_;
};

/// Writes these rows in this order into the log's own file, or into that of -o, whose ending gives
/// the format; one that says nothing, and "-", the standard output, get the log's own. --backup
/// keeps what is replaced; with --dry-run it is as in place.
void saveResult(const Log& log, const std::vector<unsigned>& rows, const Args& args);
/// All of them.
void saveResult(const Log& log, const Args& args);
/// With these columns.
void saveResult(const InPlace& now, const Args& args);

/// Whether what is saved is printed, by the words.
bool goesToStandardOutput(const Args& args);

/// Says that no row matches, and what that means. Answers the exit code.
int tellUnmatched(const Log& log, const char* outcome);
/// Where no row matches: says so, and what that means. No file is written; who reads the standard
/// output gets the log as it came. Answers the exit code.
int finishUnmatched(const Log& log, const char* outcome, const Args& args);

/// Writes rows of a log to an output, as -o does: what is written in the log's own format keeps the
/// form that the log came in, unless the options of style say something else. The output is not
/// closed. The log was read to be copied.
void writeCopy(const InPlace& now, Format target, const Args& args, Output& out, Losses& losses);

/// Prints rows as CSV, for --dry-run.
void printRows(const Log& log, const std::vector<unsigned>& rows);

/// The -o option.
Option savingOption();

}  // namespace vek
