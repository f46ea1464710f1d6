#include "vekdb/order/record_key.h"

#include <algorithm>
#include <cstring>

#include <vekdb/host/text_util.h>
#include "vekdb/record/record_access.h"

namespace {

// What stands before a value: records compare by this first.
constexpr unsigned char hasValue = 0;
constexpr unsigned char hasNoValue = 1;
constexpr unsigned char isBlankRecord = 2;

constexpr unsigned char mostZeros = 100;

std::string_view textOf(const dbrecord& record, int column) {
    return RecordAccess::view(record, static_cast<unsigned>(column)).data();
}

std::string_view digitsAt(std::string_view text, std::size_t place) {
    std::size_t end = place;
    while (end < text.size() && isAsciiDigit(text[end])) ++end;
    return text.substr(place, end - place);
}

std::size_t leadingZeros(std::string_view digits) {
    return std::min(digits.find_first_not_of('0'), digits.size());
}

// Eight characters at once: what is above 'Z' is carried into a byte's top bit where it is added
// to, and so is what is not below 'A'.
std::uint64_t foldedWord(std::uint64_t word) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t tops = 0x80 * ones;
    const std::uint64_t low = word & ~tops;
    const std::uint64_t fromA = low + (0x80 - 'A') * ones;
    const std::uint64_t aboveZ = low + (0x7F - 'Z') * ones;
    return word | ((fromA & ~aboveZ & ~word & tops) >> 2);
}

void foldWord(unsigned char* to, const char* from) {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    word = foldedWord(word);
    std::memcpy(to, &word, sizeof word);
}

// The last word reaches back over what was folded before.
void foldTo(unsigned char* to, const char* from, std::size_t n) {
    constexpr std::size_t word = sizeof(std::uint64_t);
    if (n < word) {
        for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<unsigned char>(asciiLower(from[i]));
        return;
    }
    for (std::size_t i = 0; i < n - word; i += word) foldWord(to + i, from + i);
    foldWord(to + n - word, from + n - word);
}

}  // namespace

KeyLayout::KeyLayout(bool descending) : descending_(descending) {
    const int* columns = sortColumns();
    unsigned count = 0;
    while (count < mostColumns && columns[count] >= 0) ++count;
    leavesColumnsOut_ = columns[count] >= 0;
    for (unsigned i = 0; i < count; ++i) addColumn(columns[i], mostPlaces / count);
    // Without a column, blank records are still told from the others.
    if (count == 0) addColumn(-1, 1);
}

void KeyLayout::addColumn(int column, unsigned places) {
    const ValueOrder order = descending_ ? ValueOrder::part : valueOrderOf(column);
    const unsigned marks = order == ValueOrder::people ? std::min(places / 4, 8u) : 0;
    columns_[columnCount_++] = {column, order, static_cast<std::uint8_t>(places - marks),
                                static_cast<std::uint8_t>(marks)};
    addSegment(places - marks, 0);
    if (marks != 0) addSegment(marks, mostZeros);
}

void KeyLayout::addSegment(unsigned places, std::uint8_t pad) {
    segments_[segmentCount_++] = {static_cast<std::uint8_t>(placesUsed_),
                                  static_cast<std::uint8_t>(places), pad};
    placesUsed_ += places;
}

/// The zeros that lead a number count only between texts that read alike. Then the first number
/// with another count of zeros decides, by the character that stands where the other text has one
/// zero more: a digit of the number, or what follows a number that is nothing but zeros.
class RecordKeyWriter::ZeroMarks {
public:
    void add(std::size_t zeros, char follower) {
        if (isCut_) return;
        const auto count = static_cast<unsigned char>(std::min<std::size_t>(zeros, mostZeros));
        const bool moreComesFirst = static_cast<unsigned char>(follower) > '0';
        marks_[count_++] = moreComesFirst ? static_cast<unsigned char>(mostZeros - count) : count;
        isCut_ = zeros >= mostZeros;
    }
    unsigned count() const { return count_; }
    unsigned char operator[](unsigned i) const { return marks_[i]; }
    /// The last mark stands for more than one count of zeros.
    bool isCut() const { return isCut_; }

private:
    unsigned char marks_[KeyLayout::mostPlaces];  // every number takes a place at least
    unsigned count_ = 0;
    bool isCut_ = false;
};

