#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "browse/opened.h"
#include "formats/text/width.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* theLog =
    "Name,Scene,Notes\n"
    "c,3,\"with, comma\"\n"
    "a,1,\n"
    "b,2,x\n";
constexpr const char* edits = ".log.csv.vek-edits";

}  // namespace

TEST(BrowseSheet, NothingIsWrittenBeforeOneSaysSo) {
    Opened opened(theLog);
    opened.press("d j t e x Enter u");
    EXPECT_EQ(theLog, opened.read());
}

TEST(BrowseSheet, WhatWasNotEditedIsSavedAsItCame) {
    Opened opened("Name;Scene\r\n\"c\";  3 \r\n\r\na;1\r\nb;2\r\n");
    opened.press("G e ! Enter ^S");
    EXPECT_EQ("Name;Scene\r\n\"c\";  3 \r\n\r\na;1\r\nb!;2\r\n", opened.read());
    EXPECT_THAT(opened.screen(), HasSubstr("saved"));
}

TEST(BrowseSheet, RowsThatCameAndWentAreSavedInTheirPlaces) {
    Opened opened(theLog);
    opened.press("d o e n Enter ^S");
    EXPECT_EQ("Name,Scene,Notes\na,1,\nn,,\nb,2,x\n", opened.read());
}

TEST(BrowseSheet, UndoGoesBackBeyondASaveAndIsSavedAgain) {
    Opened opened(theLog);
    opened.press("d ^S u ^S");
    EXPECT_EQ(theLog, opened.read());
    opened.press("u");
    EXPECT_THAT(opened.screen(), HasSubstr("nothing to undo"));
}

TEST(BrowseSheet, TagsAreTheFiles) {
    Opened opened(theLog);
    opened.press("j t ^S");
    EXPECT_EQ("Name,Scene,Notes,Tag\nc,3,\"with, comma\",\na,1,,1\nb,2,x,\n", opened.read());
    opened.press("u ^S");
    EXPECT_EQ(theLog, opened.read());
}

TEST(BrowseSheet, ARenamedColumnIsSaved) {
    Opened opened(theLog);
    opened.press("l r 2 Enter ^S");
    EXPECT_THAT(opened.read(), HasSubstr("Name,Scene2,Notes\n"));
    opened.press("r Backspace Backspace Backspace Backspace Backspace Backspace N a m e Enter");
    EXPECT_THAT(opened.screen(), HasSubstr("there is a column"));
}

TEST(BrowseSheet, AFileThatWasChangedMeanwhileIsAskedAbout) {
    Opened opened(theLog);
    opened.press("d");
    opened.write("log.csv", "Name\nanother\nlog\nwith lines\n");
    opened.press("^S");
    EXPECT_THAT(opened.screen(), HasSubstr("changed by another program"));
    opened.press("x");
    EXPECT_THAT(opened.read(), HasSubstr("another"));
    opened.press("^S o");
    EXPECT_EQ("Name,Scene,Notes\na,1,\nb,2,x\n", opened.read());
}

TEST(BrowseSheet, AFileThatIsThereIsNotOverwrittenUnasked) {
    Opened opened(theLog);
    opened.write("there.csv", "mine");
    opened.press("a");
    opened.type(opened.folder.file("there.csv").string());
    opened.press("Enter x");
    EXPECT_EQ("mine", opened.read("there.csv"));
}

TEST(BrowseSheet, LeavingAsksAboutWhatIsNotSaved) {
    Opened opened(theLog);
    opened.press("d q");
    EXPECT_THAT(opened.screen(), HasSubstr("not saved"));
    opened.press("x");
    EXPECT_FALSE(opened.browser->isOver());
    opened.press("q d");
    EXPECT_TRUE(opened.browser->isOver());
    EXPECT_EQ(theLog, opened.read());
    EXPECT_FALSE(opened.has(edits));
}

TEST(BrowseSheet, LeavingCanSave) {
    Opened opened(theLog);
    opened.press("d q s");
    EXPECT_TRUE(opened.browser->isOver());
    EXPECT_EQ("Name,Scene,Notes\na,1,\nb,2,x\n", opened.read());
}

TEST(BrowseSheet, EditsOfAProgramThatWasKilledAreOfferedAndRecovered) {
    Opened opened(theLog);
    opened.press("e \\ Enter j d t k o r 1 Enter u g");
    const auto before = opened.sheet().shownRows().size();
    const std::string seen = opened.screen();
    struct stat status = {};
    ::stat(opened.folder.file(edits).string().c_str(), &status);
    EXPECT_EQ(0600u, status.st_mode & 0777u);
    opened.forget();
    opened.start();
    EXPECT_THAT(opened.screen(), HasSubstr("(r)ecover"));
    opened.press("r");
    EXPECT_EQ(before, opened.sheet().shownRows().size());
    opened.press("g");
    const std::string again = opened.screen();
    EXPECT_EQ(seen.substr(seen.find('\n')), again.substr(again.find('\n')));
    EXPECT_TRUE(opened.has(edits));
    opened.press("^S");
    EXPECT_FALSE(opened.has(edits));
}

