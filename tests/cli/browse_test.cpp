// The browser as a person has it: in a terminal, by keys.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "cli/multiplexer.h"
#include "cli/terminal.h"
#include "tools/vek/browse/keys.h"

using testing::HasSubstr;
using testing::Not;

namespace {

const std::string browse = std::string(VEK_PROGRAM) + " browse ";

bool hasTmux() {
    return !installed("tmux").empty();
}

// Fifty clips, r01 to r50; every fifth is of scene 9.
std::string clips() {
    std::string text = "Name,Scene,Take,Start,End,Notes\n";
    for (int i = 1; i <= 50; ++i) {
        const std::string number = (i < 10 ? "0" : "") + std::to_string(i);
        text += "r" + number + "," + (i % 5 == 0 ? "9" : "1") + "," + std::to_string(51 - i) +
                ",01:" + number + ":00:00,01:" + number + ":30:00,note " + number + "\n";
    }
    return text;
}

class BrowseScreen : public testing::Test {
protected:
    BrowseScreen() { folder.write("log.csv", clips()); }

    Finish start(std::vector<std::string> words) {
        Start one;
        one.words = std::move(words);
        return run(folder, one);
    }

    WorkFolder folder;
};

// A key by the name that tmux has for it, what is typed behind it, and what is seen then.
struct Step {
    const char* key;
    const char* typed;  // with Enter behind it; null for nothing
    const char* seen;
    const char* tmuxKey = nullptr;
};

const std::vector<Step>& steps() {
    static const std::vector<Step> all = {
        {"Down", nullptr, "row 2 of"},
        {"Up", nullptr, "row 1 of"},
        {"j", nullptr, "row 2 of"},
        {"k", nullptr, "row 1 of"},
        {"PgDn", nullptr, "row 21 of", "NPage"},
        {"PgUp", nullptr, "row 1 of", "PPage"},
        {"^F", nullptr, "row 21 of"},
        {"^B", nullptr, "row 1 of"},
        {"Space", nullptr, "row 21 of"},
        {"b", nullptr, "row 1 of"},
        {"^D", nullptr, "row 11 of"},
        {"^U", nullptr, "row 1 of"},
        {"G", nullptr, "row 50 of"},
        {"g", nullptr, "row 1 of"},
        {">", nullptr, "row 50 of"},
        {"<", nullptr, "row 1 of"},
        {"Right", nullptr, "rows, Scene"},
        {"Left", nullptr, "rows, Name"},
        {"l", nullptr, "rows, Scene"},
        {"h", nullptr, "rows, Name"},
        {"End", nullptr, "rows, Notes"},
        {"Home", nullptr, "rows, Name"},
        {"^E", nullptr, "rows, Notes"},
        {"^A", nullptr, "rows, Name"},
        {"$", nullptr, "rows, Notes"},
        {"#", "7", "row 7 of"},
        {"@", "01:33:10:00", "row 33 of"},
        {"/", "note 4", "row 40 of"},
        {"n", nullptr, "row 41 of"},
        {"N", nullptr, "row 40 of"},
        {"\\", "note 1", "row 19 of"},
        {"s", nullptr, "> by Notes"},
        {"S", nullptr, "> by Notes reversed"},
        {"+", nullptr, "by Notes reversed"},
        {"_", nullptr, "row 19 of 50 rows"},
        {"=", nullptr, "> Notes==note 19"},
        {"Backspace", nullptr, "row 19 of 50 rows", "BSpace"},
        {"f", "Scene==9", "of 10 rows (50 in all)"},
        {"-", nullptr, "of 50 rows"},
        {"F4", "Take<3", "of 2 rows"},
        {"-", nullptr, "of 50 rows"},
        {"g", nullptr, "row 1 of"},
        {"t", nullptr, "1*  r01"},
        {"F", nullptr, "of 1 row"},
        {"-", nullptr, "of 50 rows"},
        {"R", nullptr, "of 50 rows"},
        {"F5", nullptr, "of 50 rows"},
        {"v", nullptr, "range of 1"},
        {"Esc", nullptr, "of 50 rows, Notes   ?", "Escape"},
        {"T", "Scene==9", "10 rows matched"},
        {"U", "Take<30", "29 rows matched"},
        {"i", nullptr, "2*  r02"},
        {"g", nullptr, "row 1 of"},
        {"e", "!", "note 01!"},
        {"F2", "?", "note 01!?"},
        {"Enter", "#", "note 01!?#"},
        {"E", "all", "all"},
        {"u", nullptr, "note 01!?#"},
        {"^R", nullptr, "all"},
        {"^Z", nullptr, "note 02"},
        {"^Y", nullptr, "all"},
        {"o", nullptr, "of 51 rows"},
        {"O", nullptr, "of 52 rows"},
        {"Ins", nullptr, "of 53 rows", "IC"},
        {"d", nullptr, "of 52 rows"},
        {"Del", nullptr, "of 51 rows", "DC"},
        {"D", nullptr, "rows deleted"},
        {"u", nullptr, "of 51 rows"},
        {"r", "2", "Notes2"},
        {"w", nullptr, "rows, Notes2"},
        {"W", nullptr, "rows, Notes2"},
        {"[", nullptr, "rows, Notes2"},
        {"]", nullptr, "rows, Notes2"},
        {"K", nullptr, "columns stay at the left"},
        {"H", nullptr, "rows, Tag"},
        {"A", nullptr, "Notes2"},
        {"Home", nullptr, "rows, Name"},
        {"c", nullptr, "Scene: "},
        {"F3", nullptr, "row "},
        {"^S", nullptr, "saved"},
        {"F6", nullptr, "nothing is to be saved"},
        {"a", "copy.csv", "saved as copy.csv"},
        {"p", "shown.tsv", "saved as shown.tsv"},
        {"^O", "copy.csv", "(2/2) copy.csv"},
        {"Tab", nullptr, "(1/2) log.csv"},
        {"BackTab", nullptr, "(2/2) copy.csv", "BTab"},
        {"y", nullptr, "copied to log.csv"},
        {"F7", "shown.tsv", "(3/3) shown.tsv"},
        {"F10", nullptr, "/2)"},
        {":", "info", "Enter goes back"},
        {"Enter", nullptr, "/2)"},
        {"^L", nullptr, "/2)"},
        {"?", nullptr, "Moving"},
        {"q", nullptr, "/2)"},
        {"F1", nullptr, "Moving"},
        {"q", nullptr, "/2)"},
    };
    return all;
}

std::string tmuxName(const Step& step) {
    if (step.tmuxKey != nullptr) return step.tmuxKey;
    const std::string key = step.key;
    if (key.size() == 2 && key[0] == '^') return std::string("C-") + char(key[1] + 32);
    return key;
}

}  // namespace

