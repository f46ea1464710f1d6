#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <vekdb/arrow/arrow.h>
#include <vekdb/host/text_util.h>
#include "arrow/making.h"
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

using arrow_testing::bitsOf;
using arrow_testing::bytesOf;
using arrow_testing::MadeBatch;
using arrow_testing::MadeColumn;
using arrow_testing::numbersOf;
using arrow_testing::StreamMaker;
using arrow_testing::textsOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Texts = std::vector<std::string>;

std::unique_ptr<vekdb> imported(StreamMaker& maker, std::string* why = nullptr) {
    LightweightString<char> told;
    ArrowArrayStream stream = maker.stream();
    auto table = importArrow(stream, &told);
    EXPECT_EQ(stream.release, nullptr);
    EXPECT_EQ(maker.held, 0);
    if (why != nullptr) *why = told.c_str();
    if (why == nullptr) {
        EXPECT_STREQ(told.c_str(), "");
    }
    return table;
}

Texts textsIn(MadeColumn column) {
    StreamMaker maker(std::move(column));
    auto table = imported(maker);
    return table != nullptr ? columnOf(*table, 0) : Texts{"refused"};
}

std::string refusalOf(StreamMaker& maker) {
    std::string why;
    EXPECT_EQ(imported(maker, &why), nullptr);
    return why;
}

std::string refusalOf(MadeColumn column) {
    StreamMaker maker(std::move(column));
    return refusalOf(maker);
}

std::string named(char letter, std::size_t number) {
    return std::string(1, letter).append(std::to_string(number));
}

// A whole number of many bytes, of its 64 lowest bits.
std::string wide(std::int64_t number, std::size_t bytes) {
    std::string made = bytesOf<std::int64_t>({number});
    made.resize(std::max(bytes, made.size()), number < 0 ? '\xFF' : '\0');
    return made.substr(0, bytes);
}

std::string pairs(const std::vector<std::pair<std::string, std::string>>& all) {
    std::string made = bytesOf<std::int32_t>({static_cast<std::int32_t>(all.size())});
    for (const auto& [key, value] : all) {
        made += bytesOf<std::int32_t>({static_cast<std::int32_t>(key.size())}) + key;
        made += bytesOf<std::int32_t>({static_cast<std::int32_t>(value.size())}) + value;
    }
    return made;
}

std::string shortView(const std::string& text) {
    std::string made = bytesOf<std::int32_t>({static_cast<std::int32_t>(text.size())}) + text;
    made.resize(16);
    return made;
}

std::string farView(std::int32_t size, std::int32_t buffer, std::int32_t from) {
    return bytesOf<std::int32_t>({size, 0, buffer, from});
}

void expectEqualTables(const vekdb& a, const vekdb& b) {
    ASSERT_TRUE(a.sameColumns(&b));
    ASSERT_EQ(a.get_num_records(), b.get_num_records());
    for (unsigned column = 0; column < a.get_num_fields(); ++column) {
        EXPECT_EQ(a.get_field_type(column), b.get_field_type(column));
    }
    for (unsigned row = 0; row < a.get_num_records(); ++row) {
        ASSERT_EQ(a.get_tag(row), b.get_tag(row)) << row;
        for (unsigned column = 0; column < a.get_num_fields(); ++column) {
            ASSERT_EQ(a.get_record(row)->fieldView(column), b.get_record(row)->fieldView(column))
                << row << ' ' << column;
        }
    }
    ASSERT_EQ(a.get_num_params(), b.get_num_params());
    for (unsigned i = 0; i < a.get_num_params(); ++i) {
        EXPECT_STREQ(a.get_param_name(i), b.get_param_name(i));
        EXPECT_STREQ(a.get_param_text(i), b.get_param_text(i));
    }
}

}  // namespace

TEST(ArrowImport, TextsOfEveryKindAreTakenByteForByte) {
    const Texts texts = {"Kitchen", "", "caf\xC3\xA9", "caf\xE9", " two  blanks "};
    for (const char* format : {"u", "z"}) EXPECT_EQ(textsIn(textsOf(texts, format)), texts);
    for (const char* format : {"U", "Z"}) {
        EXPECT_EQ(textsIn(textsOf<std::int64_t>(texts, format)), texts);
    }
    EXPECT_THAT(textsIn({"w:3", {"", "abcdef"}, 2}), ElementsAre("abc", "def"));
    EXPECT_THAT(textsIn({"w:0", {"", ""}, 2}), ElementsAre("", ""));
}