TEST(BrowseSheet, ThatEditsAreBeingRecoveredIsSaidBefore) {
    Opened opened(theLog);
    opened.press("d");
    opened.forget();
    opened.start();
    opened.browser->press("r");
    EXPECT_THAT(opened.screen(), HasSubstr("recovering ..."));
    opened.settle();
    EXPECT_THAT(opened.screen(), HasSubstr("1 change recovered"));
}

TEST(BrowseSheet, ThatTaggedRowsAreBeingDeletedIsSaidBefore) {
    Opened opened(theLog);
    opened.press("t t");
    opened.browser->press("D");
    EXPECT_THAT(opened.screen(), HasSubstr("looking at tags ..."));
    opened.browser->work();
    EXPECT_THAT(opened.screen(), HasSubstr("deleting ..."));
    opened.settle();
    EXPECT_THAT(opened.screen(), HasSubstr("2 rows deleted"));
    EXPECT_EQ(1u, opened.shown().size());
}

TEST(BrowseSheet, EditsOfABrowserThatLivesAreNotOfferedToASecondOneNorRemovedByIt) {
    Opened first(theLog);
    first.press("d");
    {
        vek::browse::Browser second{vek::formats::Opening()};
        second.add(vek::formats::openLog(first.path(), {}));
        const std::string seen = textOf(second.picture(200, 24));
        EXPECT_THAT(seen, HasSubstr("another vek browse edits this log"));
        EXPECT_THAT(seen, Not(HasSubstr("(r)ecover")));
        second.press("j");
        second.press("d");
        EXPECT_THAT(textOf(second.picture(300, 24)), HasSubstr("is lost if"));
        second.press("q");
        second.press("d");
        EXPECT_TRUE(second.isOver());
    }
    first.forget();
    first.start();
    EXPECT_THAT(first.screen(), HasSubstr("(r)ecover"));
    first.press("r");
    EXPECT_THAT(first.shown(), ElementsAre("a", "b"));
}

TEST(BrowseSheet, EditsOfABrowserThatWasKilledSurviveASecondOneThatWasOpenMeanwhile) {
    Opened first(theLog);
    first.press("d");
    vek::browse::Browser second{vek::formats::Opening()};
    second.add(vek::formats::openLog(first.path(), {}));
    first.forget();
    for (const char* key : {"j", "d", "q", "d"}) second.press(key);
    EXPECT_TRUE(second.isOver());
    first.start();
    EXPECT_THAT(first.screen(), HasSubstr("(r)ecover"));
}

TEST(BrowseSheet, ARecoveryThatWasKilledIsOfferedAgainWholeAndLeavesNothingBeside) {
    Opened opened(theLog);
    opened.press("d d");
    opened.forget();
    std::filesystem::rename(opened.folder.file(edits),
                            opened.folder.file(edits + std::string("~")));
    opened.write(edits, "half of i");
    opened.start();
    EXPECT_THAT(opened.screen(), HasSubstr("(r)ecover"));
    EXPECT_FALSE(opened.has(edits + std::string("~")));
    opened.press("r");
    EXPECT_EQ(1u, opened.shown().size());
    EXPECT_FALSE(opened.has(edits + std::string("~")));
    EXPECT_TRUE(opened.has(edits));
}

TEST(BrowseSheet, EditsOfAnotherStateOfTheFileAreNotMade) {
    Opened opened(theLog);
    opened.press("d");
    opened.forget();
    opened.write("log.csv", "Name\nanother one\n");
    opened.start();
    EXPECT_THAT(opened.screen(), HasSubstr("another state"));
    opened.press("r");
    EXPECT_THAT(opened.shown(), ElementsAre("another one"));
    EXPECT_TRUE(opened.has(edits));
}

TEST(BrowseSheet, ARecoveryFileThatIsALinkIsNotWrittenThrough) {
    Opened opened(theLog);
    opened.write("precious", "mine");
    std::filesystem::create_symlink(opened.folder.file("precious"), opened.folder.file(edits));
    opened.press("d");
    EXPECT_EQ("mine", opened.read("precious"));
    EXPECT_THAT(opened.screen(300), HasSubstr("is lost if"));
}

TEST(BrowseSheet, EachFilterIsOneMoreOnThePathAndOneKeyTakesItOff) {
    Opened opened(theLog);
    opened.press("f");
    opened.type("Scene>=2");
    opened.press("Enter");
    EXPECT_THAT(opened.shown(), ElementsAre("c", "b"));
    opened.press("G =");
    EXPECT_THAT(opened.shown(), ElementsAre("b"));
    EXPECT_THAT(opened.screen(), HasSubstr("> Scene>=2 > Name==b"));
    opened.press("Backspace");
    EXPECT_THAT(opened.shown(), ElementsAre("c", "b"));
    opened.press("Backspace s");
    EXPECT_THAT(opened.shown(), ElementsAre("a", "b", "c"));
}

