#include "formats/checking/findings.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "testing/logs.h"

using testing::ElementsAre;
using testing_support::logOf;
using namespace vek::formats;

namespace {

Findings findingsIn(const std::string& text, const std::string& name = "log.csv") {
    const Log log = logOf(text, name);
    Input input(name, text, {});
    return findingsOf(log, input, *vek::gaugeNamed("35"));
}

// "line:column: what was found".
std::vector<std::string> told(const Findings& findings) {
    std::vector<std::string> lines;
    for (const vek::Problem& one : findings.problems) {
        lines.push_back(std::to_string(one.line) + ":" + one.column + ": " + one.found);
    }
    return lines;
}

}  // namespace

TEST(Findings, AreNoneInALogThatIsRight) {
    const Findings findings = findingsIn("Name,Start,End\nA,01:00:00:00,01:00:01:00\n");
    EXPECT_THAT(told(findings), ElementsAre());
    EXPECT_EQ(0u, findings.problemCount());
}

TEST(Findings, ComeInTheOrderOfLines) {
    const Findings findings = findingsIn(
        "Name,Start,End\nA,01:00:00:00,01:00:01:00\n"
        "B,01:00:02:00,01:00:01:00\n "
        "C,01:00:00:00,soon\nD,01:00:00:00,01:00:01:00\n");
    EXPECT_THAT(told(findings),
                ElementsAre("3:End: \"01:00:01:00\"", "4:Name: \" C\"", "4:End: \"soon\""));
}

TEST(Findings, CountRemarksForThemselves) {
    const Findings findings = findingsIn("Name,Start,End\nA,23:59:59:00,00:00:01:00\n");
    ASSERT_EQ(1u, findings.problems.size());
    EXPECT_TRUE(isRemark(findings.problems[0]));
    EXPECT_EQ(1u, findings.remarks);
    EXPECT_EQ(0u, findings.problemCount());
}

TEST(Findings, OfATableFileAreThoseOfItsTextToo) {
    const Findings findings = findingsIn(
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"1\",\"1\"\n\"0\",\"0\"\n\"A\",\"B\"\n\" "
        "x\",\"y\"\n",
        "log.vek");
    EXPECT_THAT(told(findings), testing::Contains("6:A: \" x\""));
}

TEST(Findings, OfAnEditListAreItsStrayLinesToo) {
    const Findings findings = findingsIn(
        "TITLE: Day\nwhat is this\n"
        "001  AX  V  C  01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n",
        "cut.edl");
    EXPECT_THAT(told(findings), testing::Contains("3:Comments Before: \"what is this\""));
}
