#pragma once

#include <memory>
#include <vector>

#include "formats/saving/patched_text.h"
#include "formats/saving/rows_in_place.h"

/// How the logs of each format are changed in place; the table of formats has one for each.
namespace vek::formats {

struct InPlace;

enum class Rewriting { notPossible, notNeeded, done };

/// A format has `rows`, each with lines of its own, or `text`, which makes all of it. The others
/// may be null.
struct InPlaceWays {
    std::unique_ptr<RowsInPlace> (*rows)(const Saving& saving) = nullptr;
    PatchedText (*text)(const Saving& saving, const std::vector<unsigned>& rows) = nullptr;
    /// A quicker way, which is tried first.
    Rewriting (*rewrite)(const Saving& saving, const InPlace& now, bool mayStay,
                         Output& out) = nullptr;
    /// Refuses a text that would be read as other rows than these, or tells it.
    void (*require)(const Saving& saving, const InPlace& now, PatchedText& text) = nullptr;
    /// Each row is a line as the library itself reads it, which ends with a line feed.
    bool hasLinesOfLibrary = false;
};

std::unique_ptr<RowsInPlace> delimitedInPlace(const Saving& saving, char separator);
std::unique_ptr<RowsInPlace> aleInPlace(const Saving& saving);
std::unique_ptr<RowsInPlace> plainCsvInPlace(const Saving& saving);
std::unique_ptr<RowsInPlace> tableInPlace(const Saving& saving);
std::unique_ptr<RowsInPlace> edlInPlace(const Saving& saving);

/// A JSON text with these rows, in their order, and no others. Of an object only the values that
/// were changed are replaced: numbers that were not stay numbers.
PatchedText jsonInPlace(const Saving& saving, const std::vector<unsigned>& rows);

/// Writes the log into its file's place where its rows' lines are surely read back as they are;
/// whatever has to be told or refused is left to a save in place by pieces. Not needed is what
/// changes nothing, where the file may stay.
Rewriting rewriteTable(const Saving& saving, const InPlace& now, bool mayStay, Output& out);

/// A Failure with `unwritable` where an edit list that is put together so would be read as other
/// events than these rows of the log.
void requireSameEvents(const Saving& saving, const InPlace& now, PatchedText& text);
/// The same where the quotes of a text would be read in the other of the two ways.
void requireSameQuotes(const Saving& saving, const InPlace& now, PatchedText& text);

}  // namespace vek::formats
