#include "formats/timecode/timeline_columns.h"

#include <gtest/gtest.h>

#include "testing/logs.h"

using namespace vek::formats;
using testing_support::logOf;

TEST(TimelineColumns, AreThereWhereEachRowHasAPlace) {
    EXPECT_TRUE(isTimeline(logOf("Kind,Place\nClip,1\nMarker,1.2\n")));
    EXPECT_TRUE(isTimeline(logOf("Name,place,kind\nA,1,\n")));
    EXPECT_FALSE(isTimeline(logOf("Kind,Place\nClip,1\nClip,\n")));
    EXPECT_FALSE(isTimeline(logOf("Kind,Place\nClip,Paris\n")));
    EXPECT_FALSE(isTimeline(logOf("Kind,Name\nClip,1\n")));
}

TEST(TimelineColumns, SayWhatARowIs) {
    EXPECT_EQ(TimelineKind::clip, timelineKind("Clip"));
    EXPECT_EQ(TimelineKind::clip, timelineKind("what nobody says"));
    EXPECT_EQ(TimelineKind::marker, timelineKind("to do"));
    EXPECT_EQ(TimelineKind::note, timelineKind("Keyword"));
    EXPECT_EQ(TimelineKind::transition, timelineKind("Transition"));
    EXPECT_EQ(TimelineKind::track, timelineKind("Track"));
    EXPECT_EQ(TimelineKind::other, timelineKind("Stack"));
}
