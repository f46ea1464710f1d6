#include <gmock/gmock.h>

#include <cstdint>
#include <limits>

#include "formats/timecode/exact_time.h"

using vek::FrameRate;
using vek::formats::ExactTime;
using vek::formats::rateNear;
using vek::formats::rateOfFrame;

namespace {

constexpr FrameRate ntsc{30, true};

}  // namespace

TEST(ExactTime, ReadsFractionsAndDecimals) {
    EXPECT_EQ(ExactTime::of("1001/30000s"), ExactTime(1001, 30000));
    EXPECT_EQ(ExactTime::of("2.5s"), ExactTime(5, 2));
    EXPECT_EQ(ExactTime::of("3600"), ExactTime(3600, 1));
    for (const char* other : {"", "s", "1/0s", "one", "1/2/3s"}) {
        EXPECT_FALSE(ExactTime::of(other).isKnown()) << other;
    }
}

TEST(ExactTime, CountsWithoutRounding) {
    const ExactTime third(1, 3);
    EXPECT_EQ(third + third + third, ExactTime(1, 1));
    EXPECT_EQ(ExactTime(1, 2) - ExactTime(1, 3), ExactTime(1, 6));
    EXPECT_EQ(ExactTime(2, 4), ExactTime(1, 2));
    EXPECT_LT(ExactTime(1001, 30000), ExactTime(1, 29));
}

TEST(ExactTime, KnowsNothingOfWhatDoesNotFit) {
    const ExactTime most(std::numeric_limits<std::int64_t>::max(), 1);
    EXPECT_FALSE((most + most).isKnown());
    EXPECT_FALSE((most * most).isKnown());
    EXPECT_FALSE((ExactTime(1, 1) / ExactTime(0, 1)).isKnown());
    EXPECT_FALSE((ExactTime::unknown() + ExactTime(1, 1)).isKnown());
}

TEST(ExactTime, TellsTheFrameThatATimeIsIn) {
    const ExactTime start = ExactTime::ofFrames(1800, ntsc);
    EXPECT_EQ(start, ExactTime(60060 * 1000, 1000 * 1000));
    ASSERT_TRUE(start.frames(ntsc));
    EXPECT_EQ(start.frames(ntsc)->whole, 1800);
    EXPECT_TRUE(start.frames(ntsc)->isExact);
    const auto between = (start + ExactTime(1, 100000)).frames(ntsc);
    EXPECT_EQ(between->whole, 1800);
    EXPECT_FALSE(between->isExact);
    EXPECT_EQ((ExactTime(0, 1) - ExactTime(1, 100)).frames(ntsc)->whole, -1);
}

TEST(ExactTime, FindsTheRateOfAFrame) {
    ASSERT_TRUE(rateOfFrame(ExactTime(1001, 30000)));
    EXPECT_TRUE(rateOfFrame(ExactTime(1001, 30000))->isAsFastAs(ntsc));
    EXPECT_EQ(rateOfFrame(ExactTime(1, 25))->nominal, 25);
    EXPECT_FALSE(rateOfFrame(ExactTime(0, 1)));
    EXPECT_TRUE(rateNear(29.97)->isAsFastAs(ntsc));
    EXPECT_FALSE(rateNear(24)->isSlowed);
}
