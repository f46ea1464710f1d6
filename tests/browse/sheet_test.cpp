#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include <ctime>

#include "browse/opened.h"
#include "formats/reading/open_log.h"
#include "formats/text/width.h"
#include "tools/vek/browse/slice.h"

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

TEST(BrowseSheet, TheSpeedOfAnEventGoesAlongWithItsReelAndComesBackWithIt) {
    const std::string before =
        "TITLE: a\n"
        "001  A        V     C        01:00:00:00 01:00:02:00 10:00:00:00 10:00:01:00\n"
        "M2   A              048.0                01:00:00:00\n";
    std::string after = before;
    for (std::size_t at = after.find(" A "); at != after.npos; at = after.find(" A ", at)) {
        after.replace(at, 3, " B ");
    }
    Opened opened(before, "log.edl");
    opened.press("l e Backspace B Enter ^S");
    EXPECT_EQ(after, opened.read());
    opened.press("u ^S");
    EXPECT_EQ(before, opened.read());
    opened.press("e Backspace C Enter e Backspace B Enter ^S");
    EXPECT_EQ(after, opened.read());
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

TEST(BrowseSheet, NamesThatChangePlacesAreSaved) {
    Opened opened(theLog);
    const auto rename = [&](unsigned column, const std::string& name) {
        opened.sheet().renameColumn(column, name);
        opened.settle();
    };
    rename(0, "other");
    rename(1, "Name");
    rename(0, "Scene");
    opened.press("^S");
    EXPECT_THAT(opened.read(), HasSubstr("Scene,Name,Notes\n"));
    EXPECT_EQ(1u, opened.sheet().log().findColumn("Name"));
}

TEST(BrowseSheet, AColumnThatBeganARangeIsAskedByItsTextOnceItIsRenamed) {
    Opened opened("Reel,Start time,End time\nA,01,05\nB,11,15\n");
    opened.sheet().renameColumn(1, "Other");
    opened.press("f");
    opened.type("Other=11");
    opened.press("Enter");
    EXPECT_THAT(opened.shown(), ElementsAre("B"));
    opened.press("u f");
    opened.type("Start time=13");
    opened.press("Enter");
    EXPECT_THAT(opened.shown(), ElementsAre("B"));
}

TEST(BrowseSheet, OfSeveralLogsTheFirstIsShown) {
    Opened opened(theLog);
    opened.write("second.csv", "Reel\nB1\n");
    const std::string second = opened.folder.file("second.csv").string();
    opened.browser->add(vek::formats::openLog(second, {}), vek::browse::markOf(second));
    EXPECT_EQ("Reel", opened.sheet().log().columnName(0));
    opened.browser->goToFirst();
    EXPECT_EQ("Name", opened.sheet().log().columnName(0));
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

TEST(BrowseSheet, AFileThatWasChangedWhileItWasReadIsAskedAbout) {
    Opened opened(theLog);
    const auto mark = vek::browse::markOf(opened.path());
    auto log = vek::formats::openLog(opened.path(), {});
    const std::string changed = "Name,Scene,Notes\nfirst,0,\n" + opened.read().substr(17);
    opened.write("log.csv", changed);
    opened.browser = std::make_unique<vek::browse::Browser>(vek::formats::Opening());
    opened.browser->add(std::move(log), mark);
    opened.press("d ^S");
    EXPECT_THAT(opened.screen(), HasSubstr("changed by another program"));
    opened.press("x");
    EXPECT_EQ(changed, opened.read());
}

TEST(BrowseSheet, AFileThatIsThereIsNotOverwrittenUnasked) {
    Opened opened(theLog);
    opened.write("there.csv", "mine");
    opened.press("a");
    opened.type(opened.folder.file("there.csv").string());
    opened.press("Enter x");
    EXPECT_EQ("mine", opened.read("there.csv"));
}

TEST(BrowseSheet, SavingAllUnderTheLogsOwnNameIsSavingIt) {
    Opened opened(theLog);
    std::filesystem::create_symlink("log.csv", opened.folder.file("link.csv"));
    for (const char* name : {"log.csv", "link.csv"}) {
        opened.press("d a");
        opened.type(opened.folder.file(name).string());
        opened.press("Enter");
        EXPECT_FALSE(opened.sheet().isUnsaved()) << name;
        EXPECT_FALSE(opened.has(edits)) << name;
        EXPECT_FALSE(opened.sheet().isChangedOnDisk()) << name;
    }
    EXPECT_EQ("Name,Scene,Notes\nb,2,x\n", opened.read());
    EXPECT_TRUE(std::filesystem::is_symlink(opened.folder.file("link.csv")));
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

TEST(BrowseSheet, ThatALogIsBeingSavedIsSaidBeforeAndUntilItIs) {
    Opened opened(theLog);
    opened.press("d");
    opened.browser->press("^S");
    EXPECT_TRUE(opened.browser->isBusy());
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("saving ..."));
    EXPECT_EQ(theLog, opened.read());
    opened.browser->press("j");
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("saving ..."));
    opened.settle();
    EXPECT_NE(theLog, opened.read());
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("row 2 of"));
    opened.press("d a");
    opened.type(opened.folder.file("copy.csv").string());
    opened.browser->press("Enter");
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("saving ..."));
    opened.settle();
    EXPECT_THAT(opened.screen(80, 12), HasSubstr("saved as"));
    opened.press("q");
    opened.browser->press("s");
    EXPECT_THAT(opened.screen(40, 12), HasSubstr("saving ..."));
    opened.settle();
    EXPECT_TRUE(opened.browser->isOver());
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

