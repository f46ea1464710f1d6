#include <gtest/gtest.h>

#include <string>

#include "formats/json/json.h"

using vek::formats::compactJson;

namespace {

std::string compact(std::string_view text) {
    const auto found = compactJson(text);
    return found ? found->text + "|" + std::string(text.substr(found->size)) : "none";
}

}  // namespace

TEST(CompactJson, IsAValueWithoutBlanksAndWhatStandsBehindItStays) {
    EXPECT_EQ(compact("{ \"a\" : [ 1 , { } , [ ] ] , \"b\" : null } , x"),
              "{\"a\":[1,{},[]],\"b\":null}| , x");
    EXPECT_EQ(compact("[]"), "[]|");
    EXPECT_EQ(compact("[\"\\u0041\\n\"]"), "[\"A\\n\"]|");
}

TEST(CompactJson, KeepsNumbersAsTheyStand) {
    EXPECT_EQ(compact("[-0, 1e400, 1.10, 123456789012345678901234567890]"),
              "[-0,1e400,1.10,123456789012345678901234567890]|");
}

TEST(CompactJson, IsNothingThatIsNoJson) {
    for (const char* other :
         {"[1,]", "{\"a\" 1}", "{\"a\":1,}", "[1", "{1:2}", "[1}", "{\"a\":}", ""}) {
        EXPECT_EQ(compact(other), "none") << other;
    }
}

TEST(CompactJson, IsAsDeepAsTheTextIs) {
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_EQ(compact(deep), deep + "|");
    EXPECT_EQ(compact(std::string(100000, '[')), "none");
}
