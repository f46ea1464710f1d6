#include "formats/summing/text_numbers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vek::formats {

namespace {

std::vector<std::string> manyTexts(std::size_t count) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; ++i) {
        // Short ones, and such that differ behind their first eight bytes alone.
        texts.push_back(i % 2 == 0 ? std::to_string(i) : "the same head " + std::to_string(i));
    }
    return texts;
}

}  // namespace

TEST(TextNumbers, CountTextsInTheOrderInWhichTheyCome) {
    TextNumbers numbers;
    EXPECT_TRUE(numbers.empty());
    EXPECT_EQ(numbers.of("b"), 0u);
    EXPECT_EQ(numbers.of("a"), 1u);
    EXPECT_EQ(numbers.of(""), 2u);
    EXPECT_EQ(numbers.of("b"), 0u);
    EXPECT_EQ(numbers.size(), 3u);
}

TEST(TextNumbers, FindEachOfManyTextsAgain) {
    const std::vector<std::string> texts = manyTexts(5000);
    TextNumbers numbers;
    for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(numbers.of(texts[i]), i);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(numbers.of(std::string(texts[i])), i);
    }
    EXPECT_EQ(numbers.size(), texts.size());
}

// Whatever the hashes are, equal texts alone have one number.
TEST(TextNumbers, TellTextsOfOneHashApart) {
    TextNumbers numbers;
    const std::vector<std::string> texts = {
        "a", std::string("a\0", 2), "12345678", "123456789", "12345678x", "12345678y", ""};
    for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(numbers.of(texts[i], 7), i);
    for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(numbers.of(texts[i], 7), i);
}

TEST(TextNumbers, TakeTheTextsOfOthers) {
    TextNumbers some;
    some.of("a");
    some.of("b");
    TextNumbers others;
    others.of("b");
    others.of("c");
    some.add(others);
    EXPECT_EQ(some.size(), 3u);
    EXPECT_EQ(some.of("c"), 2u);
}

}  // namespace vek::formats
