#include <gmock/gmock.h>

#include <map>
#include <set>

#include "browse/opened.h"

using namespace vek::browse;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* theLog =
    "Name,Scene,Take,Start,End,Tag\n"
    "c,3,1,01:00:00:00,01:00:10:00,0\n"
    "a,1,2,01:00:10:01,01:00:20:00,0\n"
    "b,2,10,01:00:20:01,01:00:30:00,1\n"
    "d,1,9,01:00:30:01,01:00:40:00,0\n";

// Each thing that a key does, tried with every key that does it: `prepare` is pressed before,
// `rest` behind, and the check says what must hold then.
struct Trial {
    const char* prepare;
    const char* typed;  // behind the key, and Enter with it
    void (*check)(Opened& opened);
};

unsigned placeOf(Opened& opened) {
    return opened.sheet().place();
}

std::string cellHere(Opened& opened) {
    return std::string(opened.sheet().log().cell(opened.sheet().row(), opened.sheet().column()));
}

std::vector<std::string> tags(Opened& opened) {
    std::vector<std::string> all;
    for (unsigned row = 0; row < opened.sheet().log().rowCount(); ++row) {
        all.push_back(opened.sheet().isTagged(row) ? "1" : "0");
    }
    return all;
}

std::size_t widthHere(Opened& opened) {
    return opened.sheet().columns()[opened.sheet().columnPlace()].width;
}