TEST_F(BrowseScreen, EachKeyOfTheHelpIsTriedInATerminal) {
    std::set<std::string_view> tried = {"^C"};  // by the test that leaves
    for (const Step& step : steps()) tried.insert(step.key);
    for (const vek::browse::KeyEntry& entry : vek::browse::keyTable()) {
        for (std::string_view key : entry.keys) EXPECT_TRUE(tried.contains(key)) << key;
    }
}

TEST_F(BrowseScreen, EachKeyIsAnswered) {
    if (!hasTmux()) return;
    Multiplexer terminal(folder, browse + "log.csv", 80, 24);
    terminal.waitFor("row 1 of 50 rows");
    for (const Step& step : steps()) {
        SCOPED_TRACE(step.key);
        terminal.press({tmuxName(step)});
        if (step.typed != nullptr) {
            terminal.type(step.typed);
            terminal.press({"Enter"});
        }
        terminal.waitFor(step.seen);
        if (HasFailure()) break;
    }
}

TEST_F(BrowseScreen, ACommandSeesTheRowsShownAndNoneChangesACopyThatGoes) {
    if (!hasTmux()) return;
    Multiplexer terminal(folder, browse + "log.csv", 80, 24);
    terminal.waitFor("row 1 of 50 rows");
    terminal.press({"f"});
    terminal.type("Scene==9");
    terminal.press({"Enter"});
    terminal.waitFor("of 10 rows");
    const std::pair<const char*, const char*> tries[] = {
        {"sort --by Take", "sort changes a file"},
        {"set Notes=x --every", "set changes a file"},
        {"tag --where Scene==9", "tag changes a file"},
        {"timecode shift 10", "timecode changes a file"},
        {"param set Day 3", "param changes a file"},
        {"column add More", "column changes a file"},
        {"sql \"DELETE FROM log\" --write -o answer.csv", "sql changes a file"},
        {"sql \"DELETE FROM log\" --write", "the rows shown, so edit"},
        {"browse", "^O opens"},
        {"sort --by Take -o sorted.csv", "Enter goes back"},
        {"sql \"DELETE FROM log\" --write --dry-run", "10 rows would change"},
        {"timecode shift 10 --fps 25 --dry-run", "01:45:00:10"},
        {"sql \"SELECT count(*) || ' in all' FROM log\"", "10 in all"},
        {"find Scene==9", "r45"},
        {"param list", "Enter goes back"},
    };
    for (const auto& [line, seen] : tries) {
        SCOPED_TRACE(line);
        terminal.press({":"});
        terminal.type(line);
        terminal.press({"Enter"});
        terminal.waitFor("Enter goes back");
        terminal.waitFor(seen);
        terminal.press({"Enter"});
        terminal.waitFor("of 10 rows");
        if (HasFailure()) break;
    }
    EXPECT_EQ(clips(), folder.read("log.csv"));
    EXPECT_TRUE(folder.has("sorted.csv"));
    EXPECT_FALSE(folder.has("answer.csv"));
}

