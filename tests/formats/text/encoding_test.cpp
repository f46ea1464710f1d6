#include <gmock/gmock.h>

#include "formats/text/encoding.h"

using testing::Optional;
using namespace vek::formats;

namespace {

std::string read(std::string_view text, const std::string& encoding) {
    std::size_t badAt = 0;
    const auto made = toUtf8(text, encoding, badAt);
    return made ? std::string(made->data(), made->size()) : "bad at " + std::to_string(badAt);
}

}  // namespace

TEST(Encoding, TellsWellFormedTexts) {
    EXPECT_TRUE(isWellFormedUtf8(""));
    EXPECT_TRUE(isWellFormedUtf8("caf\xC3\xA9"));
    for (const char* other : {"\xC3", "\xE9t", "\xC0\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(isWellFormedUtf8(other));
    }
}

TEST(Encoding, KnowsTheNamesThatPeopleSay) {
    EXPECT_THAT(encodingNamed("utf-8"), Optional(std::string()));
    EXPECT_THAT(encodingNamed("macroman"), Optional(std::string("MACINTOSH")));
    EXPECT_THAT(encodingNamed("utf-16"), Optional(std::string("UTF-16LE")));
    EXPECT_EQ(encodingNamed("no such thing"), std::nullopt);
}

TEST(Encoding, FindsWideTextsByMarksAndZeros) {
    EXPECT_EQ(wideEncodingOf("\xFF\xFE"), "UTF-16LE");
    EXPECT_EQ(wideEncodingOf("\xFE\xFF"), "UTF-16BE");
    EXPECT_EQ(wideEncodingOf(std::string_view("N\0a\0m\0e\0,\0T\0", 12)), "UTF-16LE");
    EXPECT_EQ(wideEncodingOf("Name,Take"), "");
}

TEST(Encoding, TellsBytesOfTwoSystemsApartByTheLettersThatTheyMake) {
    EXPECT_EQ(likelyEncoding("caf\xE9, r\xE9sum\xE9"), "WINDOWS-1252");
    EXPECT_EQ(likelyEncoding("caf\x8E, r\x8Esum\x8E"), "MACINTOSH");
}

TEST(Encoding, GoesThereAndBack) {
    const std::string text = "caf\xE9 \x80";
    const std::string utf8 = read(text, "WINDOWS-1252");
    EXPECT_EQ(utf8, "caf\xC3\xA9 \xE2\x82\xAC");
    std::size_t badAt = 0;
    EXPECT_THAT(fromUtf8(utf8, "WINDOWS-1252", badAt), Optional(text));
}

TEST(Encoding, TellsWhereACharacterIsNone) {
    EXPECT_EQ(read("ab\x81", "WINDOWS-1252"), "bad at 2");
    std::size_t badAt = 0;
    EXPECT_EQ(fromUtf8("ab\xE2\x98\x83", "WINDOWS-1252", badAt), std::nullopt);
    EXPECT_EQ(badAt, 2u);
}