const std::map<Act, Trial>& trials() {
    static const std::map<Act, Trial> all = {
        {Act::up, {"G", nullptr, [](Opened& o) { EXPECT_EQ(2u, placeOf(o)); }}},
        {Act::down, {"", nullptr, [](Opened& o) { EXPECT_EQ(1u, placeOf(o)); }}},
        {Act::left, {"l l", nullptr, [](Opened& o) { EXPECT_EQ(1u, o.sheet().columnPlace()); }}},
        {Act::right, {"", nullptr, [](Opened& o) { EXPECT_EQ(1u, o.sheet().columnPlace()); }}},
        {Act::pageUp, {"G", nullptr, [](Opened& o) { EXPECT_EQ(1u, placeOf(o)); }}},
        {Act::pageDown, {"", nullptr, [](Opened& o) { EXPECT_EQ(2u, placeOf(o)); }}},
        {Act::halfUp, {"G", nullptr, [](Opened& o) { EXPECT_EQ(2u, placeOf(o)); }}},
        {Act::halfDown, {"", nullptr, [](Opened& o) { EXPECT_EQ(1u, placeOf(o)); }}},
        {Act::first, {"G", nullptr, [](Opened& o) { EXPECT_EQ(0u, placeOf(o)); }}},
        {Act::last, {"", nullptr, [](Opened& o) { EXPECT_EQ(3u, placeOf(o)); }}},
        {Act::firstColumn,
         {"$", nullptr, [](Opened& o) { EXPECT_EQ(0u, o.sheet().columnPlace()); }}},
        {Act::lastColumn, {"", nullptr, [](Opened& o) { EXPECT_EQ(5u, o.sheet().columnPlace()); }}},
        {Act::goToRow, {"", "3", [](Opened& o) { EXPECT_EQ(2u, placeOf(o)); }}},
        {Act::goToTimecode, {"", "01:00:35:00", [](Opened& o) { EXPECT_EQ(3u, placeOf(o)); }}},
        {Act::findForward, {"", "00:30:01", [](Opened& o) { EXPECT_EQ(3u, placeOf(o)); }}},
        {Act::findBack, {"", "01:00", [](Opened& o) { EXPECT_EQ("01:00:00:00", cellHere(o)); }}},
        {Act::findNext, {"/ 0 1 : Enter", nullptr, [](Opened& o) { EXPECT_EQ(1u, placeOf(o)); }}},
        {Act::findPrevious,
         {"/ 0 1 : Enter", nullptr, [](Opened& o) { EXPECT_EQ(3u, placeOf(o)); }}},
        {Act::sortUp,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("a", "b", "c", "d")); }}},
        {Act::sortDown,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("d", "c", "b", "a")); }}},
        {Act::sortAlso,
         {"l s l", nullptr,
          [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("a", "d", "b", "c")); }}},
        {Act::unsort,
         {"s", nullptr,
          [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("c", "a", "b", "d")); }}},
        {Act::filterByValue,
         {"j l", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("a", "d")); }}},
        {Act::filterByCondition,
         {"", "Take>=9", [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("b", "d")); }}},
        {Act::filterByTags,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("b")); }}},
        {Act::unfilter, {"F", nullptr, [](Opened& o) { EXPECT_EQ(4u, o.shown().size()); }}},
        {Act::refresh, {"F t", nullptr, [](Opened& o) { EXPECT_EQ(0u, o.shown().size()); }}},
        {Act::mark, {"", nullptr, [](Opened& o) { EXPECT_TRUE(o.sheet().hasMark()); }}},
        {Act::tag,
         {"v j", nullptr,
          [](Opened& o) { EXPECT_THAT(tags(o), ElementsAre("1", "1", "1", "0")); }}},
        {Act::tagByCondition,
         {"", "Scene==1",
          [](Opened& o) { EXPECT_THAT(tags(o), ElementsAre("0", "1", "1", "1")); }}},
        {Act::untagByCondition,
         {"", "", [](Opened& o) { EXPECT_THAT(tags(o), ElementsAre("0", "0", "0", "0")); }}},
        {Act::invertTags,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(tags(o), ElementsAre("1", "1", "0", "1")); }}},
        {Act::edit, {"", "x", [](Opened& o) { EXPECT_EQ("cx", cellHere(o)); }}},
        {Act::editTagged, {"", "x", [](Opened& o) { EXPECT_EQ("x", o.shown()[2]); }}},
        {Act::insertBelow,
         {"", nullptr,
          [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("c", "", "a", "b", "d")); }}},
        {Act::insertAbove,
         {"", nullptr,
          [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("", "c", "a", "b", "d")); }}},
        {Act::deleteRows,
         {"v j", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("b", "d")); }}},
        {Act::deleteTagged,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("c", "a", "d")); }}},
        {Act::rename,
         {"", "s", [](Opened& o) { EXPECT_EQ("Names", o.sheet().log().columnName(0)); }}},
        {Act::undo,
         {"d", nullptr,
          [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("c", "a", "b", "d")); }}},
        {Act::redo,
         {"d u", nullptr, [](Opened& o) { EXPECT_THAT(o.shown(), ElementsAre("a", "b", "d")); }}},
        {Act::widen, {"", nullptr, [](Opened& o) { EXPECT_GT(widthHere(o), 4u); }}},
        {Act::narrow, {"", nullptr, [](Opened& o) { EXPECT_EQ(3u, widthHere(o)); }}},
        {Act::hide,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.screen(), Not(HasSubstr("Name"))); }}},
        {Act::showColumns,
         {"H", nullptr, [](Opened& o) { EXPECT_THAT(o.screen(), HasSubstr("Name")); }}},
        {Act::columnLeft,
         {"l", nullptr, [](Opened& o) { EXPECT_EQ(1u, o.sheet().columns()[0].column); }}},
        {Act::columnRight,
         {"", nullptr, [](Opened& o) { EXPECT_EQ(1u, o.sheet().columns()[0].column); }}},
        {Act::keepColumns, {"l", nullptr, [](Opened& o) { EXPECT_EQ(2u, o.sheet().kept()); }}},
        {Act::card,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.screen(), HasSubstr("Take: 1")); }}},
        {Act::save,
         {"d", nullptr, [](Opened& o) { EXPECT_THAT(o.read(), Not(HasSubstr("c,3"))); }}},
        {Act::saveAs,
         {"d", nullptr,
          [](Opened& o) {
              o.type(o.folder.file("all.csv").string());
              o.press("Enter");
              EXPECT_THAT(o.read("all.csv"), testing::StartsWith("Name,Scene"));
              EXPECT_THAT(o.read("all.csv"), Not(HasSubstr("c,3")));
          }}},
        {Act::saveShown,
         {"F", nullptr,
          [](Opened& o) {
              o.type(o.folder.file("some.tsv").string());
              o.press("Enter");
              EXPECT_THAT(o.read("some.tsv"), HasSubstr("b\t2\t10"));
              EXPECT_THAT(o.read("some.tsv"), Not(HasSubstr("c\t3")));
          }}},
        {Act::open,
         {"", nullptr,
          [](Opened& o) {
              o.write("other.csv", "Name\nz\n");
              o.type(o.folder.file("other.csv").string());
              o.press("Enter");
              EXPECT_EQ(2u, o.browser->sheetCount());
              EXPECT_THAT(o.shown(), ElementsAre("z"));
          }}},
        {Act::nextSheet,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.browser->message(), HasSubstr("one log")); }}},
        {Act::previousSheet,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.browser->message(), HasSubstr("one log")); }}},
        {Act::copyTagged,
         {"", nullptr, [](Opened& o) { EXPECT_THAT(o.browser->message(), HasSubstr("one log")); }}},
        {Act::command,
         {"", "stats -b 'Scene'",
          [](Opened& o) {
              EXPECT_THAT(*o.browser->takeCommand(), ElementsAre("stats", "-b", "Scene"));
          }}},
        {Act::help, {"", nullptr, [](Opened& o) { EXPECT_THAT(o.screen(), HasSubstr("Moving")); }}},
        {Act::redraw, {"", nullptr, [](Opened& o) { EXPECT_TRUE(o.browser->takeRedraw()); }}},
        {Act::cancel, {"v", nullptr, [](Opened& o) { EXPECT_FALSE(o.sheet().hasMark()); }}},
        {Act::quit, {"", nullptr, [](Opened& o) { EXPECT_TRUE(o.browser->isOver()); }}},
        {Act::leave,
         {"d", nullptr,
          [](Opened& o) {
              EXPECT_TRUE(o.browser->isOver());
              EXPECT_TRUE(o.has(".log.csv.vek-edits"));
          }}},
    };
    return all;
}

}  // namespace

