#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>
#include <vekdb/host/visibility.h>

#include <cstddef>
#include <string_view>
#include <vector>

class TextArrival;
class TextDeparture;

/// The lines of a text file, in memory. The whole text lies in one block; lines
/// are found in it only as far as somebody asks.
///
/// Loaded text is split at the separator. An end of line is the separator and one
/// carriage return right before it; neither belongs to the line. A last line
/// without a separator counts, a separator at the very end opens no further line:
/// no bytes are no line, one separator is one empty line. There is no byte order
/// mark handling. A line ends at its first NUL byte.
///
/// Used by one thread at a time.
class VEKDB_PUBLIC TextFile {
public:
    /// What ends a line that is saved.
    enum eEOLStyle {
        eNative = 0,  ///< this platform's own, a line feed
        eLF = 1,
        eCRLF = 2,
        eCR = 3
    };

    TextFile();
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    ~TextFile();

    /// Replaces the lines by those of a file, which is read to its end at once.
    /// FIFOs and character devices are read as well; folders and block devices
    /// are not, nor is a device that gives more than 64 MiB. The flag has no meaning
    /// here. False when the path is null, is not valid UTF-32, or the file cannot
    /// be read: there are then no lines.
    /// A file that is written to while it is read is read again, and after some
    /// attempts refused, as far as its size and time of change tell.
    bool load(const LightweightString<wchar_t>& path, char separator, bool flag);

    /// The same for a file that the caller has opened, and closes: from its first
    /// byte on, or where it has no place to go back to, as a FIFO, from where it
    /// stands. Where it stands afterwards is not defined.
    bool load(int descriptor, char separator);

    /// Why the last load answered false: the system's number of the error (errno).
    /// EFBIG for more than the machine or a device may give, EBUSY for a file that
    /// was changed whenever it was read, EINVAL for a path that no file can have.
    /// 0 where it answered true, and before any load.
    int error() const { return error_; }

    /// Writes every line with an end of line behind it, the last one included.
    /// The file at the path is replaced whole or not at all: the text goes to a
    /// file of unique name beside it, to the disk, and then over it. Symbolic
    /// links are followed and the old file's mode is kept. On false the old file
    /// is as it was and nothing is left beside it. A character device or FIFO is
    /// written to directly. A style that is none of the above counts as eLF.
    bool save(const LightweightString<wchar_t>& path, eEOLStyle style) const;

    /// Line i without its end of line; past the end the null string.
    LightweightString<char> operator[](unsigned i) const;

    /// The same as a view into the block, which ends with the next change of the
    /// lines and with the file. Past the end it is empty, never a null pointer.
    std::string_view line(unsigned i) const;

    /// How many lines there are. Looks at the whole text.
    unsigned size() const;

    /// Appends one line. A line feed in it stays part of the line for as long as
    /// the lines are in memory. The text may be part of another line of this file.
    void appendLine(const LightweightString<char>& text);
    void appendLine(std::string_view text);
    void appendLine(const char* text) { appendLine(LightweightString<char>(text)); }

    /// Appends one line that the caller writes in place: beginLine gives room for
    /// as many bytes, endLine says how many of them were written (at most those
    /// asked for, no NUL byte among them) and completes the line. Nothing else is
    /// called in between.
    char* beginLine(std::size_t atMost);
    void endLine(std::size_t written);

    /// Where line i begins in the text; past the end, textSize().
    std::size_t lineOffset(unsigned i) const;

    /// The text's block: textSize() bytes, behind them always a NUL byte. Null as
    /// long as nothing was loaded or appended. Ends with the next change.
    const Quor::Ptr<TextBlock>& block() const { return block_; }
    std::size_t textSize() const { return textSize_; }

    /// Hands the block over and leaves the file without lines. Never null.
    Quor::Ptr<TextBlock> takeText();

    /// The reader's place. 0 at construction and after every load; moved by
    /// whoever reads lines one after the other, and never by the file itself.
    unsigned currentLine = 0;

private:
    friend class TextInPieces;

    void clear();
    bool keepLoaded(int error, std::size_t size, char separator);
    bool holds(const char* place) const;
    bool scanLine() const;
    bool scanTo(std::size_t i) const;
    std::size_t endOfScannedLine() const;
    void completeLoadedText();
    void sendLines();
    void reserve(std::size_t more);
    void grow(std::size_t size);
    template <class Sink>
    bool writeLines(Sink& to, std::string_view endOfLine) const;

    Quor::Ptr<TextBlock> block_;
    mutable Quor::Ptr<TextArrival> arrival_;
    Quor::Ptr<TextDeparture> departure_;
    std::size_t textSize_ = 0;
    std::size_t loadedSize_ = 0;  // text up to here was loaded, not appended
    char separator_ = '\n';
    int error_ = 0;
    mutable std::vector<std::size_t> starts_;  // of the lines found so far
    mutable std::size_t scanned_ = 0;          // where the next line begins
    mutable std::size_t arrived_ = 0;          // bytes that can be looked at; while some are coming
};
