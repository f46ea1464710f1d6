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

TEST(Encoding, FindsWideTextsInWhateverLetters) {
    const char* const texts[] = {
        // Katakana and kanji, Hiragana alone, whose bytes are all of ASCII, Cyrillic, mixed words.
        "\xE3\x82\xB7\xE3\x83\xBC\xE3\x83\xB3,\xE5\x90\x8D\n\xE4\xB8\x8D,\xE4\xB8\x8A\n",
        "\xE3\x81\x82\xE3\x81\x84,\xE3\x81\x86\n\xE3\x81\x88,\xE3\x81\x8A\n",
        "\xD0\xA1\xD1\x86\xD0\xB5\xD0\xBD\xD0\xB0;\xD0\x94\r\n\xD0\xAF;2\r\n",
        "Name\tTake\n\xE3\x82\xAB\xE3\x83\xA1\xE3\x83\xA9\xE3\x82\xAB\xE3\x83\xA1\xE3\x83\xA9\tB\n",
        "\xF0\x9F\x8E\xAC\xE3\x80\x80,\xE2\x80\x94\n\xE3\x80\x80,1\n",
    };
    for (const char* text : texts) {
        for (const char* encoding : {"UTF-16LE", "UTF-16BE"}) {
            std::size_t badAt = 0;
            EXPECT_EQ(wideEncodingOf(*fromUtf8(text, encoding, badAt)), encoding) << text;
        }
    }
}

TEST(Encoding, TakesNoTextWithZeroBytesForAWideOne) {
    const std::string_view texts[] = {{"Name,T\0ake\nA,1\n", 15},
                                      {"Name,Take\0\nA,1\n", 15},
                                      {"AB,C\0\nDE,F\0\n", 12},
                                      {"caf\xC3\xA9,T\0\n\xC3\xA9 b,1\n", 15},
                                      {"\0\0\0\n", 4},
                                      {"\0", 1}};
    for (std::string_view text : texts) EXPECT_EQ(wideEncodingOf(text), "") << text;
}

TEST(Encoding, TellsBytesOfTwoSystemsApartByTheLettersThatTheyMake) {
    EXPECT_EQ(likelyEncoding("caf\xE9, r\xE9sum\xE9"), "WINDOWS-1252");
    EXPECT_EQ(likelyEncoding("caf\x8E, r\x8Esum\x8E"), "MACINTOSH");
    EXPECT_EQ(likelyEncoding("it doesn\xD5t"), "MACINTOSH");
    EXPECT_EQ(likelyEncoding("S\xD5O"), "WINDOWS-1252");
    EXPECT_EQ(likelyEncoding("wei\xA7, sm\xBFrrebr\xBF"
                             "d, \xBE"
                             "ble"),
              "MACINTOSH");
    EXPECT_EQ(likelyEncoding("\x86"
                             "bergang"),
              "MACINTOSH");
    EXPECT_EQ(likelyEncoding("o\x9D"), "MACINTOSH");
    EXPECT_EQ(likelyEncoding("word\xC9 \xD0 5\xA1"), "MACINTOSH");
    EXPECT_EQ(likelyEncoding("c\x9Cur, \xA7 5, \xBF"
                             "qu\xE9?, \x84zitat\x93"),
              "WINDOWS-1252");
    EXPECT_EQ(likelyEncoding("the actors\x92 word\x97word \x93quoted\x94"), "WINDOWS-1252");
    EXPECT_EQ(likelyEncoding("it doesn\x92t"), "WINDOWS-1252");
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

TEST(Encoding, ReadsALastLetterThatWaitsForMarks) {
    EXPECT_EQ(read("a", "CP1258"), "a");
    EXPECT_EQ(read("Name,Ti\xEA\xECn", "CP1258"), "Name,Ti\xE1\xBA\xBFn");
    EXPECT_EQ(read("Name,e", "TCVN"), "Name,e");
    EXPECT_EQ(read("+AOk-t+AOk", "UTF-7"), "\xC3\xA9t\xC3\xA9");
    EXPECT_EQ(read("\x1B$B$\"\x1B(B", "ISO-2022-JP"), "\xE3\x81\x82");
}

TEST(Encoding, WritesTheWayBackToWhereATextBegins) {
    for (const char* encoding : {"CP1258", "TCVN", "UTF-7", "ISO-2022-JP", "UTF-32"}) {
        const std::string text =
            std::string(encoding).ends_with("JP") ? "\xE3\x81\x82" : "\xC3\xA9";
        std::size_t badAt = 0;
        const std::optional<std::string> made = fromUtf8(text, encoding, badAt);
        ASSERT_TRUE(made) << encoding;
        EXPECT_EQ(read(*made, encoding), text) << encoding;
    }
    std::size_t badAt = 0;
    EXPECT_THAT(fromUtf8("\xE3\x81\x82", "ISO-2022-JP", badAt),
                Optional(std::string("\x1B$B$\"\x1B(B")));
}

TEST(Encoding, TakesNoNamesThatMakeOtherCharacters) {
    EXPECT_THAT(encodingNamed("cp437//"), Optional(std::string("CP437")));
    EXPECT_EQ(encodingNamed("ascii//translit"), std::nullopt);
    EXPECT_EQ(encodingNamed("ascii//ignore"), std::nullopt);
}
