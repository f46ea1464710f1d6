#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/writing/sheet_facts.h"

/// Whether what is about to be written will be read as what was meant: asked of the readers' own
/// rules. A text that would come back as something else is written in a form that comes back, or it
/// is refused, or it is told.
namespace vek::formats {

class PatchedText;

/// How a reader takes a text, found out by its beginning alone.
struct FirstLook {
    Format format = Format::table;
    std::string encoding;
    bool isPacked = false;
    bool hasMark = false;  ///< a byte order mark
    char delimiter = '\0';

    /// Enough of a text to find it out.
    static constexpr std::size_t size = 1 << 16;
    /// In a file of that name; `usual` separates the cells of the format, '\0' for one that has
    /// none.
    static FirstLook at(std::string_view text, const std::string& path, char usual);
};

/// A text on its way to an output. Its beginning is held back until a reader is certain to take it
/// for what it is. A Failure with `unwritable` where one would not.
class CheckedOutput {
public:
    /// `delimiter` separates cells, '\0' in formats that have none and where a reader is told.
    CheckedOutput(Output& out, Format format, char delimiter = '\0')
        : out_(out), format_(format), delimiter_(delimiter) {}

    void write(std::string_view text) {
        if (isLookedAt_) return out_.write(text);
        beginning_ += text;
        if (beginning_.size() >= FirstLook::size) look();
    }
    /// Takes lines in front of what is looked at, which a reader is told to pass over.
    void pass(std::string_view lines) {
        if (!lines.empty()) out_.write(std::exchange(beginning_, {}).append(lines));
    }
    /// To be called when all is written.
    void end() {
        if (!isLookedAt_) look();
    }

private:
    void look();

    Output& out_;
    Format format_;
    char delimiter_;
    std::string beginning_;
    bool isLookedAt_ = false;
};

/// Whether a person, or a line in front of the heading, says what separates the cells of a log.
bool isDelimiterSaid(const Log& log);

/// Whether a first line of names stands for itself: nothing of it is passed over, and none of it is
/// the mark of another format, of an encoding or of a packed file.
bool standsAsFirstLine(std::string_view line, Format format);

/// Tells of texts that are no UTF-8 where they are so many that a reader takes all of the file for
/// text in another encoding. To be asked for a sheet that has some.
void tellNoUtf8(const Sheet& sheet, Losses& losses);

/// The bytes of a log that stand in front of its heading.
std::size_t sizeInFront(const Log& log);

/// Refuses what would be read as something else, or tells it where it may be.
void refuseOrTell(const std::string& output, const std::string& what, Losses* told);

/// A Failure with `unwritable` where a reader would take the text that is to be written in the
/// place of a log's own for something else than that one was taken for. With `told`, what a person
/// can say on reading is told instead.
void requireSameReading(const Log& log, PatchedText& text, const std::string& output, Losses* told);

}  // namespace vek::formats
