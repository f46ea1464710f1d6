#include "formats/edl/short_reels.h"

#include <gtest/gtest.h>

#include <string>

using vek::formats::ShortReels;

TEST(ShortReels, HaveEightCharactersAtMostAndNoBlanks) {
    ShortReels reels;
    EXPECT_EQ("A001", reels.of("A001"));
    EXPECT_EQ("A001C002", reels.of("A001 C002_0815"));
    EXPECT_EQ("REEL", reels.of("\xC3\xA4 \xC3\xB6"));
}

TEST(ShortReels, AreOfOneReelEach) {
    ShortReels reels;
    EXPECT_EQ("A001C002", reels.of("A001C002_1"));
    EXPECT_EQ("A001C003", reels.of("A001C002_2"));
    EXPECT_EQ("A001C002", reels.of("A001C002_1"));
}
