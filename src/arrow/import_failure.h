#pragma once

#include <string>

/// Why a stream does not become a table; thrown inside of this floor alone.
struct ArrowImportFailure {
    std::string why;
};
