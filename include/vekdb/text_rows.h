#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <vekdb/field_types.h>
#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>
#include <vekdb/host/visibility.h>

class LineStore;
class PlainLine;
class ValueCopies;
class dbrecord;
class vekdb;
struct LineSlices;

/// Makes rows of a text in any format: whoever reads the format says where the values stand, and
/// the rows stand on the text itself, which lives as long as the last of them. No value gets
/// memory of its own. Values are kept byte for byte.
///
/// The text may be changed while it is read, to take escapes out of a value where it stands; what
/// belongs to rows already appended is theirs.
class VEKDB_PUBLIC TextRows {
public:
    /// Bytes of the text that one row alone may use, from its first to behind its last. The byte
    /// behind the text's own end may be used as well.
    struct Room {
        char* begin;  ///< the first byte
        char* end;    ///< behind the last
    };

    /// The table has no columns and no rows, and outlives this. The text is held by nobody else.
    TextRows(vekdb& table, Quor::Ptr<TextBlock> text);
    /// Frees the table where `finish` was not called.
    ~TextRows();
    TextRows(const TextRows&) = delete;
    TextRows& operator=(const TextRows&) = delete;

    /// The text, which may be written to, and its length in bytes.
    char* text() const;
    std::size_t size() const { return size_; }

    /// Appends a row. The values are moved together in the room, with a NUL behind each, so each
    /// needs a byte more than it has; those that do not fit there, or stand in an order in which
    /// one would overwrite another, are copied elsewhere. Empty values at the row's end cost
    /// nothing. False, and nothing done, where a value stands behind the 65,535th.
    bool append(Room room, const std::string_view* values, std::size_t count);

    /// A line that became a row: its end, which is null where it did not, and the number of its
    /// values, empty ones at its end included.
    struct QuotedLine {
        char* end;  ///< behind the last quote
        std::size_t count;  ///< of its values
    };
    /// Appends a row where the line that begins there is one of values between quotes and with
    /// commas between these, no quote, backslash or control character in any of them and no blank
    /// at the edge of one. They stay where they stand. Not so for a single value that is empty.
    QuotedLine appendQuoted(char* line);
    /// A value of the row that was appended so last; "" behind those that it has.
    std::string_view quotedValue(std::size_t at) const;

    /// The rows appended so far.
    unsigned count() const;
    /// The most values that a row has, empty ones at its end not counted.
    unsigned longest() const { return longest_; }
    /// Values from the first to the last that is not empty, of all rows together.
    std::uint64_t valueCount() const { return values_; }

    /// Gives the table its columns, no fewer than the longest row has values. It is valid then
    /// and counts as unmodified; nothing can be appended any more.
    void finish(const std::vector<DBFieldDesc>& columns);

private:
    struct Store {
        LineStore* lines = nullptr;
        std::uint32_t spareReferences = 0;
    };

    dbrecord& newRow();
    static void adopt(Store& store, LineSlices* slices, unsigned count, dbrecord& record);
    static void letGo(Store& store);
    LineSlices* moveTogether(Room room, const std::string_view* values, unsigned count);
    void noteValues(unsigned count);

    vekdb& table_;
    std::size_t size_;
    Store text_;
    std::unique_ptr<ValueCopies> copies_;
    std::unique_ptr<PlainLine> quoted_;
    const LineSlices* lastQuoted_ = nullptr;
    unsigned lastCount_ = 0;  // of values that are not empty or stand before such a one
    unsigned longest_ = 0;
    std::uint64_t values_ = 0;
    bool isFinished_ = false;
};
