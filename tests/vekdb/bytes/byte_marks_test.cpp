#include "vekdb/bytes/marks_in_registers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include <string>
#include <string_view>
#include <vector>

namespace {

std::vector<std::size_t> found(const std::string& text) {
    ByteMarks marks(text.data(), text.data() + text.size(), {',', '"', '\n', '\r'});
    std::vector<std::size_t> places;
    const char* const end = text.data() + text.size();
    for (const char* at = marks.next(text.data()); at != end; at = marks.next(at + 1)) {
        places.push_back(static_cast<std::size_t>(at - text.data()));
    }
    return places;
}

std::vector<std::size_t> expected(const std::string& text) {
    std::vector<std::size_t> places;
    for (std::size_t at = text.find_first_of(",\"\n\r"); at != std::string::npos;
         at = text.find_first_of(",\"\n\r", at + 1)) {
        places.push_back(at);
    }
    return places;
}

}  // namespace

TEST(ByteMarks, AreFoundAtEveryPlaceOfTextsOfEverySize) {
    for (std::size_t size = 0; size < 200; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            std::string text(size, 'x');
            text[at] = "\",\n\r"[at % 4];
            ASSERT_EQ(found(text), std::vector<std::size_t>{at}) << size;
        }
        ASSERT_TRUE(found(std::string(size, 'x')).empty());
        ASSERT_TRUE(found(std::string(size, '\0')).empty());
    }
}

TEST(ByteMarks, AgreeWithASearchByteByByte) {
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::string text;
        std::uint32_t state = seed * 2654435761u + 1;
        for (unsigned i = seed % 700; i > 0; --i) {
            state = state * 1664525u + 1013904223u;
            text += "abc,\"\n\r\xff\x8c\x2d\x8a"[(state >> 24) % 11];
        }
        ASSERT_EQ(found(text), expected(text)) << seed;
    }
}

TEST(ByteMarks, MayBeAskedFromAnywhereFurtherOn) {
    std::string text(1000, 'x');
    text[10] = text[700] = ',';
    const char* const begin = text.data();
    ByteMarks marks(begin, begin + text.size(), {',', ',', ',', ','});
    EXPECT_EQ(marks.next(begin + 11), begin + 700);
    EXPECT_EQ(marks.next(begin + 700), begin + 700);
    EXPECT_EQ(marks.next(begin + 701), begin + 1000);
    EXPECT_EQ(marks.next(begin + 1000), begin + 1000);
}

TEST(ByteMarks, AreCountedAsTheyAreFoundInTextsOfEverySize) {
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::string text;
        std::uint32_t state = seed * 2654435761u + 1;
        for (unsigned i = seed % 300; i > 0; --i) {
            state = state * 1664525u + 1013904223u;
            text += std::string_view("abc,\"\n\r\xff\x8c\0\x8a", 11)[(state >> 24) % 11];
        }
        const char* const end = text.data() + text.size();
        const std::size_t count = ByteMarks::count(text.data(), end, {',', '"', '\n', '\r'});
        ASSERT_EQ(count, expected(text).size()) << seed;
        const std::size_t zeros = ByteMarks::count(text.data(), end, {'\0', '\0', '\0', '\0'});
        const auto ofZero = std::count(text.begin(), text.end(), '\0');
        ASSERT_EQ(zeros, static_cast<std::size_t>(ofZero)) << seed;
    }
}

TEST(ByteMarks, AreTheSameInRegistersOfEveryWidth) {
    constexpr ByteMarks::Kinds kinds = {',', '"', '\n', '\r'};
    ASSERT_NE(findMarksIn(16), nullptr);
    EXPECT_EQ(findMarksIn(8), nullptr);
    for (unsigned registerBytes : {16u, 32u}) {
        FindMarks* const find = findMarksIn(registerBytes);
        if (find == nullptr) continue;  // this machine has none
        EXPECT_EQ(find(std::string(64, 'x').data(), kinds), 0u);
        for (unsigned at = 0; at < 64; ++at) {
            for (char kind : kinds) {
                std::string block(64, 'x');
                block[at] = kind;
                EXPECT_EQ(find(block.data(), kinds), std::uint64_t{1} << at) << registerBytes;
            }
        }
    }
}
