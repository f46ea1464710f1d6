#pragma once

#include <cstdint>

#include "formats/log/log.h"

/// Table files in which each line of a row is what writing the row makes, which those are that
/// this library or vek wrote. Of such a file no piece has to be read again to be kept.
namespace vek::formats {

/// Whether a table file of so many bytes is its heading, which ends at `heading`, and what writing
/// the rows of the log makes, which was just read from it. `places`, if any, are then the rows'.
bool isAsWritten(const Log& log, std::uint64_t heading, std::uint64_t size,
                 RowPlaces* places = nullptr);

/// Notes where the rows of such a file stand, as the log is read. Of other table files this is not
/// known.
void notePlacesAsWritten(Log& log);

struct InPlace;
struct Saving;
class Output;

enum class Rewriting { notPossible, notNeeded, done };
/// Writes the log into its file's place where every line of a row is known to be what a save in
/// place would leave or make there; whatever has to be told or refused is left to that one. Not
/// needed is what changes nothing, where the file may stay.
Rewriting rewriteTable(const Saving& saving, const InPlace& now, bool mayStay, Output& out);

}  // namespace vek::formats
