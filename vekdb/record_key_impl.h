#pragma once

#include <string_view>

class dbrecord;

/// Writes the sort key of a record: bytes that compare (as memcmp does) exactly as the record
/// comparison in force compares the records, as far as they go. A key that was cut decides
/// nothing between records whose keys are the same; any other key decides everything.
///
/// All keys of one kind are cut at the same place, or behind bytes that say so, so that a cut key
/// is never the front of one which was not.
class RecordKeyWriter {
public:
    static constexpr unsigned longest = 64;

    /// `to` has room for `longest` bytes.
    explicit RecordKeyWriter(unsigned char* to) : begin_(to), at_(to), end_(to + longest) {}

    void writeAscending(const dbrecord& record);
    /// The order of these is the opposite of what the descending comparison gives.
    void writeForDescending(const dbrecord& record);

    unsigned length() const { return static_cast<unsigned>(at_ - begin_); }
    bool isCut() const { return at_ == end_; }

private:
    void put(unsigned char byte) {
        if (at_ != end_) *at_++ = byte;
    }
    void putFolded(std::string_view text);
    void putTerminated(std::string_view text);
    void putTimecode(std::string_view text);
    void putAsRead(std::string_view text);
    void putDigits(std::string_view digits);
    void putValue(std::string_view text, int column);
    void cut() { end_ = at_; }

    class ZeroMarks;

    unsigned char* begin_;
    unsigned char* at_;
    unsigned char* end_;
};