TEST_F(BrowseScreen, SavesAllInEveryFormatAsConvertWritesIt) {
    if (!hasTmux()) return;
    start({"vek", "convert", "samples/docs.vek", "docs.vek"});
    start({"/bin/mkdir", "saved", "converted"});
    Multiplexer terminal(folder, browse + "docs.vek", 80, 24);
    terminal.waitFor("row 1 of 6 rows");
    for (const char* ending :
         {"vek", "csv", "tsv", "json", "jsonl", "ale", "edl", "otio", "xlsx", "md", "html"}) {
        SCOPED_TRACE(ending);
        const std::string name = std::string("/docs.") + ending;
        start({"vek", "convert", "docs.vek", "converted" + name});
        terminal.press({"a"});
        terminal.type("saved" + name);
        terminal.press({"Enter"});
        terminal.waitFor("saved as saved" + name);
        EXPECT_TRUE(folder.has("converted" + name));
        EXPECT_EQ(folder.read("converted" + name), folder.read("saved" + name));
    }
}

TEST_F(BrowseScreen, EverySizeIsDrawnAndSoIsEachChangeOfIt) {
    if (!hasTmux()) return;
    Multiplexer terminal(folder, browse + "log.csv", 40, 12);
    terminal.waitFor("row 1 of 50 rows");
    EXPECT_THAT(terminal.waitFor("r08"), Not(HasSubstr("r09")));
    terminal.press({"$"});
    terminal.waitFor("note 01");
    terminal.resize(200, 60);
    terminal.waitFor("r50");
    terminal.press({"G"});
    terminal.waitFor("row 50 of");
    terminal.resize(80, 24);
    EXPECT_THAT(terminal.waitFor("log.csv"), Not(HasSubstr("r30")));
    terminal.resize(40, 12);
    EXPECT_THAT(terminal.waitFor("log.csv"), Not(HasSubstr("r42")));
}

TEST_F(BrowseScreen, CtrlCLeavesTheFileAsItWasAndTheEditsToBeRecovered) {
    if (!hasTmux()) return;
    {
        Multiplexer terminal(folder, browse + "log.csv", 80, 24);
        terminal.waitFor("row 1 of 50 rows");
        terminal.press({"d"});
        terminal.waitFor("of 49 rows");
        terminal.press({"C-c"});
        terminal.waitForEnd("ended");
        terminal.waitFor("stand in .log.csv.vek-edits");
    }
    EXPECT_EQ(clips(), folder.read("log.csv"));
    EXPECT_TRUE(folder.has(".log.csv.vek-edits"));
    Multiplexer again(folder, browse + "log.csv", 40, 12);
    again.waitFor("(r)ecover");
    again.press({"r"});
    again.waitFor("of 49 rows");
}

