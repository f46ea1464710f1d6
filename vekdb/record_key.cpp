#include "vekdb/record_key_impl.h"

#include <algorithm>

#include "host/text_util.h"
#include "vekdb/record.h"
#include "vekdb/record_compare_impl.h"

namespace {

std::string_view digitsAt(std::string_view text, std::size_t place) {
    std::size_t end = place;
    while (end < text.size() && isAsciiDigit(text[end])) ++end;
    return text.substr(place, end - place);
}

std::size_t leadingZeros(std::string_view digits) {
    return std::min(digits.find_first_not_of('0'), digits.size());
}

}  // namespace

/// The zeros that lead a number count only between texts that read alike. Then the first number
/// with another count of zeros decides, by the character that stands where the other text has one
/// zero more: a digit of the number, or what follows a number that is nothing but zeros.
class RecordKeyWriter::ZeroMarks {
public:
    static constexpr std::size_t most = 100;

    void add(std::size_t zeros, char follower) {
        if (tooMany_) return;
        const auto count = static_cast<unsigned char>(std::min(zeros, most));
        const bool moreComesFirst = static_cast<unsigned char>(follower) > '0';
        marks_[count_++] = moreComesFirst ? static_cast<unsigned char>(most - count) : count;
        tooMany_ = zeros >= most;
    }
    std::string_view bytes() const { return {reinterpret_cast<const char*>(marks_), count_}; }
    /// The last mark stands for more than one count of zeros.
    bool tooMany() const { return tooMany_; }

private:
    unsigned char marks_[longest];  // every number takes a byte of the key at least
    std::size_t count_ = 0;
    bool tooMany_ = false;
};

void RecordKeyWriter::putFolded(std::string_view text) {
    const std::size_t n = std::min(text.size(), static_cast<std::size_t>(end_ - at_));
    for (std::size_t i = 0; i < n; ++i) {
        at_[i] = static_cast<unsigned char>(asciiLower(text[i]));
    }
    at_ += n;
}

void RecordKeyWriter::putTerminated(std::string_view text) {
    putFolded(text);
    put(0);
}

void RecordKeyWriter::putTimecode(std::string_view text) {
    std::string_view head = timecodeHead(text);
    putFolded(head);
    for (std::size_t i = head.size(); i < timecodeHeadLength; ++i) {
        put(0);
    }
    putTerminated(timecodeTail(text));
}

// The number of digits, then the digits. Lengths up to 8 stand in the byte of a digit, which no
// other character has; that of 9 says that more is to come, 255 at a time.
void RecordKeyWriter::putDigits(std::string_view digits) {
    constexpr std::size_t inOneByte = 8;
    constexpr std::size_t inNextByte = 0xFF;
    if (digits.size() <= inOneByte) {
        put(static_cast<unsigned char>('0' + digits.size()));
    } else {
        put('9');
        std::size_t more = digits.size();
        for (; more >= inNextByte && at_ != end_; more -= inNextByte) {
            put(inNextByte);
        }
        put(static_cast<unsigned char>(more));
    }
    putFolded(digits);
}

void RecordKeyWriter::putAsRead(std::string_view text) {
    ZeroMarks zeros;
    std::size_t place = 0;
    while (place < text.size() && at_ != end_) {
        if (!isAsciiDigit(text[place])) {
            put(static_cast<unsigned char>(asciiLower(text[place++])));
            continue;
        }
        const std::string_view digits = digitsAt(text, place);
        const std::size_t leading = leadingZeros(digits);
        zeros.add(leading, text.data()[place + leading]);
        putDigits(digits.substr(leading));
        place += digits.size();
    }
    put(0);
    for (char mark : zeros.bytes()) {
        put(static_cast<unsigned char>(mark));
    }
    if (zeros.tooMany()) cut();
}

void RecordKeyWriter::putValue(std::string_view text, int column) {
    switch (valueOrderOf(column)) {
        case ValueOrder::people:
            return putAsRead(text);
        case ValueOrder::timecode:
            return putTimecode(text);
        default:
            return putTerminated(partToCompare(text));
    }
}

void RecordKeyWriter::writeAscending(const dbrecord& record) {
    const int* column = sortColumns();
    // A record with a value in its first column is not blank; only the others need a full look.
    const bool isPlain = *column >= 0 && !record.fieldView(static_cast<unsigned>(*column)).empty();
    const bool isBlank = !isPlain && record.is_blank();
    put(isBlank);
    if (isBlank) return;

    for (; *column >= 0 && at_ != end_; ++column) {
        const std::string_view text = withoutLeadingSpace(textToCompare(record, *column));
        put(text.empty());
        if (text.empty()) return;
        putValue(text, *column);
    }
}

void RecordKeyWriter::writeForDescending(const dbrecord& record) {
    for (const int* column = sortColumns(); *column >= 0 && at_ != end_; ++column) {
        putTerminated(textToCompare(record, *column));
    }
}
