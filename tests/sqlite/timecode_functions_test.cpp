#include <gmock/gmock.h>

#include "sqlite/session.h"

using testing::HasSubstr;

namespace {

std::string asked(const std::string& expression) {
    return Session().ask("SELECT " + expression);
}

}  // namespace

TEST(TimecodeFunctions, CountFrames) {
    EXPECT_EQ(asked("tc_frames('01:00:00:00'), tc_frames('01:00:00:00', 25)"), "86400|90000\n");
    EXPECT_EQ(asked("tc_frames('01:00:00;00'), tc_frames('01:00:00:00', '29.97df')"),
              "107892|107892\n");
    EXPECT_EQ(asked("tc_frames(' 1:00:00:00 '), tc_frames('01000000', 23.976)"), "86400|86400\n");
    EXPECT_EQ(asked("tc_frames(NULL), tc_frames(''), tc_frames('01:00:00:00', NULL)"),
              "NULL|NULL|NULL\n");
}

TEST(TimecodeFunctions, MakeTimecodes) {
    EXPECT_EQ(asked("tc_text(86400), tc_text(107892, '29.97df'), tc_text(-1), tc_text('25', 25)"),
              "01:00:00:00|01:00:00;00|23:59:59:23|00:00:01:00\n");
    EXPECT_EQ(asked("tc_add('01:00:00:23', 1), tc_add('00:00:00:00', -1, 25), "
                    "tc_add('01000000', '+00:00:02:00'), tc_add('00:00:59;29', 1, '29.97df')"),
              "01:00:01:00|23:59:59:24|01000200|00:01:00;02\n");
}

TEST(TimecodeFunctions, TellFootage) {
    EXPECT_EQ(asked("feet(20), feet('20'), feet(480, 16), feet(22, '35-3')"),
              "1+04|1+04|12+00|1+00.2\n");
    EXPECT_EQ(asked("feet('KJ 230004 0213+08', 'KJ 230004 0214+00'), feet('KJ 230004 0213+08'), "
                    "feet('KJ 230004 0213+08', 'KJ 230004 0214+00', '16'), feet('', 'x')"),
              "0+08|213+08|0+32|NULL\n");
}

TEST(TimecodeFunctions, SayWhatTheyFoundAndWhatTheyExpected) {
    EXPECT_THAT(asked("tc_frames('x')"),
                HasSubstr("tc_frames: found \"x\", expected a timecode such as 01:00:00:00"));
    EXPECT_THAT(asked("tc_frames(12)"), HasSubstr("found \"12\""));
    EXPECT_THAT(asked("tc_frames(x'00')"), HasSubstr("a blob"));
    EXPECT_THAT(asked("tc_frames('01:00:00:24')"), HasSubstr("a frame that is there at 24"));
    EXPECT_THAT(asked("tc_frames('00:01:00;00')"), HasSubstr("at 29.97df"));
    EXPECT_THAT(asked("tc_frames('01:00:00:00', 'fast')"), HasSubstr("a rate such as"));
    EXPECT_THAT(asked("tc_add('01:00:00:00', 'x')"), HasSubstr("a number of frames"));
    EXPECT_THAT(asked("tc_add('01:00:00:00', 9223372036854775807)"), HasSubstr("error: "));
    EXPECT_THAT(asked("tc_text(1, 1000)"), HasSubstr("error: "));
    EXPECT_THAT(asked("feet('KJ 230004 0213+08', 'KK 230004 0214+00')"), HasSubstr("same roll"));
    EXPECT_THAT(asked("feet(-1)"), HasSubstr("0 or more"));
    EXPECT_THAT(asked("feet('a', 'b', '17')"), HasSubstr("a gauge: 35"));
    EXPECT_THAT(asked("feet(9223372036854775807)"), HasSubstr("error: "));
}

TEST(TimecodeFunctions, StandInIndexes) {
    Session session;
    EXPECT_EQ(session.ask("CREATE TABLE t(c); CREATE INDEX i ON t(tc_frames(c)); INSERT INTO t "
                          "VALUES ('00:00:01:00'); SELECT c FROM t WHERE tc_frames(c) = 24"),
              "00:00:01:00\n");
}