TEST(BrowseKeys, EachKeyDoesWhatTheHelpSaysOfIt) {
    for (const KeyEntry& entry : keyTable()) {
        const auto trial = trials().find(entry.act);
        ASSERT_NE(trials().end(), trial) << entry.does << " has no trial";
        for (std::string_view key : entry.keys) {
            SCOPED_TRACE(key);
            Opened opened(theLog);
            opened.screen(80, 6);  // two rows a page
            opened.press(trial->second.prepare);
            opened.pressOne(std::string(key));
            if (trial->second.typed != nullptr) {
                opened.type(trial->second.typed);
                opened.press("Enter");
            }
            trial->second.check(opened);
        }
    }
}

TEST(BrowseKeys, NoKeyHasTwoMeanings) {
    std::set<std::string_view> seen;
    for (const KeyEntry& entry : keyTable()) {
        for (std::string_view key : entry.keys) EXPECT_TRUE(seen.insert(key).second) << key;
    }
}

TEST(BrowseKeys, AnUnknownKeyIsSaid) {
    Opened opened(theLog);
    opened.press("F12");
    EXPECT_THAT(opened.screen(), HasSubstr("no key F12"));
}

TEST(BrowseKeys, ThatAreTypedAheadAreAnsweredInTheirOrder) {
    Opened ahead(theLog);
    for (const char* key : {"s", "S", "R", "v"}) ahead.browser->press(key);
    ahead.settle();
    Opened seen(theLog);
    seen.press("s S R v");
    EXPECT_TRUE(ahead.sheet().hasMark());
    EXPECT_EQ(ahead.shown(), seen.shown());
}

