// Mistakes that the compiler catches. With MISUSE 0 the file compiles; each other number adds
// one mistake, and the test that compiles them knows what the compiler must say to it.

#include <vekdb/host/cookie.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/text_file.h>
#include <vekdb/record.h>
#include <vekdb/table.h>

using Text = LightweightString<char>;

void take(const Cookie&);
void take(const dbrecord&);

void use(vekdb& table, const vekdb& other, dbrecord& record, Text text, VDBBase& source) {
    vekdb withRows(other, 1);
    vekdb withoutParameters(other, static_cast<DBFieldDesc*>(nullptr));
    text.push_back('x');
    record.set_field(0, "abc");
    table.set_field(0, 0, "abc");
    table.set_field(0, 0, true);
    take(Cookie());
    take(record);
    (void)source;
#if MISUSE == 1
    vekdb copy(other);
#elif MISUSE == 2
    table = other;
#elif MISUSE == 3
    text += 'x';
#elif MISUSE == 4
    take(text);
#elif MISUSE == 5
    take("00");
#elif MISUSE == 6
    Cookie cookie = text;
#elif MISUSE == 7
    dbrecord tooEasy = 3;
#elif MISUSE == 8
    const char* characters = text;
#elif MISUSE == 9
    table.get_record(0)->container_ = nullptr;
#elif MISUSE == 10
    vekdb moved(static_cast<vekdb&&>(table));
#elif MISUSE == 11
    VDBBase alone;
#elif MISUSE == 12
    other.set_field(0, 0, "abc");
#elif MISUSE == 13
    vekdb named(L"log.vek");
#elif MISUSE == 14
    DBFieldDesc column = {"Reel", 't'};
#endif
}