TEST(BrowseSheet, AConditionThatCannotBeReadIsSaidAndChangesNothing) {
    Opened opened(theLog);
    opened.press("f");
    opened.type("Scen=1");
    opened.press("Enter");
    EXPECT_THAT(opened.screen(), HasSubstr("did you mean Scene?"));
    EXPECT_EQ(3u, opened.shown().size());
}

TEST(BrowseSheet, ANewRowInAChosenAndSortedViewIsSeen) {
    Opened opened(theLog);
    opened.press("f");
    opened.type("Scene>=2");
    opened.press("Enter s o");
    EXPECT_THAT(opened.shown(), ElementsAre("b", "c", ""));
    EXPECT_EQ(2u, opened.sheet().place());
    opened.press("u");
    EXPECT_THAT(opened.shown(), ElementsAre("b", "c"));
}

TEST(BrowseSheet, TaggedRowsAreCopiedToAnotherLogByTheNamesOfColumns) {
    Opened opened(theLog);
    opened.write("to.csv", "Scene,Name\n9,z\n");
    opened.press("t ^O");
    opened.type(opened.folder.file("to.csv").string());
    opened.press("Enter Tab y Tab");
    EXPECT_THAT(opened.shown(1), ElementsAre("z", "c"));
    opened.press("^S");
    EXPECT_EQ("Scene,Name\n9,z\n3,c\n", opened.read("to.csv"));
}

TEST(BrowseSheet, ControlCharactersAreShownEscaped) {
    Opened opened("Name\n\"a\x1b[31mb\"\n");
    EXPECT_THAT(opened.screen(), HasSubstr("a\\x1b[31mb"));
    EXPECT_THAT(opened.screen(), Not(HasSubstr("\x1b")));
}

TEST(BrowseSheet, NoLineIsWiderThanTheScreen) {
    Opened opened("Name,Notes\n\xE6\x97\xA5\xE6\x9C\xAC,e\xCC\x81 long long long text\nb,c\n");
    for (std::size_t width : {10, 40, 80, 200}) {
        for (const auto& line : opened.browser->picture(width, 12).lines) {
            for (const auto& piece : line) {
                EXPECT_LE(piece.x + vek::formats::displayWidth(piece.text), width);
            }
        }
    }
}

TEST(BrowseSheet, ALogOfManyColumnsIsScrolledSidewaysAndTheFirstStays) {
    std::string heading = "First", row = "one";
    for (int i = 0; i < 40; ++i) {
        heading += ",Column" + std::to_string(i);
        row += ",value" + std::to_string(i);
    }
    Opened opened(heading + "\n" + row + "\n");
    opened.press("$");
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("value39"));
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("First"));
    opened.press("Home");
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("Column0"));
}

TEST(BrowseSheet, ClicksAndWheelsMove) {
    Opened opened(theLog);
    opened.screen();
    opened.browser->click(12, 3);
    EXPECT_EQ(1u, opened.sheet().place());
    opened.browser->turn(3);
    EXPECT_EQ(2u, opened.sheet().place());
}

// While a save waits for another program it does not know yet what that one writes.
TEST(BrowseSheet, WhatAnotherProgramWritesWhileASaveWaitsForItIsNotWrittenOver) {
    Opened opened(theLog);
    opened.press("d");
    FileReplacement other;
    ASSERT_TRUE(other.find(opened.path().c_str()) && other.hold(0) && other.open());
    ASSERT_TRUE(other.write("Name\nanother\n") && other.complete());
    std::thread writer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        EXPECT_TRUE(other.commit());
    });
    opened.press("^S");
    writer.join();
    EXPECT_THAT(opened.screen(200), HasSubstr("was changed by another program"));
    EXPECT_EQ("Name\nanother\n", opened.read());
    EXPECT_TRUE(opened.sheet().isUnsaved());
}

TEST(BrowseSheet, ARecoveryFileIsItsOwnersAloneFromTheFirstMomentOn) {
    const mode_t before = ::umask(0);
    Opened opened(theLog);
    opened.press("d");
    ::umask(before);
    struct stat status = {};
    ASSERT_EQ(0, ::lstat(opened.folder.file(edits).c_str(), &status));
    EXPECT_EQ(0600u, status.st_mode & 07777);
}

// Only root can give files to others; those of anybody else stay their own.
TEST(BrowseSheet, EditsThatSomebodyElsePutThereAreNotOffered) {
    const bool isOthers = ::geteuid() == 0;
    Opened opened(theLog);
    opened.press("d");
    opened.forget();
    const int given = ::lchown(opened.folder.file(edits).c_str(), 2001, 2001);
    EXPECT_EQ(isOthers, given == 0);
    opened.start();
    EXPECT_EQ(isOthers, opened.screen().find("ecover") == std::string::npos);
    opened.press("x d ^S");
    EXPECT_EQ(isOthers, opened.has(edits));
}
