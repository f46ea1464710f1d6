#include <gmock/gmock.h>

#include "formats/timecode/drop_frame_entry.h"

using testing::Optional;
using namespace vek::formats;

TEST(DropFrameEntry, SaysTheOtherInItsOwnWords) {
    EXPECT_THAT(dropFrameValue("TRUE", false), Optional(std::string("FALSE")));
    EXPECT_THAT(dropFrameValue("No", true), Optional(std::string("Yes")));
    EXPECT_THAT(dropFrameValue("ndf", true), Optional(std::string("df")));
    EXPECT_THAT(dropFrameValue("0", true), Optional(std::string("1")));
}

TEST(DropFrameEntry, StaysWhereItSaysSoAlready) {
    EXPECT_THAT(dropFrameValue(" tRue", true), Optional(std::string(" tRue")));
    EXPECT_EQ(dropFrameValue("maybe", true), std::nullopt);
    EXPECT_EQ(dropFrameValue("", true), std::nullopt);
}