namespace {

// So many cells that nothing looks at all of them between two keys.
std::string longLog() {
    std::string text = "a,b,c,d,e,f,g,h,i,j\n";
    for (int i = 0; i < 300000; ++i) text += "1,2,3,4,5,6,7,8,9,0\n";
    return text;
}

}  // namespace

TEST(BrowseKeys, LookingOnInALongLogTellsHowFarItIsAndEndsWithAnotherKey) {
    Opened opened(longLog());
    opened.press("/ x Enter");
    for (const char* key : {"n", "N"}) {
        opened.browser->press(key);
        EXPECT_TRUE(opened.browser->isBusy());
        EXPECT_THAT(opened.screen(), HasSubstr("looking for x ... "));
        opened.browser->press("Down");
        EXPECT_FALSE(opened.browser->isBusy());
    }
    EXPECT_EQ(2u, opened.sheet().place());
    opened.press("n");
    EXPECT_THAT(opened.screen(), HasSubstr("x is not found"));
}

TEST(BrowseKeys, ThatComeWhileALongLogIsTaggedWaitForItAndTheScreenTellsHowFarItIs) {
    Opened opened(longLog());
    opened.press("v G");
    opened.browser->press("t");
    opened.browser->work();
    EXPECT_THAT(opened.screen(), HasSubstr("tagging ... "));
    opened.browser->press("k");
    EXPECT_EQ(299999u, opened.sheet().place());
    opened.settle();
    EXPECT_EQ(299998u, opened.sheet().place());
    EXPECT_EQ(300000u, opened.sheet().taggedRows().size());
    opened.press("u");
    EXPECT_TRUE(opened.sheet().taggedRows().empty());
}

TEST(BrowseKeys, TurnsOfTheWheelAndClicksThatComeMeanwhileAreAnsweredInTheirOrder) {
    Opened opened(theLog);
    opened.screen();
    opened.browser->press("s");
    opened.browser->turn(9);
    opened.browser->click(0, 3);
    opened.browser->turn(-1);
    opened.browser->press("v");
    opened.browser->turn(2);
    for (int i = 0; i < 10; ++i) opened.browser->work();
    EXPECT_FALSE(opened.browser->isBusy());
    EXPECT_EQ(2u, placeOf(opened));
    EXPECT_EQ(3u, opened.sheet().chosenRows().size());
}

TEST(BrowseKeys, CommandsTypedAheadAreRunOneAfterTheOther) {
    Opened opened(theLog);
    for (const char* key : {"s", ":", "a", "Enter", ":", "b", "Enter"}) opened.browser->press(key);
    for (const char* name : {"a", "b"}) {
        for (int i = 0; i < 10; ++i) opened.browser->work();
        const auto command = opened.browser->takeCommand();
        ASSERT_TRUE(command.has_value()) << name;
        EXPECT_EQ(name, command->back());
    }
}

TEST(BrowseKeys, EachLookingOnFindsOneMoreHoweverFastTheyCome) {
    std::string text = longLog();
    for (int i = 0; i < 5; ++i) text += "y\n";
    Opened opened(text);
    opened.press("/ y Enter g");
    for (const char* key : {"N", "N", "N"}) opened.browser->press(key);
    opened.settle();
    EXPECT_EQ(300002u, placeOf(opened));
    opened.press("g");
    for (const char* key : {"n", "n", "n"}) opened.browser->press(key);
    EXPECT_TRUE(opened.browser->isBusy());
    opened.settle();
    EXPECT_EQ(300002u, placeOf(opened));
    opened.press("g");
    for (const char* key : {"n", "n", "Esc"}) opened.browser->press(key);
    EXPECT_FALSE(opened.browser->isBusy());
    EXPECT_EQ(0u, placeOf(opened));
}

TEST(BrowseKeys, AQuestionThatWasLeftDoesNotTurnTheWayOfLookingOn) {
    Opened opened(theLog);
    opened.press("/ 0 1 : Enter \\ Esc n");
    EXPECT_EQ(1u, placeOf(opened));
}
