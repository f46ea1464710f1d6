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

TEST(LogCounting, CountsTheSourceOfAClipAtItsOwnRate) {
    const Log log = logOf(
        "Kind,Place,Source In,Record In,FPS\n"
        "Clip,1,00:00:00:47,,48\n"
        "Clip,2,,,\n");
    const LogCounting counting(log, "24");
    EXPECT_EQ(counting.nominal(0, 2), 48);
    EXPECT_EQ(counting.nominal(1, 2), 24);
    EXPECT_EQ(LogCounting(log).nominal(), 48);
}

TEST(LogCounting, CountsTheRecordAsTheLogDoes) {
    const Log log = logOf(
        "Kind,Place,Source In,Record In,Record Out,FPS\n"
        "Clip,1,00:01:00:00,00:01:00:00,00:02:00:00,24\n");
    const LogCounting counting(log, "29.97df");
    EXPECT_EQ(counting.nominal(0, 3), 30);
    EXPECT_TRUE(counting.timecode(0, 3)->dropFrame);
    EXPECT_FALSE(counting.timecode(0, 2)->dropFrame);
}
