#include "formats/packed/packed.h"

#include <gtest/gtest.h>

#include <string>

#include "formats/failure.h"

using namespace vek::formats;

namespace {

std::string unpackedText(std::string_view text, const Opening& opening = {}) {
    const auto block = unpacked(text, "day.csv.gz", opening);
    return std::string(block->data(), block->size());
}

const std::string text = "Name,Take\nA,1\n";

}  // namespace

TEST(Packed, TextsComeBackAsTheyWere) {
    std::string large;
    for (int i = 0; i < 20000; ++i) large += std::to_string(i) + ",\n";
    for (const std::string& one : {text, large, std::string(1, '\0')}) {
        EXPECT_TRUE(isPacked(packed(one)));
        EXPECT_EQ(one, unpackedText(packed(one)));
    }
    EXPECT_FALSE(isPacked(text));
}

TEST(Packed, SeveralBehindEachOtherAreOneText) {
    EXPECT_EQ(text + text, unpackedText(packed(text) + packed(text)));
}

TEST(Packed, TextsThatAreCutAnywhereAreRefused) {
    const std::string whole = packed(text);
    for (std::size_t size = 2; size < whole.size(); ++size) {
        EXPECT_THROW(unpackedText(whole.substr(0, size)), Failure) << size;
    }
}

TEST(Packed, TextsOfMoreBytesThanThereMayBeAreRefused) {
    Opening opening;
    opening.limits.bytes = 1000;
    EXPECT_EQ(1000u, unpackedText(packed(std::string(1000, 'x')), opening).size());
    EXPECT_THROW(unpackedText(packed(std::string(1001, 'x')), opening), Failure);
}

TEST(Packed, FilesAreCalledSo) {
    EXPECT_TRUE(isPackedName("day.csv.GZ"));
    EXPECT_FALSE(isPackedName(".gz"));
    EXPECT_EQ("day.csv", withoutPackedEnding("day.csv.gz"));
    EXPECT_EQ("day.csv", withoutPackedEnding("day.csv"));
}
