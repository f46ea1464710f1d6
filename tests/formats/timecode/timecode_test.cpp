#include <gmock/gmock.h>

#include <vekdb/formats/keycode.h>
#include <vekdb/formats/timecode.h>

namespace {

std::string framesLater(const char* text, std::int64_t frames, int nominal) {
    const vek::Timecode code = *vek::parseTimecode(text);
    return vek::timecodeText(vek::framesOf(code, nominal) + frames, nominal, code.dropFrame);
}

}  // namespace

TEST(TimecodeArithmetic, LeavesOutTheFramesThatDropFrameCountingDoes) {
    EXPECT_EQ(framesLater("00:00:59;29", 1, 30), "00:01:00;02");
    EXPECT_EQ(framesLater("00:09:59;29", 1, 30), "00:10:00;00");
    EXPECT_EQ(framesLater("00:00:59:29", 1, 30), "00:01:00:00");
    EXPECT_EQ(framesLater("00:00:59;59", 1, 60), "00:01:00;04");
}

TEST(TimecodeArithmetic, GoesThereAndBackForEveryFrameOfADay) {
    for (int nominal : {24, 25, 30}) {
        const bool drops = nominal == 30;
        for (std::int64_t frame = 0; frame < vek::framesInDay(nominal, drops); frame += 97) {
            const std::string text = vek::timecodeText(frame, nominal, drops);
            ASSERT_EQ(vek::framesOf(*vek::parseTimecode(text), nominal), frame) << text;
        }
    }
}

TEST(TimecodeArithmetic, AnswersRatesThatAreNoneWithoutHarm) {
    EXPECT_EQ(vek::timecodeText(100, 0, false), "");
    EXPECT_EQ(vek::timecodeText(100, -25, true), "");
    EXPECT_EQ(vek::timecodeText(-1, 25, false), "");
    EXPECT_EQ(vek::parseFrameRate("0"), std::nullopt);
    EXPECT_EQ(vek::parseFrameRate("230540500.847000000"), std::nullopt);
}

TEST(TimecodeArithmetic, ReadsFrameRates) {
    EXPECT_EQ(vek::rateText(*vek::parseFrameRate("30000/1001 DF")), "29.97df");
    EXPECT_EQ(vek::parseFrameRate("24 df"), std::nullopt);
}

TEST(KeycodeArithmetic, CountsPerforationsBetweenFrames) {
    const vek::Gauge& gauge = *vek::gaugeNamed("35");
    auto from = vek::parseKeycode("KJ 230004 0213+08");
    auto to = vek::parseKeycode("KJ 230004 0214+00");
    EXPECT_EQ(vek::perforationsBetween(*from, *to, gauge), 32);
    EXPECT_EQ(vek::perforationsBetween(*to, *from, gauge), std::nullopt);
    EXPECT_EQ(vek::footageText(64 + 4, gauge), "1+01");
    EXPECT_EQ(vek::gaugeNamed("8"), nullptr);
}
