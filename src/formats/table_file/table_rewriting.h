#pragma once

/// Table files in which it is known where each row stands. A line that is what writing its row
/// makes, as nearly all are that this library or vek wrote, is made again; of the file only the
/// others are read again to be kept.
namespace vek::formats {

struct InPlace;
struct Saving;
class Output;

enum class Rewriting { notPossible, notNeeded, done };
/// Writes the log into its file's place where its rows' lines are surely read back as they are;
/// whatever has to be told or refused is left to a save in place by pieces. Not needed is what
/// changes nothing, where the file may stay.
Rewriting rewriteTable(const Saving& saving, const InPlace& now, bool mayStay, Output& out);

}  // namespace vek::formats
