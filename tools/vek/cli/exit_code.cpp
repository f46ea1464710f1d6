#include "tools/vek/cli/exit_code.h"

namespace vek {

int exitCodeOf(Reason::Kind kind) {
    switch (kind) {
        case Reason::none:
            return done;
        case Reason::contradiction:
            return found;
        case Reason::wrongUsage:
            return 2;
        case Reason::unwritable:
            return 4;
        default:
            return 3;
    }
}

}  // namespace vek
