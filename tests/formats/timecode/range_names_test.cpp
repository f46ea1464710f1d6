#include <gmock/gmock.h>

#include "formats/timecode/range_names.h"

using testing::Contains;
using testing::IsEmpty;
using namespace vek::formats;

TEST(RangeNames, EveryPairFindsItsOtherName) {
    for (RangeKind kind : {RangeKind::source, RangeKind::record, RangeKind::keycode}) {
        for (const RangeName& pair : rangeNames(kind)) {
            EXPECT_EQ(endNamesFor(pair.start).front(), pair.end);
            EXPECT_EQ(startNamesFor(pair.end).front(), pair.start);
        }
    }
}

TEST(RangeNames, OthersGoByTheWordInThem) {
    EXPECT_THAT(endNamesFor("Mix In"), Contains("Mix out"));
    EXPECT_THAT(startNamesFor("end 24P code"), Contains("start 24P code"));
    EXPECT_THAT(endNamesFor("Inside"), IsEmpty());
}
