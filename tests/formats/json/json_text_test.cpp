#include <gmock/gmock.h>

#include <string>

#include "formats/json/json_text.h"

using testing::Optional;
using vek::formats::JsonText;
using vek::formats::resolveEscapes;
using vek::formats::standsAsItIs;

namespace {

std::optional<std::string_view> wordOf(std::string_view text) {
    JsonText json(text.data(), text.data() + text.size());
    const auto word = json.takeWord();
    return json.atEnd() ? word : std::nullopt;
}

bool isString(std::string_view text) {
    JsonText json(text.data(), text.data() + text.size());
    return json.takeString() && json.atEnd();
}

std::string resolved(std::string text) {
    text.resize(resolveEscapes(text.data(), text.size()));
    return text;
}

}  // namespace

TEST(JsonText, TakesNumbersAsTheyStand) {
    for (const char* number : {"0", "-0", "12", "1.50", "1e9", "-2.5E-3", "1e400"}) {
        EXPECT_THAT(wordOf(number), Optional(std::string_view(number)));
    }
    for (const char* other : {"01", "+1", ".5", "1.", "1e", "--1", "0x1", "NaN"}) {
        EXPECT_EQ(wordOf(other), std::nullopt) << other;
    }
}

TEST(JsonText, TakesItsWordsAndNoOthers) {
    EXPECT_THAT(wordOf("true"), Optional(std::string_view("true")));
    EXPECT_THAT(wordOf("null"), Optional(std::string_view("null")));
    EXPECT_EQ(wordOf("True"), std::nullopt);
    EXPECT_EQ(wordOf("nul"), std::nullopt);
}

TEST(JsonText, RefusesStringsThatTheFormatDoesNotAllow) {
    EXPECT_TRUE(isString("\"a \\u00e9 \\\" b\""));
    for (const char* other :
         {"\"a", "\"a\nb\"", "\"\\x41\"", "\"\\u12\"", "\"\\uD800\"", "\"\xC3\""}) {
        EXPECT_FALSE(isString(other)) << other;
    }
}

TEST(JsonText, CountsTheLinesThatItPasses) {
    const std::string_view text = "\n\r\n  [";
    JsonText json(text.data(), text.data() + text.size());
    json.skipBlanks();
    EXPECT_EQ(json.line(), 3u);
    EXPECT_TRUE(json.take('['));
    EXPECT_TRUE(json.atEnd());
}

TEST(JsonText, PutsWhatEscapesStandForInTheirPlace) {
    EXPECT_EQ(resolved("a\\nb\\t\\\\\\\"\\/"), "a\nb\t\\\"/");
    EXPECT_EQ(resolved("\\u00e9\\u20AC"), "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(resolved("\\uD83C\\uDFAC"), "\xF0\x9F\x8E\xAC");
}

TEST(JsonText, TellsWhatStandsInAStringAsItIs) {
    EXPECT_TRUE(standsAsItIs("Szene 12 \xC3\xA9"));
    for (const char* other : {"a\"b", "a\\b", "a\tb", "\xFF"}) EXPECT_FALSE(standsAsItIs(other));
}