TEST_F(BrowseScreen, AKillLeavesTheTerminalAsItWas) {
    if (!hasTmux()) return;
    for (const char* signal : {"TERM", "HUP"}) {
        folder.write("log.csv", clips());
        Multiplexer terminal(folder, "sh -c 'echo $$ > id; exec " + browse + "log.csv'", 80, 24);
        terminal.waitFor("row 1 of 50 rows");
        terminal.press({"d"});
        terminal.waitFor("of 49 rows");
        start({"/bin/sh", "-c", std::string("kill -") + signal + " $(cat id)"});
        terminal.waitForEnd("ended");
        terminal.type("typed");
        terminal.waitFor("typed");
        EXPECT_EQ(clips(), folder.read("log.csv"));
        EXPECT_TRUE(folder.has(".log.csv.vek-edits"));
        std::filesystem::remove(folder.path() / ".log.csv.vek-edits");
        std::filesystem::remove(folder.path() / "ended");
    }
}

TEST_F(BrowseScreen, AKillThatNothingCanAnswerRightBehindTheFirstEditLosesNothing) {
    if (!hasTmux()) return;
    {
        Multiplexer terminal(folder, "sh -c 'echo $$ > id; exec " + browse + "log.csv'", 80, 24);
        terminal.waitFor("row 1 of 50 rows");
        terminal.press({"d"});
        terminal.waitFor("of 49 rows");
        start({"/bin/sh", "-c", "kill -KILL $(cat id)"});
        terminal.waitForEnd("ended");
    }
    Multiplexer again(folder, browse + "log.csv", 80, 24);
    again.waitFor("(r)ecover");
    again.press({"r"});
    again.waitFor("of 49 rows");
    EXPECT_EQ(clips(), folder.read("log.csv"));
}

TEST_F(BrowseScreen, ColoursAreThoseOfTheTerminalAndNoneWhereNobodyWantsThem) {
    if (!hasTmux()) return;
    folder.write("log.csv", "Name,Tag\na,0\nb,1\n");
    const auto shows = [&](const std::string& before, const std::string& terminal) {
        Multiplexer screen(folder, before + browse + "log.csv", 40, 12, terminal);
        screen.waitFor("row 1 of 2 rows");
        return screen.screen(true);
    };
    EXPECT_THAT(shows("", "screen-256color"), HasSubstr("38;5;214"));
    EXPECT_THAT(shows("", "screen"), HasSubstr("\x1b[33m"));
    EXPECT_THAT(shows("NO_COLOR=1 ", "screen-256color"), Not(HasSubstr("38;5;")));
}

TEST_F(BrowseScreen, WideAndCombiningCharactersStandInTheirColumns) {
    if (!hasTmux()) return;
    folder.write(
        "log.csv",
        "Name,Next\n\xE6\x97\xA5\xE6\x9C\xAC,one\ne\xCC\x81\xCC\x82,two\n\"a\tb\x1b\",x\n");
    Multiplexer terminal(folder, browse + "log.csv", 40, 12);
    const std::string seen = terminal.waitFor("row 1 of 3 rows");
    EXPECT_THAT(seen, HasSubstr("\xE6\x97\xA5\xE6\x9C\xAC      one"));
    EXPECT_THAT(seen, HasSubstr("e\xCC\x81\xCC\x82         two"));
    EXPECT_THAT(seen, HasSubstr("a\\tb\\x1b"));
}

TEST_F(BrowseScreen, ATestThatDoesNotEndItsTerminalLeavesNoneBehind) {
    if (!hasTmux()) return;
    const pid_t test = ::fork();
    if (test == 0) {
        const Multiplexer terminal(folder, browse + "log.csv", 40, 12);
        folder.write("process", terminal.process());
        ::_exit(0);  // as a crash: nothing is destroyed
    }
    ::waitpid(test, nullptr, 0);
    const pid_t inside = std::stoi(folder.read("process"));
    for (int i = 0; i < 400 && ::kill(inside, 0) == 0; ++i) ::usleep(100000);
    EXPECT_NE(0, ::kill(inside, 0));
}

TEST_F(BrowseScreen, ItSaysWhereThereIsNoTerminal) {
    const Finish finish = start({"vek", "browse", "log.csv"});
    EXPECT_EQ(2, finish.exitCode);
    EXPECT_THAT(finish.errors, HasSubstr("needs a terminal"));
}
