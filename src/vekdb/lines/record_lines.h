#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <vekdb/host/ptr.h>
#include "host/text_arrival.h"
#include "vekdb/lines/field_unescaping.h"
#include "vekdb/lines/plain_line.h"

class LineStore;
struct LineSlices;
class TextFile;
class dbrecord;

/// Record lines, one after the other.
class RecordLines {
public:
    virtual ~RecordLines() = default;

    /// Makes the record's values those of the next line. No steps: the line is essentially
    /// empty or there is none, and the record has no values and is not marked.
    virtual LineScan read(dbrecord& record) = 0;
    /// Waits until all lines are there, so that nothing is said of a file that then turns out to
    /// be unreadable.
    virtual void awaitAll() {}
    /// Makes room for what is kept of the lines that are still to come, each of about so many
    /// values. About how many lines that are, by those that came; 0 where that is not known.
    virtual std::size_t expectRest(unsigned) { return 0; }
    /// The record of the line read last is not kept: what it took is there for the next one. Its
    /// values are undefined until then.
    virtual void takeBack(dbrecord&) {}
};

/// The lines of a caller's file from its current line on. The text stays as it is, and the
/// records get strings of their own.
class FileLines : public RecordLines {
public:
    explicit FileLines(TextFile& file) : file_(file) {}

    /// Marks the record as changed, and its table.
    LineScan read(dbrecord& record) override;

private:
    std::string_view nextLine();

    TextFile& file_;
    std::vector<char> values_;
    FieldUnescaper scanner_;
};

/// The lines of a file from its current line on; the file gives its text up. Values are ended
/// where they stand in the text, the records stand on slices of it, and the text lives as long
/// as the last of them. Of a text that is still coming each line is waited for, and a
/// TextArrival::Broken may be thrown.
class TextLines : public RecordLines {
public:
    enum class Mark { none, asRead };

    TextLines(TextFile& file, Mark mark);
    ~TextLines() override;
    TextLines(const TextLines&) = delete;
    TextLines& operator=(const TextLines&) = delete;

    LineScan read(dbrecord& record) override;
    void awaitAll() override;
    std::size_t expectRest(unsigned values) override;
    void takeBack(dbrecord& record) override;
    /// Whether any line was read that was not essentially empty.
    bool hasRead() const { return hasRead_; }
    /// Whether so many lines were read to their ends, whatever was in them, and no more are left.
    bool areAll(std::size_t lines) const {
        return lines == read_ && at_ == end_ && !arrival_ && !hasCut_;
    }

private:
    void awaitMore();
    std::string_view nextLine();
    std::size_t lineLength();
    LineScan cutUp(dbrecord& record);
    LineScan moveTogether(std::string_view line, dbrecord& record);
    void adoptMoved(const char* first, dbrecord& record);
    void adopt(LineSlices* slices, unsigned values, dbrecord& record);
    void noteRead(dbrecord& record);

    Quor::Ptr<TextArrival> arrival_;  // null when all the text is there
    LineStore* store_;
    std::size_t size_;  // of the text, with what is still to come
    char* begin_;
    char* at_;
    char* end_;  // of what is there
    std::uint32_t spareReferences_ = 0;
    bool marks_;
    bool hasRead_ = false;
    bool hasCut_ = false;   // a line at a NUL
    std::size_t read_ = 0;  // lines
    PlainLine quoted_;
    FieldUnescaper scanner_;
};