TEST(ArrowImport, TextViewsStandInThemselvesOrInOneOfSeveralBuffers) {
    const std::string first = "a long text that stands elsewhere";
    const std::string second = "......another one that is long";
    MadeColumn column{
        "vu",
        {"", shortView("twelve bytes") + farView(33, 0, 0) + farView(24, 1, 6) + shortView(""),
         first, second, bytesOf<std::int64_t>({33, 30})},
        4};
    EXPECT_THAT(textsIn(column),
                ElementsAre("twelve bytes", first, "another one that is long", ""));
    column.buffers[1] = farView(25, 1, 6);
    column.length = 1;
    EXPECT_THAT(refusalOf(column), HasSubstr("reaches beyond its buffer"));
    column.buffers[1] = farView(25, 2, 0);
    EXPECT_THAT(refusalOf(column), HasSubstr("stands in buffer 2 of 2"));
    column.buffers[1] = farView(-1, 0, 0);
    EXPECT_THAT(refusalOf(column), HasSubstr("-1 bytes"));
}

TEST(ArrowImport, WholeNumbersOfEveryWidthKeepAllTheirDigits) {
    EXPECT_THAT(textsIn(numbersOf<std::int8_t>("c", {-128, 127})), ElementsAre("-128", "127"));
    EXPECT_THAT(textsIn(numbersOf<std::uint8_t>("C", {0, 255})), ElementsAre("0", "255"));
    EXPECT_THAT(textsIn(numbersOf<std::int16_t>("s", {-32768})), ElementsAre("-32768"));
    EXPECT_THAT(textsIn(numbersOf<std::uint16_t>("S", {65535})), ElementsAre("65535"));
    EXPECT_THAT(textsIn(numbersOf<std::int32_t>("i", {-2147483647 - 1})),
                ElementsAre("-2147483648"));
    EXPECT_THAT(textsIn(numbersOf<std::uint32_t>("I", {4294967295U})), ElementsAre("4294967295"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("l", {std::numeric_limits<std::int64_t>::min()})),
                ElementsAre("-9223372036854775808"));
    EXPECT_THAT(textsIn(numbersOf<std::uint64_t>("L", {~std::uint64_t{0}})),
                ElementsAre("18446744073709551615"));
}

TEST(ArrowImport, NumbersWithAPointTakeTheFewestDigitsThatAreReadBack) {
    EXPECT_THAT(textsIn(numbersOf<double>("g", {0.1, 100000, -2.5, 1e100, 5e-324, 0.0001, -0.0})),
                ElementsAre("0.1", "100000", "-2.5", "1e+100", "5e-324", "0.0001", "-0"));
    EXPECT_THAT(textsIn(numbersOf<float>("f", {0.1F, 16777216.0F, 1e30F})),
                ElementsAre("0.1", "16777216", "1e+30"));
    EXPECT_THAT(textsIn(numbersOf<double>("g", {HUGE_VAL, -HUGE_VAL, std::nan("")})),
                ElementsAre("inf", "-inf", "nan"));
    EXPECT_THAT(textsIn(numbersOf<std::uint16_t>("e", {0x3C00, 0xC000, 0x7BFF, 0x0001, 0xFC00})),
                ElementsAre("1", "-2", "65504", "5.9604645e-08", "-inf"));
}

TEST(ArrowImport, RandomNumbersAreReadBackAsTheSame) {
    testing_support::Random random;
    std::vector<double> numbers;
    for (int i = 0; i < 2000; ++i) {
        std::uint64_t bits = random.below(~std::size_t{0});
        double number;
        std::memcpy(&number, &bits, sizeof number);
        if (std::isfinite(number)) numbers.push_back(number);
        numbers.push_back(static_cast<double>(random.between(-1000000, 1000000)) / 1000);
    }
    const Texts texts = textsIn(numbersOf("g", numbers));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(std::strtod(texts[i].c_str(), nullptr), numbers[i]) << texts[i];
    }
}

