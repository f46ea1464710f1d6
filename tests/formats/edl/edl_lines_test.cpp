#include <gmock/gmock.h>

#include <numeric>

#include "formats/edl/edl_lines.h"

using testing::Each;
using testing::Optional;
using testing::SizeIs;
using namespace vek::formats;

namespace {

constexpr const char* cut =
    "001  A001C003 V     C        01:00:00:00 01:00:02:00 10:00:00:00 10:00:02:00";

}  // namespace

TEST(EdlLines, ReadsAnEventAndWritesItAgain) {
    EdlEvent event;
    ASSERT_TRUE(parseEdlEvent(cut, event));
    EXPECT_EQ(event[edlReel], "A001C003");
    EXPECT_EQ(event[edlKind], "C");
    EXPECT_EQ(event[edlLength], "");
    EXPECT_EQ(event[edlRecordOut], "10:00:02:00");
    EdlEvent again;
    ASSERT_TRUE(parseEdlEvent(edlEventLine(event), again));
    EXPECT_EQ(again, event);
}

TEST(EdlLines, ReadsWipesKeysAndReelsWithBlanks) {
    EdlEvent event;
    ASSERT_TRUE(parseEdlEvent(
        "2 DAY ONE V W001 025 01:00:00:00 01:00:02:00 10:00:00:00 10:00:02:00", event));
    EXPECT_EQ(event[edlReel], "DAY ONE");
    EXPECT_EQ(event[edlKind], "W001");
    EXPECT_EQ(event[edlLength], "025");
    ASSERT_TRUE(
        parseEdlEvent("003 AX V K B 01:00:00:00 01:00:02:00 10:00:00:00 10:00:02:00", event));
    EXPECT_EQ(event[edlKind], "K B");
}

TEST(EdlLines, TellsLinesThatBeginLikeAnEventFromEvents) {
    EdlEvent event;
    EXPECT_FALSE(parseEdlEvent("001 A V C 01:00:00:00 01:00:02:00", event));
    EXPECT_TRUE(isOddEdlEvent("001 A V C 01:00:00:00 01:00:02:00"));
    EXPECT_FALSE(isOddEdlEvent("* FROM CLIP NAME: 12"));
}

TEST(EdlLines, FindsWhatStandsBehindAName) {
    EXPECT_THAT(edlValue("* FROM CLIP NAME:  S12 T3", "FROM CLIP NAME"),
                Optional(std::string_view("S12 T3")));
    EXPECT_EQ(edlValue("* TO CLIP NAME: x", "FROM CLIP NAME"), std::nullopt);
    EXPECT_THAT(edlCounting("FCM: DROP FRAME"), Optional(std::string_view("DROP FRAME")));
    EXPECT_EQ(edlCounting("* FCM: DROP FRAME"), std::nullopt);
}

TEST(EdlLines, TellsTheSpeedOfAReel) {
    EXPECT_TRUE(isEdlMotion("M2   A001       050.0  01:00:00:00"));
    EXPECT_TRUE(isEdlMotionOf("M2   A001       050.0  01:00:00:00", "A001"));
    EXPECT_FALSE(isEdlMotionOf("M2   A001       050.0  01:00:00:00", "A002"));
}

TEST(EdlLines, CutsCommentsIntoPiecesThatGoTogetherAgain) {
    std::string comments;
    for (int i = 0; i < 500; ++i) comments += "* comment number " + std::to_string(i) + "\n";
    comments += std::string(9000, 'x');
    const std::vector<std::string> pieces = edlPieces(comments);
    EXPECT_THAT(pieces, Each(SizeIs(testing::Le(4094u))));
    std::string again;
    for (const std::string& piece : pieces) addEdlPiece(again, piece);
    EXPECT_EQ(again, comments);
}
