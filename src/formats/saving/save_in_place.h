#pragma once

#include <vector>

#include "formats/writing/output.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// Whether a log of the format is changed in place.
bool isChangedInPlace(Format format);

/// A log that is written in its own format, by the rows of it that are meant, in their order. The
/// order of the columns is for formats that have no other one.
struct InPlace {
    /// All of it, or these rows alone.
    explicit InPlace(const Log& log);
    InPlace(const Log& log, std::vector<unsigned> rows);

    const Log& log;
    std::vector<unsigned> rows;
    std::vector<unsigned> columns;
    /// One of many files that a log becomes: what stands between rows, as blank lines do, belongs
    /// to none of them, and what has to be said to have it read as it is is told, not refused.
    bool isPiece = false;
};

/// Writes it, and does not close the output. What was not changed since it was read stays as it
/// came, byte for byte. False, and nothing is written, where the file may stay and would be what
/// it is.
bool writeInPlace(const InPlace& now, bool mayStay, Output& out, Losses& losses);

}  // namespace vek::formats
