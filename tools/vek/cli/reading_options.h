#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

/// Options that say how logs of some formats are read.
namespace vek {

struct ReadingOption {
    std::string_view name;
    std::string_view formats;  ///< "|csv|" and so on, those that it is for
    std::string_view what;     ///< as people call these

    bool isFor(Format format) const;
    /// "--sheet is for workbooks, and this is csv".
    std::string notFor(Format format) const;
};

/// Those that the command line has.
std::vector<ReadingOption> readingOptionsOf(const Args& args);

/// A Failure for an option that is not for the log's format; where there are several logs it is
/// told, unless it is for none of them.
void requireUse(const Log& log, const Args& args);
/// The same where so many logs are read.
void requireUse(const Log& log, const Args& args, std::size_t logs);

/// What is said of the form of a log holds for each that a command joins or compares. Says so of
/// one behind the first, where the options are for both: its heading may be what was passed over.
void tellSharedOptions(const Log& first, const Log& log, const Args& args);

}  // namespace vek