TEST(ArrowImport, DecimalsKeepEveryDigit) {
    for (const std::size_t bytes : {16u, 32u}) {
        const std::string format = bytes == 16 ? "d:19,2" : "d:40,2,256";
        const std::string numbers = wide(123456, bytes) + wide(-5, bytes) + wide(0, bytes) +
                                    wide(100, bytes) + wide(-100000000000, bytes);
        EXPECT_THAT(textsIn({format, {"", numbers}, 5}),
                    ElementsAre("1234.56", "-0.05", "0.00", "1.00", "-1000000000.00"));
    }
    EXPECT_THAT(textsIn({"d:9,3,32", {"", wide(-1234, 4)}, 1}), ElementsAre("-1.234"));
    EXPECT_THAT(textsIn({"d:18,0,64", {"", wide(7, 8)}, 1}), ElementsAre("7"));
    EXPECT_THAT(textsIn({"d:5,-3", {"", wide(12, 16) + wide(0, 16)}, 2}),
                ElementsAre("12000", "0"));
    EXPECT_THAT(textsIn({"d:38,0", {"", std::string(15, '\xFF') + '\x7F'}, 1}),
                ElementsAre("170141183460469231731687303715884105727"));
    EXPECT_THAT(textsIn({"d:76,0,256", {"", std::string(31, '\0') + '\x80'}, 1}),
                ElementsAre("-578960446186580977117854925043439539266349923328202820197287920039"
                            "56564819968"));
}

TEST(ArrowImport, BooleansAreTrueAndFalse) {
    EXPECT_THAT(textsIn({"b", {"", bitsOf("1011")}, 3, 1}), ElementsAre("false", "true", "true"));
}

