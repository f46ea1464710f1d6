#include <gmock/gmock.h>

#include "formats/timecode/counting.h"
#include "testing/logs.h"

using testing::IsEmpty;
using testing::SizeIs;

using testing_support::logOf;
using vek::Counting;
using namespace vek::formats;

namespace {

Log logSaying(const char* name, const char* value) {
    Log log = logOf("Start,FCM\n01:00:00:00,DROP FRAME\n01:00:00:00,\n");
    log.setParameter(name, value);
    return log;
}

}  // namespace

TEST(LogCounting, ReadsTheRateOfTheLog) {
    const Log log = logSaying("FPS", "29.97df");
    const LogCounting counting(log);
    EXPECT_EQ(counting.nominal(), 30);
    EXPECT_EQ(counting.countingOfAll(), Counting::dropFrame);
    EXPECT_THAT(counting.contradictions(), IsEmpty());
}

TEST(LogCounting, PutsTheRateThatAPersonNamesFirst) {
    const Log log = logSaying("FPS", "29.97df");
    const LogCounting counting(log, "25");
    EXPECT_EQ(counting.nominal(), 25);
}

TEST(LogCounting, KnowsNoRateWhereTheLogHasNone) {
    const Log log = logSaying("Project", "Night");
    EXPECT_EQ(LogCounting(log).nominal(), 0);
    const Log odd = logSaying("FPS", "fast");
    EXPECT_EQ(LogCounting(odd).oddRate(), "fast");
    EXPECT_THAT(LogCounting(odd).contradictions(), SizeIs(1));
}

TEST(LogCounting, LetsEachRowSayHowItCounts) {
    const Log log = logSaying("FPS", "29.97");
    const LogCounting counting(log);
    EXPECT_EQ(counting.counting(0), Counting::dropFrame);
    EXPECT_EQ(counting.counting(1), Counting::unsaid);
    ASSERT_TRUE(counting.timecode(0, 0));
    EXPECT_TRUE(counting.timecode(0, 0)->dropFrame);
    EXPECT_FALSE(counting.timecode(1, 0)->dropFrame);
}

TEST(LogCounting, ReadsTheWordsOfEditLists) {
    EXPECT_EQ(countingOfFcm("DROP FRAME"), Counting::dropFrame);
    EXPECT_EQ(countingOfFcm("NON-DROP FRAME"), Counting::nonDrop);
    EXPECT_EQ(countingOfFcm("non drop frame"), Counting::nonDrop);
    EXPECT_EQ(countingOfFcm("fast"), Counting::unsaid);
}
