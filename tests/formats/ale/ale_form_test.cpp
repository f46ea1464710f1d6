#include <gmock/gmock.h>

#include "formats/ale/ale_form.h"
#include "testing/logs.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using testing_support::logOf;
using namespace vek::formats;

namespace {

AleForm formOf(const Log& log, const WriteStyle& style, Losses& losses) {
    return aleForm(wholeSheet(log), style, "out.ale", losses);
}

}  // namespace

TEST(AleForm, GivesColumnsTheNamesThatEditingSystemsKnowAndTellsIt) {
    Losses losses;
    Log log = logOf("Clip Name,Reel,Start,End\na,A001,01:00:00:00,01:00:01:00\n");
    const AleForm form = formOf(log, {}, losses);
    EXPECT_THAT(form.names, ElementsAre("Name", "Tape", "Start", "End"));
    EXPECT_THAT(losses.messages(), Contains(HasSubstr("\"Reel\" is written as Tape")));
}

TEST(AleForm, PutsWhatAPersonSaysInTheHeading) {
    Losses losses;
    Log log = logOf("Name\na\n");
    WriteStyle style;
    style.rate = "25";
    style.ale.videoFormat = "1080";
    const AleForm form = formOf(log, style, losses);
    ASSERT_THAT(form.heading, SizeIs(2));
    EXPECT_EQ(form.heading[0].name, "VIDEO_FORMAT");
    EXPECT_EQ(form.heading[1].value, "25");
    EXPECT_THAT(losses.messages(), Contains(HasSubstr("expect AUDIO_FORMAT in the heading")));
}

TEST(AleForm, CallsTheOptionsAsWhoeverAskedDoes) {
    Losses losses;
    constexpr Terms terms{.likelyAudio = "the sound's format"};
    Opening opening;
    opening.terms = &terms;
    Log log = logOf("Name\na\n", "log.csv", opening);
    formOf(log, {}, losses);
    EXPECT_THAT(losses.messages(), Contains(HasSubstr("the sound's format")));
}

TEST(AleForm, RenamesNothingOfALogThatWasOne) {
    Losses losses;
    Log log = logOf("Heading\nFIELD_DELIM\tTABS\n\nColumn\nReel\n\nData\nA001\n", "log.ale");
    EXPECT_THAT(formOf(log, {}, losses).names, ElementsAre("Reel"));
    EXPECT_THAT(losses.messages(), IsEmpty());
}

TEST(AleForm, RefusesANameThatAnotherColumnHas) {
    Losses losses;
    Log log = logOf("Name,Reel\na,b\n");
    WriteStyle style;
    style.ale.map = {"Reel=Name"};
    try {
        formOf(log, style, losses);
        FAIL() << "two columns of one name";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind, wrongUsage);
        EXPECT_THAT(failure.text, HasSubstr("there is a column \"Name\" already"));
    }
}
