#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vekdb/formats/format.h>
#include <vekdb/formats/reason.h>

/// How logs are written, and what is said about it.
namespace vek {

/// A kind of thing that a format cannot hold, or that would not be read back as it is.
struct Loss {
    std::string what;        ///< "cells that lose the blanks at their ends"
    std::size_t count = 0;   ///< how many there are of the kind
    std::string firstPlace;  ///< "FILE:LINE:COLUMN" of the first; "" where it has no place
};

/// What there is to say of a log that was written, or would be. Values, owned by who asked.
struct Saved {
    std::vector<Loss> losses;  ///< by kind, in the order in which they were found
    /// Said one by one: what of the old file the new one could not keep, as its owner, and what
    /// was left out, an event of an edit list for example.
    std::vector<std::string> notes;

    /// Whether everything was kept.
    bool isWhole() const noexcept { return losses.empty() && notes.empty(); }
};

/// The ends of lines in the text formats.
enum class LineEnds { lf, crlf, cr };

/// What can be chosen of how a log is written. What does not concern a format is not looked at.
struct SaveOptions {
    /// Columns in this order; all of them when empty.
    std::vector<std::string> columns = {};
    LineEnds lineEnds = LineEnds::lf;
    /// Frames a second for EDL, ALE and timelines, "29.97df"; "" is what the log says. A text that
    /// is no rate is refused there.
    std::string rate = {};
    bool shortReels = false;       ///< EDL: reels in eight characters
    bool guardsFormulas = false;   ///< CSV and TSV: no cell is one for a spreadsheet
    std::string videoFormat = {};  ///< ALE: this and the next stand in the heading
    std::string audioFormat = {};
    std::string tracks = {};  ///< ALE: a column Tracks, the same for all rows
    /// ALE: columns by other names, old and new.
    std::vector<std::pair<std::string, std::string>> names = {};
    /// Refuse to write more; 0 is in proportion to the bytes that were read.
    std::size_t maxBytes = 0;
};

/// Takes text as it is written.
class Sink {
public:
    virtual ~Sink() = default;
    /// Takes the next piece, and must not throw. False when no more is taken; the writing ends
    /// then and is answered as unwritable.
    virtual bool write(std::string_view text) noexcept = 0;
};

}  // namespace vek
