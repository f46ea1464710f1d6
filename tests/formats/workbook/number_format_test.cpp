#include <gtest/gtest.h>

#include "formats/workbook/number_format.h"

namespace {

using vek::formats::builtInFormat;
using vek::formats::NumberFormat;

std::string shown(double value, std::string_view code) {
    return NumberFormat(code).shown(value, false);
}

}  // namespace

TEST(NumberFormats, ShowNumbersWithoutOneToFifteenDigits) {
    EXPECT_EQ(shown(42, "General"), "42");
    EXPECT_EQ(shown(0.1 + 0.2, "General"), "0.3");
    EXPECT_EQ(shown(-1.5, "General"), "-1.5");
    EXPECT_EQ(shown(123456789012345, "General"), "123456789012345");
    EXPECT_EQ(shown(1e21, "General"), "1E+21");
    EXPECT_EQ(shown(-0.0, "General"), "0");
    EXPECT_EQ(shown(7, ""), "7");
    EXPECT_EQ(shown(7.25, "@"), "7.25");
}

TEST(NumberFormats, RoundByTheDigitsThatASheetKeeps) {
    EXPECT_EQ(shown(1.005, "0.00"), "1.01");
    EXPECT_EQ(shown(0.5, "0"), "1");
    EXPECT_EQ(shown(99.995, "0.00"), "100.00");
    EXPECT_EQ(shown(0.004, "0.00"), "0.00");
    EXPECT_EQ(shown(-0.004, "0.00"), "-0.00");
    EXPECT_EQ(shown(-0.004, "0%"), "-0%");
    EXPECT_EQ(shown(-7, "\"low\""), "low");
    EXPECT_EQ(shown(-0.004, "0.00;(0.00)"), "(0.00)");
    EXPECT_EQ(shown(-0.0, "0.00"), "0.00");
    EXPECT_EQ(shown(1e300, "0").size(), 301u);
}

TEST(NumberFormats, PlaceDigitsAsTheyAreWritten) {
    EXPECT_EQ(shown(7, "000"), "007");
    EXPECT_EQ(shown(1234567.5, "#,##0.00"), "1,234,567.50");
    EXPECT_EQ(shown(12, "#,##0"), "12");
    EXPECT_EQ(shown(12, "0,000"), "0,012");
    EXPECT_EQ(shown(1500000, "0.0,,\"M\""), "1.5M");
    EXPECT_EQ(shown(0.256, "0.0%"), "25.6%");
    EXPECT_EQ(shown(1.5, "0.###"), "1.5");
    EXPECT_EQ(shown(3, "0.#"), "3.");
    EXPECT_EQ(shown(1020304, "00\":\"00\":\"00\":\"00"), "01:02:03:04");
    EXPECT_EQ(shown(5551234, "000\\-0000"), "555-1234");
    EXPECT_EQ(shown(0.00012345, "0.00E+00"), "1.23E-04");
    EXPECT_EQ(shown(12345, "##0.0E+0"), "12.3E+3");
    EXPECT_EQ(shown(9.9999, "0.0E+00"), "1.0E+01");
}

TEST(NumberFormats, ShowWholeDigitsThatHaveNoPlaceInFrontOfThePoint) {
    EXPECT_EQ(shown(12.5, ".00"), "12.50");
    EXPECT_EQ(shown(0.5, ".00"), ".50");
    EXPECT_EQ(shown(0, ".0"), ".0");
    EXPECT_EQ(shown(-7, ".0"), "-7.0");
    EXPECT_EQ(shown(1234, "\"take \".##"), "take 1234.");
    EXPECT_EQ(shown(1234567, ".0,"), "1234.6");
    EXPECT_EQ(shown(0.995, ".00%"), "99.50%");
    EXPECT_EQ(shown(0.999, ".00"), "1.00");
    EXPECT_EQ(shown(12.5, ".00E+00"), "1.25E+01");
}

TEST(NumberFormats, LeaveRoomForCharactersOfEverySize) {
    EXPECT_EQ(shown(12.5, "_-* #,##0.00\\ _\u20AC_-;\\-* #,##0.00\\ _\u20AC_-"), "12.50 ");
    EXPECT_EQ(shown(-12.5, "0.0_\u00A3;\\-0.0_\u00A3"), "-12.5");
    EXPECT_EQ(shown(5, "*\u00B70"), "5");
    EXPECT_EQ(shown(5, "\\\u20AC0"), "\u20AC5");
    EXPECT_EQ(shown(5, "0_"), "5");
}

TEST(NumberFormats, ShowFractions) {
    EXPECT_EQ(shown(0.375, "# ?/?"), "3/8");
    EXPECT_EQ(shown(2.5, "# ?/?"), "2 1/2");
    EXPECT_EQ(shown(2, "# ?/?"), "2");
    EXPECT_EQ(shown(0.99, "# ?/?"), "1");
    EXPECT_EQ(shown(1.5, "?/?"), "3/2");
    EXPECT_EQ(shown(0.5, "# ?/16"), "8/16");
    EXPECT_EQ(shown(1.5, "# ?/?\" in\""), "1 1/2 in");
    EXPECT_EQ(shown(2, "\"lens \"# ?/?"), "lens 2");
    EXPECT_EQ(shown(0.25, "\"lens \"?/?"), "lens 1/4");
    EXPECT_EQ(shown(0.25, "# ?/?\" of 2\""), "1/4 of 2");
    EXPECT_EQ(shown(0.5, "0 ?/?"), "0 1/2");
    EXPECT_EQ(shown(-3.5, "0\"-\"?\?/?\?"), "-3-1/2");
    EXPECT_EQ(shown(0, "# ?/?"), "0");
    EXPECT_EQ(shown(0.3333, "?/???"), "1/3");
}