RecordKey RecordKeyWriter::write(const dbrecord& record, unsigned char* to) {
    at_ = to + RecordKey::header;
    segments_ = 0;
    isCut_ = layout_.leavesColumnsOut();
    layout_.isDescending() ? writeDescending(record) : writeAscending(record);
    std::memset(at_, 0, RecordKey::word);
    const auto used = static_cast<std::size_t>(at_ - to);
    to[0] = static_cast<unsigned char>((used + RecordKey::word - 1) & ~(RecordKey::word - 1));
    to[1] = static_cast<unsigned char>(segments_ | (isCut_ ? RecordKey::cutMark : 0));
    return RecordKey(to);
}

void RecordKeyWriter::writeDescending(const dbrecord& record) {
    for (unsigned i = 0; i < layout_.columnCount() && layout_.column(i).column >= 0; ++i) {
        open(layout_.column(i).textPlaces);
        putFolded(textOf(record, layout_.column(i).column));
        close();
        if (!isFull()) continue;
        isCut_ = true;
        return;
    }
}

// What makes a record compare by nothing but that it has no value ends its key.
void RecordKeyWriter::writeAscending(const dbrecord& record) {
    for (unsigned i = 0; i < layout_.columnCount(); ++i) {
        const KeyLayout::Column& column = layout_.column(i);
        const std::string_view text =
            column.column < 0 ? "" : withoutLeadingSpace(textOf(record, column.column));
        if (text.empty()) {
            open(1);
            put(i == 0 && record.is_blank() ? isBlankRecord : hasNoValue);
            return close();
        }
        ZeroMarks zeros;
        if (writeText(column, text, zeros) && writeMarks(column, zeros)) continue;
        isCut_ = true;
        return;
    }
}

// False where the key must end here.
bool RecordKeyWriter::writeText(const KeyLayout::Column& column, std::string_view text,
                                ZeroMarks& zeros) {
    open(column.textPlaces);
    put(hasValue);
    if (column.order == ValueOrder::people) {
        putAsRead(text, zeros);
    } else if (column.order == ValueOrder::timecode) {
        putTimecode(text);
    } else {
        putFolded(partToCompare(text));
    }
    close();
    return !isFull();
}

bool RecordKeyWriter::writeMarks(const KeyLayout::Column& column, const ZeroMarks& zeros) {
    if (column.markPlaces == 0) return true;
    if (zeros.count() > column.markPlaces) return false;
    unsigned count = zeros.count();
    while (count > 0 && zeros[count - 1] == mostZeros) --count;  // as the pad says
    open(column.markPlaces);
    for (unsigned i = 0; i < count; ++i) put(zeros[i]);
    close();
    return !zeros.isCut();
}

void RecordKeyWriter::putFolded(std::string_view text) {
    const std::size_t n = std::min(text.size(), static_cast<std::size_t>(end_ - at_));
    foldTo(at_, text.data(), n);
    at_ += n;
}

void RecordKeyWriter::putTimecode(std::string_view text) {
    putFolded(timecodeHead(text));
    putFolded(timecodeTail(text));
}

void RecordKeyWriter::putAsRead(std::string_view text, ZeroMarks& zeros) {
    std::size_t place = 0;
    while (place < text.size() && !isFull()) {
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
        for (; more >= inNextByte && !isFull(); more -= inNextByte) put(inNextByte);
        put(static_cast<unsigned char>(more));
    }
    putFolded(digits);
}

namespace {

struct SegmentBytes {
    const unsigned char* bytes = nullptr;
    unsigned length = 0;
};

using Segments = SegmentBytes[8];

void findSegments(RecordKey key, Segments& segments) {
    key.forEachSegment([&](unsigned i, const unsigned char* bytes, unsigned length) {
        segments[i] = {bytes, length};
    });
}

int compareWithPad(SegmentBytes segment, unsigned from, unsigned char pad) {
    for (unsigned i = from; i < segment.length; ++i) {
        if (segment.bytes[i] != pad) return segment.bytes[i] < pad ? -1 : 1;
    }
    return 0;
}

int compareSegments(SegmentBytes a, SegmentBytes b, unsigned char pad) {
    const unsigned common = std::min(a.length, b.length);
    const int order = common == 0 ? 0 : std::memcmp(a.bytes, b.bytes, common);
    if (order != 0) return order;
    return a.length > b.length ? compareWithPad(a, common, pad) : -compareWithPad(b, common, pad);
}

}  // namespace

int compareKeys(const KeyLayout& layout, RecordKey a, RecordKey b) {
    Segments x;
    Segments y;
    findSegments(a, x);
    findSegments(b, y);
    for (unsigned i = 0; i < layout.segmentCount(); ++i) {
        if (int order = compareSegments(x[i], y[i], layout.segment(i).pad); order != 0) {
            return order;
        }
    }
    return 0;
}