namespace {

// A browser more of the same log.
std::unique_ptr<vek::browse::Browser> another(const Opened& opened) {
    auto browser = std::make_unique<vek::browse::Browser>(vek::formats::Opening());
    browser->add(vek::formats::openLog(opened.path(), {}), vek::browse::markOf(opened.path()));
    return browser;
}

}  // namespace

TEST(BrowseSheet, EachOfTwoBrowsersOfALogKeepsItsOwnEdits) {
    Opened first(theLog);
    first.press("d");
    auto second = another(first);
    for (const char* key : {"j", "d", "d"}) second->press(key);
    second.reset();
    first.forget();
    first.start();
    EXPECT_THAT(first.screen(200), HasSubstr(".vek-edits holds edits not saved: (r)ecover or"));
    first.press("r");
    EXPECT_THAT(first.shown(), ElementsAre("a", "b"));
    EXPECT_THAT(first.screen(200), HasSubstr("-2 holds edits not saved: (r)ecover in a sheet"));
    first.press("r");
    EXPECT_EQ(2u, first.browser->sheetCount());
    EXPECT_THAT(first.shown(), ElementsAre("c"));
    first.press("Tab");
    EXPECT_THAT(first.shown(), ElementsAre("a", "b"));
    first.forget();
    first.start();
    first.press("d y d y j d ^S");
    EXPECT_EQ("Name,Scene,Notes\nc,3,\"with, comma\"\nb,2,x\n", first.read());
    EXPECT_FALSE(first.has(edits));
    EXPECT_FALSE(first.has(edits + std::string("-2")));
}

TEST(BrowseSheet, EditsThatNobodyWantedYetAreLeftAndThoseMadeThenAreKept) {
    Opened opened(theLog);
    opened.press("d");
    opened.forget();
    opened.start();
    opened.press("x j d");
    EXPECT_TRUE(opened.has(edits));
    EXPECT_TRUE(opened.has(edits + std::string("-2")));
    opened.forget();
    opened.start();
    opened.press("x r");
    EXPECT_THAT(opened.shown(), ElementsAre("c", "b"));
}

TEST(BrowseSheet, EditsOfEachLogThatIsOpenedAreOffered) {
    Opened opened(theLog);
    opened.write("other.csv", "Name\ny\nz\n");
    const auto openOther = [&] {
        opened.press("^O");
        opened.type(opened.folder.file("other.csv").string());
        opened.press("Enter");
    };
    opened.press("d");
    openOther();
    opened.press("d");
    opened.forget();
    opened.browser = std::make_unique<vek::browse::Browser>(vek::formats::Opening());
    opened.browser->add(vek::formats::openLog(opened.path(), {}),
                        vek::browse::markOf(opened.path()));
    opened.browser->add(vek::formats::openLog(opened.folder.file("other.csv").string(), {}),
                        vek::browse::markOf(opened.folder.file("other.csv").string()));
    opened.press("r r");
    EXPECT_THAT(opened.shown(), ElementsAre("z"));
    opened.press("Tab");
    EXPECT_THAT(opened.shown(), ElementsAre("a", "b"));
}