TEST(NumberFormats, ChooseASectionBySignOrCondition) {
    EXPECT_EQ(shown(-5, "0;[Red](0);\"none\""), "(5)");
    EXPECT_EQ(shown(0, "0;(0);\"none\""), "none");
    EXPECT_EQ(shown(-5, "0.0"), "-5.0");
    EXPECT_EQ(shown(150, "[>=100]\"many\";0"), "many");
    EXPECT_EQ(shown(50, "[>=100]\"many\";0"), "50");
    EXPECT_EQ(shown(5, "[$\u20AC-407] 0.00"), "\u20AC 5.00");
    EXPECT_EQ(shown(5, "0_);(0)"), "5");
}

TEST(NumberFormats, ShowDatesAndTimes) {
    const double day = 45356.5882986111;  // 2024-03-05 14:07:09
    EXPECT_EQ(shown(day, "yyyy-mm-dd hh:mm:ss"), "2024-03-05 14:07:09");
    EXPECT_EQ(shown(day, "d mmm yy"), "5 Mar 24");
    EXPECT_EQ(shown(day, "dddd, mmmm dd, yyyy"), "Tuesday, March 05, 2024");
    EXPECT_EQ(shown(day, "h:mm AM/PM"), "2:07 PM");
    EXPECT_EQ(shown(0.5, "h AM/PM"), "12 PM");
    EXPECT_EQ(shown(0, "h A/P"), "12 A");
    EXPECT_EQ(shown(day, "mm:ss"), "07:09");
    EXPECT_EQ(shown(26.05 / 24, "[h]:mm:ss"), "26:03:00");
    EXPECT_EQ(shown(1.0 / 24, "[mm]:ss"), "60:00");
    EXPECT_EQ(shown(12.3456 / 86400, "ss.000"), "12.346");
    EXPECT_EQ(shown(59.9996 / 86400, "hh:mm:ss.000"), "00:01:00.000");
    EXPECT_EQ(shown(day, "[$-409]d\\-mmm\\-yyyy;@"), "5-Mar-2024");
}

TEST(NumberFormats, ShowYearsOfErasAsAllCountThem) {
    EXPECT_EQ(shown(45000, "e"), "2023");
    EXPECT_EQ(shown(45000, "[$-411]ggge\"y\"m\"m\"d\"d\""), "2023-03-15");
    EXPECT_EQ(shown(12, "0g"), "12g");
}

TEST(NumberFormats, CountDaysAsSheetsDo) {
    EXPECT_EQ(shown(1, "yyyy-mm-dd"), "1900-01-01");
    EXPECT_EQ(shown(59, "yyyy-mm-dd"), "1900-02-28");
    EXPECT_EQ(shown(60, "yyyy-mm-dd"), "1900-02-29");
    EXPECT_EQ(shown(61, "yyyy-mm-dd dddd"), "1900-03-01 Thursday");
    EXPECT_EQ(shown(2958465, "yyyy-mm-dd"), "9999-12-31");
    EXPECT_EQ(NumberFormat("yyyy-mm-dd").shown(0, true), "1904-01-01");
    EXPECT_EQ(NumberFormat("yyyy-mm-dd").shown(43894, true), "2024-03-05");
    EXPECT_EQ(shown(45356.9999999, "yyyy-mm-dd hh:mm:ss"), "2024-03-06 00:00:00");
}

TEST(NumberFormats, ShowWhatIsNoDateAsANumber) {
    EXPECT_EQ(shown(-1, "yyyy-mm-dd"), "-1");
    EXPECT_EQ(shown(2958466, "yyyy-mm-dd"), "2958466");
    EXPECT_EQ(shown(1e300, "hh:mm"), "1E+300");
}

TEST(NumberFormats, TakeAnyCode) {
    const std::string_view pieces[] = {
        "[", "]", "\"", "\\", ";", "0", "#",   "?", ".",     ",", "%",  "E+",  "/",   "@",      "_",
        "*", "h", "m",  "s",  "y", "d", "[h]", "$", "AM/PM", "-", "[$", "[>1", "Gen", "General"};
    constexpr std::size_t count = std::size(pieces);
    std::size_t filled = 0;
    for (std::size_t n = 0; n < count * count * count; ++n) {
        const std::string code = std::string(pieces[n % count]) +
                                 std::string(pieces[n / count % count]) +
                                 std::string(pieces[n / count / count]);
        for (double value : {0.0, 0.04, -1234.5678, 45356.6}) {
            if (!shown(value, code).empty()) ++filled;
        }
    }
    EXPECT_GT(filled, count);
}

TEST(NumberFormats, AreKnownByNumber) {
    EXPECT_EQ(shown(-1234.5, builtInFormat(7)), "($1,234.50)");
    EXPECT_EQ(NumberFormat(builtInFormat(14)).shown(45356, false), "2024-03-05");
    EXPECT_EQ(NumberFormat(builtInFormat(46)).shown(1.5, false), "36:00:00");
    EXPECT_EQ(NumberFormat(builtInFormat(4)).shown(-1234.5, false), "-1,234.50");
    EXPECT_EQ(builtInFormat(0), "General");
    EXPECT_EQ(builtInFormat(999), "General");
}
