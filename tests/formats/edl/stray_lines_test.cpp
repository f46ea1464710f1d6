#include "formats/edl/stray_lines.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "testing/logs.h"

using testing::ElementsAre;
using testing_support::logOf;

namespace {

std::vector<std::string> straysOf(const std::string& front) {
    const std::string list = front +
                             "001  AX  V  C  01:00:00:00 01:00:01:00 01:00:00:00 "
                             "01:00:01:00\n* FROM CLIP NAME: A\n";
    std::vector<std::string> found;
    vek::formats::tellStrayLines(logOf(list, "cut.edl"),
                                 [&](const vek::Problem& one) { found.push_back(one.found); });
    return found;
}

}  // namespace

TEST(StrayLines, StandInFrontOfAllEventsAndSayNothingOfThem) {
    EXPECT_THAT(straysOf("TITLE: Day\nFCM: NON-DROP FRAME\nwhat is this\n* a comment\n"),
                ElementsAre("\"what is this\""));
    EXPECT_THAT(straysOf("TITLE: Day\n* a comment\n"), ElementsAre());
}
