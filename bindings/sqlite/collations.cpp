#include "collations.h"

#include <vekdb/formats/timecode.h>
#include <vekdb/host/strxcmp.h>

namespace vek::sql {

namespace {

using Buffer = char[12];

void putPair(char* to, int number) {
    to[0] = static_cast<char>('0' + number / 10);
    to[1] = static_cast<char>('0' + number % 10);
}

// All that is written of one frame becomes one text, so that what is compared are texts in any
// case and the order has no circles.
std::string_view frameText(std::string_view text, Buffer& buffer) {
    const std::optional<Timecode> code = parseTimecode(text);
    if (!code) return text;
    putPair(buffer, code->hours);
    putPair(buffer + 3, code->minutes);
    putPair(buffer + 6, code->seconds);
    putPair(buffer + 9, code->frames);
    buffer[2] = buffer[5] = buffer[8] = ':';
    return {buffer, 11};
}

std::string_view viewOf(int size, const void* bytes) {
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

int byTimecode(void*, int aSize, const void* a, int bSize, const void* b) {
    return compareTimecodes(viewOf(aSize, a), viewOf(bSize, b));
}

int byPeople(void*, int aSize, const void* a, int bSize, const void* b) {
    return strxcmp(viewOf(aSize, a), viewOf(bSize, b));
}

}  // namespace

int compareTimecodes(std::string_view a, std::string_view b) noexcept {
    Buffer forA;
    Buffer forB;
    return strxcmp(frameText(a, forA), frameText(b, forB));
}

int addCollations(sqlite3* db) {
    const int result = sqlite3_create_collation_v2(db, timecodeCollation, SQLITE_UTF8, nullptr,
                                                   byTimecode, nullptr);
    if (result != SQLITE_OK) return result;
    return sqlite3_create_collation_v2(db, peopleCollation, SQLITE_UTF8, nullptr, byPeople,
                                       nullptr);
}

}  // namespace vek::sql
