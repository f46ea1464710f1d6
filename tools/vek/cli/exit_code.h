#pragma once

#include <vekdb/formats/reason.h>

namespace vek {

/// How the program ends where nothing failed. Documented to people: scripts lean on these numbers.
enum ExitCode {
    done = 0,
    found = 1,  ///< a difference, a problem, or nothing that matched
};

/// How it ends for a reason: 1 for a contradiction, 2 for wrong usage (also a column that is not
/// there), 3 for what could not be read, 4 for what could not be written.
int exitCodeOf(Reason::Kind kind);

}  // namespace vek