TEST(ArrowImport, DaysAndTimesAreWrittenAsIsoDoes) {
    EXPECT_THAT(textsIn(numbersOf<std::int32_t>("tdD", {0, -1, 11016, 20779, -719529, -719528})),
                ElementsAre("1970-01-01", "1969-12-31", "2000-02-29", "2026-11-22", "-0001-12-31",
                            "0000-01-01"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("tdm", {86'400'000})),
                ElementsAre("1970-01-02T00:00:00"));
    EXPECT_THAT(textsIn(numbersOf<std::int32_t>("tts", {86399})), ElementsAre("23:59:59"));
    EXPECT_THAT(textsIn(numbersOf<std::int32_t>("ttm", {1500})), ElementsAre("00:00:01.5"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("ttu", {1})), ElementsAre("00:00:00.000001"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("ttn", {3600'000'000'010})),
                ElementsAre("01:00:00.00000001"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("tss:", {1795305600, -1})),
                ElementsAre("2026-11-22T00:00:00", "1969-12-31T23:59:59"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("tsm:UTC", {-1})),
                ElementsAre("1969-12-31T23:59:59.999Z"));
    EXPECT_THAT(textsIn(numbersOf<std::int64_t>("tsu:Europe/Paris", {1'000'000})),
                ElementsAre("1970-01-01T00:00:01Z"));
    EXPECT_THAT(
        textsIn(numbersOf<std::int64_t>("tsn:", {std::numeric_limits<std::int64_t>::min(),
                                                 std::numeric_limits<std::int64_t>::max()})),
        ElementsAre("1677-09-21T00:12:43.145224192", "2262-04-11T23:47:16.854775807"));
    EXPECT_THAT(
        textsIn(numbersOf<std::int64_t>("tss:", {std::numeric_limits<std::int64_t>::max()})),
        ElementsAre("292277026596-12-04T15:30:07"));
}

TEST(ArrowImport, EveryDayOfFourHundredYearsIsTheNextOne) {
    std::vector<std::int32_t> days;
    for (std::int32_t day = -80'000; day < 70'000; ++day) days.push_back(day);
    const Texts texts = textsIn(numbersOf("tdD", days));
    ASSERT_EQ(texts.size(), days.size());
    int year = 1750;
    int month = 12;
    int of = 20;
    for (const std::string& text : texts) {
        char wanted[40];
        std::snprintf(wanted, sizeof wanted, "%04d-%02d-%02d", year, month, of);
        ASSERT_EQ(text, wanted);
        const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        const int last = month == 2 ? (isLeap ? 29 : 28)
                         : month == 4 || month == 6 || month == 9 || month == 11 ? 30
                                                                                 : 31;
        if (++of <= last) continue;
        of = 1;
        month = month % 12 + 1;
        year += month == 1 ? 1 : 0;
    }
}

TEST(ArrowImport, ADictionaryGivesTheValuesThatAreMeant) {
    MadeColumn column = numbersOf<std::int8_t>("c", {1, 0, 1, 2});
    column.dictionary = {textsOf({"A001", "B001", ""})};
    EXPECT_THAT(textsIn(column), ElementsAre("B001", "A001", "B001", ""));
    column.dictionary = {numbersOf<std::int64_t>("l", {10, 20, 30})};
    column.dictionary[0].offset = 1;
    column.dictionary[0].length = 2;
    column.length = 3;
    EXPECT_THAT(textsIn(column), ElementsAre("30", "20", "30"));
    column.length = 4;
    EXPECT_THAT(refusalOf(column), HasSubstr("value 2 of a dictionary of 2"));
    column.buffers[1] = bytesOf<std::int8_t>({-1, 0, 0, 0});
    EXPECT_THAT(refusalOf(column), HasSubstr("value -1 of a dictionary of 2"));
    column.buffers[0] = bitsOf("0111");
    EXPECT_THAT(textsIn(column), ElementsAre("", "20", "20", "20"));
}

TEST(ArrowImport, NullsAreEmptyCells) {
    MadeColumn column = numbersOf<std::int32_t>("i", {1, 2, 3});
    column.buffers[0] = bitsOf("101");
    EXPECT_THAT(textsIn(column), ElementsAre("1", "", "3"));
    column.nulls = 0;
    EXPECT_THAT(textsIn(column), ElementsAre("1", "2", "3"));
    EXPECT_THAT(textsIn({"n", {}, 2}), ElementsAre("", ""));
}

TEST(ArrowImport, ABatchMayBeginAnywhereInItsColumnsAndTheyInTheirBuffers) {
    MadeColumn column = textsOf({"a", "b", "c", "d", "e", "f"});
    column.offset = 2;
    column.length = 4;
    column.buffers[0] = bitsOf("111101");
    StreamMaker maker({MadeBatch{{column, numbersOf<std::int64_t>("l", {0, 1, 2, 3})}, 3, 1}});
    auto table = imported(maker);
    EXPECT_THAT(columnOf(*table, 0), ElementsAre("d", "", "f"));
    EXPECT_THAT(columnOf(*table, 1), ElementsAre("1", "2", "3"));
}

TEST(ArrowImport, ARowThatIsNullAsAWholeIsEmpty) {
    StreamMaker maker({MadeBatch{{textsOf({"a", "b"})}, 2, 0, bitsOf("01")}});
    EXPECT_THAT(columnOf(*imported(maker), 0), ElementsAre("", "b"));
}

TEST(ArrowImport, BatchesFollowEachOther) {
    StreamMaker maker({MadeBatch{{textsOf({"a", "b"})}, 2}, MadeBatch{{textsOf({})}, 0},
                       MadeBatch{{textsOf({"c"})}, 1}});
    EXPECT_THAT(columnOf(*imported(maker), 0), ElementsAre("a", "b", "c"));
}

TEST(ArrowImport, TypesThatBecomeNoTextAreRefusedWithTheirColumn) {
    for (const char* format : {"+l",       "+s", "+w:2", "+m",  "+r",   "tDs",      "tiM",
                               "x",        "",   "d:",   "d:3", "d:3,", "d:9,1,48", "d:9,1,128,",
                               "d:9,2000", "w:", "w:-1", "ts",  "tss",  "tsx:"}) {
        MadeColumn column = textsOf({"a"});
        column.format = format;
        column.name = "Price";
        EXPECT_THAT(refusalOf(column), HasSubstr("column 1 \"Price\": its type, format \"" +
                                                 std::string(format) + "\", does not become text"));
    }
}

TEST(ArrowImport, ArraysThatContradictThemselvesAreRefused) {
    const auto refused = [](auto change) {
        MadeColumn column = textsOf({"abc", "def"});
        change(column);
        StreamMaker maker({MadeBatch{{column}, 2}});
        return refusalOf(maker);
    };
    EXPECT_THAT(refused([](auto& c) { c.length = -1; }), HasSubstr("its length is -1"));
    EXPECT_THAT(refused([](auto& c) { c.offset = -2; }), HasSubstr("its offset is -2"));
    EXPECT_THAT(refused([](auto& c) { c.length = std::numeric_limits<std::int64_t>::max(); }),
                HasSubstr("beyond all memory"));
    EXPECT_THAT(refused([](auto& c) { c.length = 1; }), HasSubstr("fewer values"));
    EXPECT_THAT(refused([](auto& c) { c.buffers.pop_back(); }), HasSubstr("2 buffers and needs 3"));
    EXPECT_THAT(refused([](auto& c) { c.buffers[1] = ""; }), HasSubstr("buffer of values is null"));
    EXPECT_THAT(refused([](auto& c) { c.buffers[2] = ""; }), HasSubstr("buffer of bytes is null"));
    EXPECT_THAT(refused([](auto& c) {
                    c.buffers[1] = bytesOf<std::int32_t>({3, 0, 6});
                }),
                HasSubstr("from byte 3 to byte 0"));
    EXPECT_THAT(refused([](auto& c) {
                    c.buffers[1] = bytesOf<std::int32_t>({-3, 0, 6});
                }),
                HasSubstr("from byte -3"));
}

TEST(ArrowImport, BatchesThatContradictTheSchemaAreRefused) {
    const MadeColumn column = textsOf({"a", "b"});
    StreamMaker more({MadeBatch{{column}, 2}, MadeBatch{{column, column}, 2}});
    EXPECT_THAT(refusalOf(more), HasSubstr("a batch has 2 columns, and the stream 1"));
    StreamMaker negative({MadeBatch{{column}, -1}});
    EXPECT_THAT(refusalOf(negative), HasSubstr("-1 rows"));
    StreamMaker endless(
        {MadeBatch{{MadeColumn{"n", {}, std::int64_t{1} << 50}}, std::int64_t{1} << 50}});
    EXPECT_THAT(refusalOf(endless), HasSubstr("more rows than a table"));
    StreamMaker nested(column);
    ArrowArrayStream stream = nested.stream();
    stream.get_schema = [](ArrowArrayStream*, ArrowSchema* out) {
        *out = {};
        out->format = "i";
        out->release = [](ArrowSchema* schema) { schema->release = nullptr; };
        return 0;
    };
    LightweightString<char> why;
    EXPECT_EQ(importArrow(stream, &why), nullptr);
    EXPECT_THAT(why.c_str(), HasSubstr("no structures of columns"));
}

TEST(ArrowImport, ATextWithAZeroByteIsRefused) {
    EXPECT_THAT(refusalOf(textsOf({"good", std::string("a\0b", 3)})),
                HasSubstr("column 1 \"c\": a value has a zero byte"));
}

TEST(ArrowImport, MetadataOfImpossibleLengthIsRefused) {
    MadeColumn column = textsOf({"a"});
    column.metadata = bytesOf<std::int32_t>({1, -5, 0});
    EXPECT_THAT(refusalOf(column), HasSubstr("metadata"));
    StreamMaker maker({MadeBatch{{textsOf({"a"})}, 1}}, bytesOf<std::int32_t>({-1}));
    EXPECT_THAT(refusalOf(maker), HasSubstr("metadata"));
}

TEST(ArrowImport, AStreamThatFailsTellsItsReasonAndIsReleased) {
    for (const int at : {-2, 0, 1}) {
        StreamMaker maker({MadeBatch{{textsOf({"a"})}, 1}, MadeBatch{{textsOf({"b"})}, 1}});
        maker.failAt = at;
        EXPECT_THAT(refusalOf(maker), HasSubstr("the stream failed: "));
        maker.error = "the disk is gone";
        EXPECT_EQ(refusalOf(maker), "the stream failed: the disk is gone");
    }
    ArrowArrayStream released = {};
    LightweightString<char> why;
    EXPECT_EQ(importArrow(released, &why), nullptr);
    EXPECT_STREQ(why.c_str(), "the stream was released already");
}

TEST(ArrowImport, WhatOthersSayInMetadataIsPassedOver) {
    MadeColumn column = textsOf({"a"});
    column.metadata = pairs({{"PARQUET:field_id", "1"}, {"vekdb.type", "no such type"}});
    StreamMaker maker({MadeBatch{{column}, 1}}, pairs({{"pandas", "{}"}}));
    auto table = imported(maker);
    EXPECT_EQ(table->get_field_type(0), DBFieldTypes::text);
    EXPECT_EQ(table->get_num_params(), 1u);
    EXPECT_FALSE(table->get_modified());
}

// Whatever says that it holds tags.
TEST(ArrowImport, AColumnThatCannotHoldTagsIsAColumn) {
    MadeColumn column = textsOf({"a"});
    column.metadata = pairs({{"vekdb.tag", "flags"}});
    EXPECT_THAT(textsIn(column), ElementsAre("a"));
}

TEST(ArrowImport, WhatWasImportedIsSavedAndLoadedAgain) {
    testing_support::TempDir folder;
    StreamMaker maker(textsOf({"one", "two"}));
    auto table = imported(maker);
    table->set_filename(fromUTF8(folder.file("log.vek").c_str()));
    ASSERT_EQ(table->save_text(), 2);
    vekdb loaded(table->get_filename(), 100, true);
    EXPECT_THAT(columnOf(loaded, 0), ElementsAre("one", "two"));
}

TEST(ArrowWayBack, TagsTypesParametersAndNamesComeBack) {
    vekdb table({{"Start", DBFieldTypes::timecode},
                 {"R\xE9"
                  "el",
                  DBFieldTypes::eType('q')},
                 {"Tag", DBFieldTypes::numeric}});
    table.add_param("Show", "Night: Train");
    table.add_param("Empty", "");
    addRow(table, {"01:00:00:00", "", "x"});
    addRow(table, {"", "b", ""});
    table.set_tag(1, 200);
    table.clear_changed();
    auto back = importArrow(exportArrow(table, {.tags = ArrowTags::numbers}));
    ASSERT_NE(back, nullptr);
    expectEqualTables(table, *back);
}

TEST(ArrowWayBack, RandomTablesAreTheSame) {
    testing_support::Random random;
    for (int round = 0; round < 60; ++round) {
        std::vector<DBFieldDesc> columns;
        for (std::size_t i = 0, n = 1 + random.below(8); i < n; ++i) {
            columns.push_back({named('c', i).append(random.text("ab\xE9\xC3\xA9", 4)).c_str(),
                               random.pick(std::vector{DBFieldTypes::text, DBFieldTypes::date,
                                                       DBFieldTypes::eType('x')})});
        }
        vekdb table(columns);
        for (std::size_t i = 0, n = random.below(4); i < n; ++i) {
            table.add_param(named('p', i).c_str(), random.text("xyz:\"", 9).c_str());
        }
        if (table.get_num_params() == 0) table.add_param("VEKDB", "Rev 1");
        for (std::size_t i = 0, n = random.below(300); i < n; ++i) {
            const unsigned row = table.add_records(1);
            table.set_tag(row, random.oneIn(3) ? random.between(0, 255) : 0);
            for (unsigned column = 0; column < columns.size(); ++column) {
                table.setField(row, column, random.text("ab \t\"\n\xE9\xC3\xA9", 30).c_str());
            }
        }
        ArrowExport how{ArrowTags::numbers, ArrowBytes::binary};
        how.rowsPerBatch = static_cast<std::uint32_t>(1 + random.below(100));
        how.bytesPerBatch = random.oneIn(4) ? std::uint64_t{1} << 33 : 1 + random.below(9000);
        LightweightString<char> why;
        auto back = importArrow(exportArrow(table, how), &why);
        ASSERT_NE(back, nullptr) << why.c_str();
        expectEqualTables(table, *back);
    }
}

TEST(ArrowImport, WhereMemoryEndsTheStreamIsReleasedAndNothingLeaks) {
    vekdb table(textColumns({"a", "b"}));
    table.add_param("p", "q");
    for (int i = 0; i < 20; ++i) addRow(table, {"some text", "x"});
    table.set_tag(3, 1);
    testing_support::CountingAllocator counting;
    const unsigned failures = testing_support::failEachAllocation(
        [&] {
            auto back = importArrow(exportArrow(table, {.tags = ArrowTags::flags}));
            if (back == nullptr) throw Quor::Exception::BadAlloc();
        },
        [&] { EXPECT_EQ(counting.liveBlocks(), 0); });
    EXPECT_GT(failures, 40u);
    EXPECT_EQ(counting.liveBlocks(), 0);
}
