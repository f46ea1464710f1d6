#pragma once

#include <string>
#include <vector>

#include "cli/program.h"

/// What is done to a program at one of its calls of the operating system.
struct Disturbance {
    enum Kind {
        none,
        fails,           ///< the call answers with the error and does nothing
        failsFromThere,  ///< and so do all behind it
        isInterrupted,   ///< EINTR, where the call may answer so
        isHalved,        ///< a piece that is read or written is half as long
        isOneByte,       ///< it and all behind it read and write a byte at a time
        isKilledBefore,  ///< the process ends before the call is made
        isKilledAfter,   ///< and when it has been made
    };
    Kind kind = none;
    unsigned at = 0;  ///< the call that it happens to, from 1 on
    int error = 0;
};

/// How it went.
struct DisturbedRun {
    int exitCode = -1;      ///< 1000 and the signal, when one ended it
    unsigned calls = 0;     ///< how many were counted
    bool happened = false;  ///< whether the disturbance came to pass
    std::string call;       ///< the name of what it came to pass at
};

/// Whether this system lets a program be disturbed.
bool canDisturb();

/// Runs the program with these words in the folder, without its output. Calls are counted that
/// look at, read or change files, from the first on that names one of the folder; those of the
/// standard streams are not.
DisturbedRun runDisturbed(const WorkFolder& folder, const std::vector<std::string>& words,
                          const Disturbance& disturbance);
