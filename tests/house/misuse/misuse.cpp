// Mistakes that the compiler catches. With MISUSE 0 the file compiles; each other number adds
// one mistake, and the test that compiles them knows what the compiler must say to it.

#include <cstdint>
#include <string>
#include <string_view>

#include <vekdb/host/cookie.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/text_file.h>
#include <vekdb/record.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

using Text = LightweightString<char>;

void take(const Cookie&);
void take(const dbrecord&);

// Numbers of every width, and text in every form of it.
template <class Rows>
void storeNumbers(Rows& rows) {
    char own[] = "abc";
    rows.set_field(0, 0, short{1});
    rows.set_field(0, 0, static_cast<signed char>(1));
    rows.set_field(0, 0, static_cast<unsigned char>(1));
    rows.set_field(0, 0, std::size_t{1});
    rows.set_field(0, 0, std::int64_t{1});
    rows.set_field(0, 0, 1u);
    rows.set_field(0, 0, 1ll);
    rows.set_field(0, 0, 1ull);
    rows.set_field(0, 0, 1.0f);
    rows.set_field(0, 0, own);
    rows.set_field(0, 0, nullptr);
    rows.set_field(0, 0, std::string("abc"));
    rows.set_field(0, 0, std::string_view("abc"));
}

void storeInRecord(dbrecord& record) {
    record.set_field(0, short{1});
    record.set_field(0, std::size_t{1});
    record.set_field(0, std::int64_t{1});
    record.set_field(0, 1ll);
    record.set_field(0, 1.0f);
    record.set_field(0, nullptr);
    record.set_field(0, std::string("abc"), false);
}

void use(vekdb& table, const vekdb& other, dbrecord& record, Text text, VDBBase& source,
         VDBViewRep& view) {
    vekdb withRows(other, 1);
    vekdb withoutParameters(other, static_cast<DBFieldDesc*>(nullptr));
    text.push_back('x');
    record.set_field(0, "abc");
    table.set_field(0, 0, "abc");
    table.set_field(0, 0, true);
    storeNumbers(table);
    storeNumbers(source);
    storeInRecord(record);
    take(Cookie());
    take(record);
    storeNumbers(view);
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
    table.get_record(0)->owner_ = nullptr;
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
#elif MISUSE == 15
    record.set_field(0, L"abc");
#elif MISUSE == 16
    record.set_field(0, u8"abc");
#elif MISUSE == 17
    record.set_field(0, 'x');
#elif MISUSE == 18
    table.set_field(0, 0, L"abc");
#elif MISUSE == 19
    table.set_field(0, 0, u"abc");
#elif MISUSE == 20
    table.set_field(0, 0, 'x');
#elif MISUSE == 21
    view.set_field(0, 0, U'x');
#elif MISUSE == 22
    view.set_field(0, 0, u8"abc");
#elif MISUSE == 23
    source.set_field(0, 0, L"abc");
#elif MISUSE == 24
    table.set_field(0, 0, &source);
#endif
}