TEST(BrowseSheet, EditsOfABrowserThatLivesAreNotOfferedToASecondOneNorRemovedByIt) {
    Opened first(theLog);
    first.press("d");
    {
        vek::browse::Browser second{vek::formats::Opening()};
        second.add(vek::formats::openLog(first.path(), {}), vek::browse::markOf(first.path()));
        const std::string seen = textOf(second.picture(200, 24));
        EXPECT_THAT(seen, HasSubstr("another vek browse edits this log"));
        EXPECT_THAT(seen, Not(HasSubstr("(r)ecover")));
        second.press("j");
        second.press("d");
        EXPECT_TRUE(first.has(edits + std::string("-2")));
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
    second.add(vek::formats::openLog(first.path(), {}), vek::browse::markOf(first.path()));
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

TEST(BrowseSheet, ARecoveryFileThatItsMakerNeverWroteToIsRemovedWhereNobodyHasIt) {
    Opened opened(theLog);
    const std::string second = edits + std::string("-2");
    const std::string third = edits + std::string("-3");
    for (const std::string& name : {std::string(edits), second, third}) opened.write(name, "");
    opened.write(".log.csv.vek-edits-x", "");
    const OpenFile others = OpenFile::at(opened.folder.file(second).c_str());
    ASSERT_EQ(0, others.lock());
    opened.start();
    EXPECT_THAT(opened.screen(200), Not(HasSubstr("edits")));
    EXPECT_FALSE(opened.has(edits));
    EXPECT_TRUE(opened.has(second));
    EXPECT_FALSE(opened.has(third));
    EXPECT_TRUE(opened.has(".log.csv.vek-edits-x"));
}

TEST(BrowseSheet, EditsThatWereAllTakenBackLeaveNothingBehind) {
    Opened opened(theLog);
    opened.press("d e x Enter u u");
    EXPECT_TRUE(opened.has(edits));
    opened.press("q");
    EXPECT_TRUE(opened.browser->isOver());
    EXPECT_FALSE(opened.has(edits));
}

TEST(BrowseSheet, EachEditStandsInTheRecoveryFileBeforeTheNextKeyIsWaitedFor) {
    Opened opened(theLog);
    std::size_t before = 0;
    for (const char* keys : {"e x Enter", "o", "d", "u", "^R", "O", "t", "v G t", "i", "U Enter",
                             "T Enter", "E y Enter", "r 2 Enter", "D", "u"}) {
        SCOPED_TRACE(keys);
        opened.press(keys);
        const std::string written = opened.read(edits);
        EXPECT_LT(before, written.size());
        EXPECT_TRUE(written.ends_with('\n'));
        opened.sheet().recovery().flush();
        EXPECT_EQ(written, opened.read(edits));
        before = written.size();
    }
}

TEST(BrowseSheet, ARecoveryFileOfAnotherThatGotTheNameIsLeftAlone) {
    Opened opened(theLog);
    opened.press("d");
    std::filesystem::remove(opened.folder.file(edits));
    opened.write(edits, "another's");
    opened.press("^S");
    EXPECT_EQ("another's", opened.read(edits));
}

// Whoever starts looks at all files beside the log, while another makes one and removes it again.
TEST(BrowseSheet, NoRecoveryFileThatIsMadeJustNowIsTakenForALeftover) {
    using vek::browse::Recovery;
    const Opened opened(theLog);
    const auto mark = vek::browse::markOf(opened.path());
    std::atomic<bool> isOver = false;
    std::size_t mistaken = 0;
    std::thread starting([&] {
        while (!isOver) {
            for (const auto& other : Recovery(opened.path()).others()) mistaken += !other.isInUse;
        }
    });
    for (int i = 0; i < 300; ++i) {
        Recovery mine(opened.path());
        mine.begin(mark);
        mine.rowsDeleted(0, 1);
        mine.flush();
        EXPECT_TRUE(Recovery::fits(mine.path(), *mark));
        mine.remove();
    }
    isOver = true;
    starting.join();
    EXPECT_EQ(0u, mistaken);
    EXPECT_TRUE(Recovery(opened.path()).others().empty());
    EXPECT_FALSE(opened.has(edits));
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

TEST(BrowseSheet, EditsToBeRecoveredAreNotLostByOneKeyThatWasTypedAhead) {
    Opened opened(theLog);
    opened.press("d");
    opened.forget();
    opened.start();
    opened.press("d j");
    EXPECT_TRUE(opened.has(edits));
    opened.forget();
    opened.start();
    opened.press("r");
    EXPECT_THAT(opened.shown(), ElementsAre("a", "b"));
    opened.forget();
    opened.start();
    opened.press("d y");
    EXPECT_FALSE(opened.has(edits));
    EXPECT_THAT(opened.shown(), ElementsAre("c", "a", "b"));
}

TEST(BrowseSheet, ARecoveryFileThatIsALinkIsNotWrittenThrough) {
    Opened opened(theLog);
    opened.write("precious", "mine");
    std::filesystem::create_symlink(opened.folder.file("precious"), opened.folder.file(edits));
    opened.press("d");
    EXPECT_EQ("mine", opened.read("precious"));
    EXPECT_TRUE(opened.has(edits + std::string("-2")));
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

namespace {

// So many rows of which every second one is tagged.
std::string halfTagged(int rows) {
    std::string text = "Name,Tag\n";
    for (int i = 0; i < rows; ++i) text += std::to_string(i) + (i % 2 == 0 ? ",1\n" : ",0\n");
    return text;
}

}  // namespace

namespace {

// A key could come after every little that is done.
struct ShortSlices {
    using Slice = vek::browse::Slice;

    ShortSlices() { Slice::longest = std::chrono::milliseconds(0); }
    ~ShortSlices() { Slice::longest = before; }
    ShortSlices(const ShortSlices&) = delete;
    ShortSlices& operator=(const ShortSlices&) = delete;

    const std::chrono::milliseconds before = Slice::longest;
};

}  // namespace

TEST(BrowseSheet, ManyRowsThatGoAndComeBackAreFollowedByEveryFilterAndOrder) {
    for (const char* chosen :
         {"", "f N a m e > = 2 0 0 Enter", "S", "F", "F s", "f N a m e > = 2 0 0 Enter S"}) {
        SCOPED_TRACE(chosen);
        Opened opened(halfTagged(400));
        opened.press(chosen);
        auto before = opened.shown();
        opened.press("D");
        std::vector<std::string> left;
        for (const std::string& name : before) {
            if (std::stoi(name) % 2 != 0) left.push_back(name);
        }
        EXPECT_EQ(left, opened.shown());
        opened.press("u R");
        EXPECT_EQ(before, opened.shown());
        opened.press("^R");
        EXPECT_EQ(left, opened.shown());
        opened.press("u ^S");
        EXPECT_EQ(halfTagged(400), opened.read());
    }
}

TEST(BrowseSheet, ScatteredRowsGoAndComeBackInTheTimeOfTheirNumber) {
    const auto timeOf = [](int rows) {
        Opened opened(halfTagged(rows));
        const std::clock_t begin = std::clock();
        opened.press("D u");
        EXPECT_EQ(static_cast<std::size_t>(rows), opened.shown().size());
        return std::clock() - begin;
    };
    const std::clock_t few = timeOf(40000);
    EXPECT_LT(timeOf(160000), 9 * few + CLOCKS_PER_SEC / 10);
}

TEST(BrowseSheet, DeletingThatIsLeftHalfwayIsOneStepToTakeBackAndUndoingGoesOn) {
    const ShortSlices shortly;
    Opened opened(halfTagged(400));
    for (const char* choice : {"_", "S"}) {
        opened.press(choice);
        opened.browser->press("D");
        while (opened.sheet().edits().editCount() < 100) opened.browser->work();
        EXPECT_THAT(opened.screen(), HasSubstr("deleting ..."));
        opened.browser->press("x");
        opened.browser->press("Esc");
        EXPECT_FALSE(opened.browser->isBusy());
        EXPECT_THAT(opened.screen(), HasSubstr("u takes it back"));
        const std::size_t left = opened.shown().size();
        EXPECT_GT(left, 200u);
        EXPECT_LE(left, 300u);
        opened.browser->press("u");
        opened.browser->work();
        opened.browser->press("Esc");
        EXPECT_THAT(opened.screen(), HasSubstr("u goes on with it"));
        EXPECT_LT(opened.shown().size(), 400u);
        opened.press("u");
        EXPECT_EQ(400u, opened.shown().size());
        EXPECT_FALSE(opened.sheet().isUnsaved());
    }
}

TEST(BrowseSheet, RowsStayInSightWhileTheyAreDeletedBehindAFilter) {
    const ShortSlices shortly;
    Opened opened(halfTagged(1000));
    opened.press("F");
    opened.screen();
    opened.browser->press("D");
    while (!opened.sheet().rows().isSuspended()) opened.browser->work();
    EXPECT_THAT(opened.screen(), HasSubstr("1*  0"));
    EXPECT_THAT(opened.screen(60, 10), HasSubstr("deleting ..."));
    EXPECT_THAT(opened.screen(60, 40), HasSubstr("deleting ..."));
    opened.settle();
    EXPECT_THAT(opened.screen(), HasSubstr("no row"));
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

namespace {

// As one line.
std::string joined(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

// Every choice of the question that is asked can be read on a screen of any size.
void expectChoices(Opened& opened, const std::vector<std::string>& choices) {
    for (std::size_t width : {40, 60, 80, 100, 200}) {
        SCOPED_TRACE(width);
        const std::string seen = opened.screen(width, 12);
        for (const std::string& choice : choices) EXPECT_THAT(seen, HasSubstr(choice));
        EXPECT_THAT(joined(seen), HasSubstr("any other key"));
        EXPECT_THAT(seen, HasSubstr("row 1 of"));
    }
}

}  // namespace

TEST(BrowseSheet, EveryQuestionShowsItsChoicesOnANarrowScreen) {
    Opened opened(theLog);
    opened.press("d q");
    expectChoices(opened, {"(s)ave", "(d)iscard"});
    opened.write("there.csv", "mine");
    opened.press("x a");
    opened.type(opened.folder.file("there.csv").string());
    opened.press("Enter");
    expectChoices(opened, {"(o)verwrite"});
    opened.press("x");
    auto second = another(opened);
    second->press("d");
    second.reset();
    opened.forget();
    opened.start();
    expectChoices(opened, {"(r)ecover", "(d)elete"});
    opened.press("r");
    expectChoices(opened, {"(r)ecover", "(d)elete"});
    opened.press("x");
    opened.write("log.csv", "Name\nanother one\n");
    opened.press("^S");
    expectChoices(opened, {"(o)verwrite"});
    opened.forget();
    opened.start();
    expectChoices(opened, {"(d)elete"});
    opened.press("d");
    expectChoices(opened, {"(y)es"});
}

TEST(BrowseSheet, AQuestionOfManyLinesShowsItsEndOnALowScreenAndIsGoneWithItsAnswer) {
    Opened opened(theLog, "a name of many words that goes on and on for a long while.csv");
    const std::string before = opened.screen(40, 12);
    opened.press("d q x u");
    EXPECT_EQ(before.substr(before.find('\n')),
              opened.screen(40, 12).substr(opened.screen(40, 12).find('\n')));
    opened.press("d");
    opened.forget();
    opened.start();
    const std::string seen = opened.screen(40, 5);
    EXPECT_THAT(seen, HasSubstr("(r)ecover"));
    EXPECT_THAT(joined(seen), HasSubstr("any other key"));
    EXPECT_EQ(5, std::count(seen.begin(), seen.end(), '\n'));
    opened.browser->press("r");
    opened.browser->work();
    EXPECT_THAT(opened.screen(40, 12), Not(HasSubstr("(r)ecover")));
    opened.settle();
    EXPECT_THAT(opened.screen(40, 12), Not(HasSubstr("(r)ecover")));
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

TEST(BrowseSheet, TheCursorIsInSightHoweverManyColumnsAreKept) {
    std::string heading = "C0", row = "v0";
    for (int i = 1; i < 40; ++i) {
        heading += ",C" + std::to_string(i);
        row += ",value" + std::to_string(i);
    }
    Opened opened(heading + "\n" + row + "\n");
    opened.press("$ K");
    for (int i = 39; i > 0; --i) {
        EXPECT_THAT(opened.screen(40, 12), HasSubstr("value" + std::to_string(i)));
        opened.press("h");
    }
}

TEST(BrowseSheet, ALogOfAsManyColumnsAsThereCanBeIsMovedThroughQuickly) {
    std::string heading, row;
    for (int i = 0; i < 65535; ++i) {
        heading += (i > 0 ? ",c" : "c") + std::to_string(i);
        row += (i > 0 ? ",v" : "v") + std::to_string(i);
    }
    Opened opened(heading + "\n" + row + "\n");
    const std::clock_t begin = std::clock();
    opened.press("$");
    EXPECT_THAT(opened.screen(), HasSubstr("v65534"));
    opened.press("K h h [ H w");
    EXPECT_THAT(opened.screen(), HasSubstr("v6553"));
    opened.press("Home");
    EXPECT_THAT(opened.screen(), HasSubstr("v1"));
    EXPECT_LT(std::clock() - begin, 3 * CLOCKS_PER_SEC);
}

TEST(BrowseSheet, ALongCellIsEditedAtItsEndAndChosenByItsValue) {
    const std::string cell(1 << 20, 'y');
    Opened opened("Name\n" + cell + "\nb\n");
    opened.press("e");
    const std::clock_t begin = std::clock();
    for (int i = 0; i < 20; ++i) {
        opened.press("z");
        EXPECT_THAT(opened.screen(), HasSubstr("yyz"));
        opened.press("Backspace");
    }
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
    opened.press("! Enter =");
    EXPECT_EQ(1u, opened.shown().size());
    EXPECT_LT(opened.sheet().rows().path().front().size(), 200u);
    EXPECT_EQ(cell + "!", opened.shown().front());
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
