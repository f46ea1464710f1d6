// Ten thousand keys at random, compared with plain lists: cells, tags, what undo and redo bring
// back, what is recovered after a kill and what is saved.
#include <gtest/gtest.h>

#include <algorithm>

#include "browse/opened.h"
#include "formats/reading/open_log.h"
#include "formats/text/width.h"
#include "testing/random.h"

namespace {

using testing_support::Random;
using Cells = std::vector<std::vector<std::string>>;

Cells cellsOf(const vek::formats::Log& log) {
    Cells cells = {log.columnNames()};
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        std::vector<std::string>& to = cells.emplace_back();
        for (unsigned i = 0; i < log.columnCount(); ++i) to.emplace_back(log.cell(row, i));
    }
    return cells;
}

// The edits are made to a plain model as well; the states that undo goes back to are whole copies.
class Walk {
public:
    Walk(Opened& opened, Random& random) : opened_(opened), random_(random) { reset(); }

    void step() {
        if (random_.oneIn(4)) {
            undoOrRedo();
        } else {
            random_.oneIn(2) ? edit() : look();
        }
        ASSERT_EQ(states_[now_], cellsOf(opened_.sheet().log()));
        const unsigned count = static_cast<unsigned>(opened_.sheet().rows().size());
        ASSERT_TRUE(count == 0 ? opened_.sheet().place() == 0 : opened_.sheet().place() < count);
    }

    // The program is killed, and started anew.
    void kill() {
        const Cells before = states_[now_];
        const bool isUnsaved = opened_.has(".log.csv.vek-edits");
        const std::string edits = opened_.read(".log.csv.vek-edits");
        opened_.forget();
        // Who is killed does not clear up what was all taken back.
        if (isUnsaved) opened_.write(".log.csv.vek-edits", edits);
        opened_.start();
        reset();
        if (isUnsaved) {
            opened_.press("r");
            states_.push_back(before);
            now_ = 1;
        }
        ASSERT_EQ(before, cellsOf(opened_.sheet().log()));
        if (isUnsaved) opened_.press("^S");
        const vek::formats::Log saved = vek::formats::openLog(opened_.path(), {});
        ASSERT_EQ(before, cellsOf(saved));
    }

    // What is taken back or done again behind it is saved by the next one.
    void save() {
        press("^S");
        const vek::formats::Log saved = vek::formats::openLog(opened_.path(), {});
        ASSERT_EQ(states_[now_], cellsOf(saved));
    }

    int keys = 0;

private:
    void reset() {
        states_ = {cellsOf(opened_.sheet().log())};
        now_ = 0;
    }

    void press(const std::string& list) {
        opened_.press(list);
        keys += 1 + static_cast<int>(std::count(list.begin(), list.end(), ' '));
    }

    void look() {
        static const char* const looks[] = {"j",
                                            "k",
                                            "l",
                                            "h",
                                            "PgDn",
                                            "PgUp",
                                            "g",
                                            "G",
                                            "^D",
                                            "^U",
                                            "Home",
                                            "End",
                                            "s",
                                            "S",
                                            "+",
                                            "_",
                                            "=",
                                            "Backspace",
                                            "F",
                                            "R",
                                            "v",
                                            "Esc",
                                            "w",
                                            "W",
                                            "c",
                                            "H",
                                            "A",
                                            "[",
                                            "]",
                                            "K",
                                            "/ a Enter",
                                            "\\ b Enter",
                                            "n",
                                            "N",
                                            "f N a m e = a Enter",
                                            "# 2 Enter",
                                            "? Esc",
                                            "Backspace Backspace Backspace Backspace"};
        press(random_.pick(looks));
        opened_.screen(static_cast<std::size_t>(random_.between(10, 120)),
                       static_cast<std::size_t>(random_.between(5, 30)));
    }

    void edit() {
        const auto& sheet = opened_.sheet();
        Cells next = states_[now_];
        const unsigned row = sheet.row();
        const unsigned column = sheet.column();
        const bool isOnCell = row != sheet.nowhere && column < next[0].size();
        const auto rows = sheet.chosenRows();
        switch (random_.below(9)) {
            case 0:
            case 1: {
                if (!isOnCell) return;
                const std::string letter(1, random_.pick(std::string("ab1")));
                next[row + 1][column] += letter;
                press("e " + letter + " Enter");
                break;
            }
            case 2: {
                const unsigned at = row == sheet.nowhere ? sheet.log().rowCount() : row + 1;
                next.insert(next.begin() + 1 + at, std::vector<std::string>(next[0].size()));
                press("o");
                break;
            }
            case 3:
                if (next.size() < 4 && random_.oneIn(2)) return;
                for (auto gone = rows.size(); gone > 0; --gone) {
                    auto sorted = rows;
                    std::sort(sorted.begin(), sorted.end());
                    next.erase(next.begin() + 1 + sorted[gone - 1]);
                }
                press("d");
                break;
            case 4:
                tag(next, rows, sheet.hasMark() ? Tagging::tag : Tagging::invert);
                press("t");
                break;
            case 5:
            case 6:
                tagByCondition(next);
                break;
            case 7:
                if (!isOnCell) return;
                for (unsigned tagged : taggedIn(next)) next[tagged + 1][column] = "7";
                press(taggedIn(states_[now_]).empty() ? "E" : "E 7 Enter");
                break;
            default: {
                if (!isOnCell || next[0].size() > 9) return;
                const std::string name = next[0][column] + "x";
                if (name.size() > 12 || name.starts_with("Tag")) return;
                if (std::count(next[0].begin(), next[0].end(), name) > 0) return;
                next[0][column] = name;
                press("r x Enter");
            }
        }
        if (next == states_[now_]) return;
        states_.resize(now_ + 1);
        states_.push_back(next);
        ++now_;
    }

    enum class Tagging { tag, untag, invert };

    // Of the rows shown, all or those of a scene that begins with a letter.
    void tagByCondition(Cells& cells) {
        const bool tags = random_.oneIn(2);
        const std::string start =
            random_.oneIn(3) ? "" : std::string(1, random_.pick(std::string("ab12")));
        const auto scene = std::find(cells[0].begin(), cells[0].end(), "Scene");
        if (!start.empty() && scene == cells[0].end()) return;
        std::vector<unsigned> rows;
        const auto column = static_cast<std::size_t>(scene - cells[0].begin());
        for (unsigned row : opened_.sheet().shownRows()) {
            if (start.empty() || cells[row + 1][column].starts_with(start)) rows.push_back(row);
        }
        tag(cells, rows, tags ? Tagging::tag : Tagging::untag);
        press(tags ? "T" : "U");
        opened_.type(start.empty() ? "" : "Scene~^" + start);
        press("Enter");
    }

    static std::ptrdiff_t tagColumn(const Cells& cells) {
        const auto at = std::find(cells[0].begin(), cells[0].end(), "Tag");
        return at == cells[0].end() ? -1 : at - cells[0].begin();
    }

    static bool isTagged(const std::string& cell) { return std::atoi(cell.c_str()) != 0; }

    static std::vector<unsigned> taggedIn(const Cells& cells) {
        std::vector<unsigned> rows;
        const auto column = tagColumn(cells);
        for (unsigned row = 0; column >= 0 && row + 1 < cells.size(); ++row) {
            const auto& cell = cells[row + 1][static_cast<std::size_t>(column)];
            if (isTagged(cell)) rows.push_back(row);
        }
        return rows;
    }

    static void tag(Cells& cells, const std::vector<unsigned>& rows, Tagging how) {
        if (rows.empty() || (how == Tagging::untag && tagColumn(cells) < 0)) return;
        if (tagColumn(cells) < 0) {
            cells[0].emplace_back("Tag");
            for (std::size_t i = 1; i < cells.size(); ++i) cells[i].emplace_back();
        }
        for (unsigned row : rows) {
            std::string& cell = cells[row + 1][static_cast<std::size_t>(tagColumn(cells))];
            const bool was = isTagged(cell);
            const bool wants = how == Tagging::invert ? !was : how == Tagging::tag;
            if (was != wants) cell = wants ? "1" : "0";
        }
    }

    void undoOrRedo() {
        if (random_.oneIn(3)) {
            press("^R");
            if (now_ + 1 < states_.size()) ++now_;
        } else {
            press("u");
            if (now_ > 0) --now_;
        }
    }

    Opened& opened_;
    Random& random_;
    std::vector<Cells> states_;
    std::size_t now_ = 0;
};

// More rows than views follow one by one.
std::string manyClips() {
    std::string text = "Name,Scene,Notes\n";
    for (int i = 0; i < 150; ++i) {
        text += "clip" + std::to_string(i) + "," + std::to_string(i % 7) + ",n\n";
    }
    return text;
}

}  // namespace

TEST(BrowseWalk, EditsOfManyRowsAtOnceDoWhatThePlainModelDoes) {
    Random random;
    Opened opened(manyClips());
    Walk walk(opened, random);
    while (walk.keys < 1200 && !testing::Test::HasFailure()) {
        walk.step();
        if (random.oneIn(20)) walk.save();
        if (random.oneIn(100)) walk.kill();
    }
}

TEST(BrowseWalk, TaggedRowsThatAreCopiedAndTakenBackDoWhatThePlainModelDoes) {
    Random random;
    Opened opened(manyClips());
    opened.write("to.csv", "Notes,Name\nz,y\n");
    opened.press("^O");
    opened.type(opened.folder.file("to.csv").string());
    opened.press("Enter Tab");
    std::vector<Cells> states = {{{"Notes", "Name"}, {"z", "y"}}};
    std::size_t now = 0;
    for (int i = 0; i < 60 && !testing::Test::HasFailure(); ++i) {
        opened.press("_ R U Enter T");
        opened.type("Scene=" + std::to_string(random.below(9)));
        opened.press("Enter");
        Cells next = states[now];
        const Cells from = cellsOf(opened.sheet().log());
        for (unsigned row : opened.sheet().taggedRows()) {
            next.push_back({from[row + 1][2], from[row + 1][0]});
        }
        opened.press("y Tab");
        if (next != states[now]) {
            states.resize(now + 1);
            states.push_back(next);
            ++now;
        }
        for (auto presses = random.below(4); presses > 0; --presses) {
            const bool isRedo = random.oneIn(2);
            opened.press(isRedo ? "^R" : "u");
            if (isRedo && now + 1 < states.size()) ++now;
            if (!isRedo && now > 0) --now;
            ASSERT_EQ(states[now], cellsOf(opened.sheet().log()));
        }
        ASSERT_EQ(states[now], cellsOf(opened.sheet().log()));
        opened.press("Tab");
    }
}

TEST(BrowseWalk, TenThousandKeysDoWhatThePlainModelDoes) {
    Random random;
    Opened opened("Name,Scene,Notes\na,1,x\nb,2,\nc,1,y\nab,3,z\n");
    Walk walk(opened, random);
    while (walk.keys < 10000 && !testing::Test::HasFailure()) {
        walk.step();
        if (random.oneIn(300)) walk.kill();
    }
}

namespace {

// Logs that nobody makes by hand.
std::vector<std::string> strangeLogs() {
    std::string wide = "c0", values = "v0";
    for (int i = 1; i < 3000; ++i) {
        wide += ",c" + std::to_string(i);
        values += ",v";
    }
    const std::string invalid = "N\xFF,\xC3\n\xED\xA0\x80,\xF0\x9F\n\"\x1b[2J\",\x80\x80\n";
    return {"\n",
            "Name,Scene\n",
            wide + "\n" + values + "\n" + values + "\n",
            "Name,Long\na," + std::string(200000, 'x') + "\nb,\n",
            invalid,
            "a,b\n1\n1,2,3,4\n\n,\n2\n"};
}

// Every key there is, but those by which one leaves, and those that name a file.
std::vector<std::string> keysToPress() {
    using vek::browse::Act;
    std::vector<std::string> keys = {"x", "1", "=", "Backspace", "\xC3\xA4", "F12", "Esc", "Enter"};
    for (const vek::browse::KeyEntry& entry : vek::browse::keyTable()) {
        const bool leaves = entry.act == Act::quit || entry.act == Act::leave;
        const bool names = entry.act == Act::saveAs || entry.act == Act::saveShown;
        if (leaves || names || entry.act == Act::open) continue;
        keys.insert(keys.end(), entry.keys.begin(), entry.keys.end());
    }
    return keys;
}

void expectSound(Opened& opened, std::size_t width, std::size_t height) {
    const auto picture = opened.browser->picture(width, height);
    ASSERT_EQ(height, picture.lines.size());
    for (const auto& line : picture.lines) {
        for (const auto& piece : line) {
            ASSERT_LE(piece.x + vek::formats::displayWidth(piece.text), width);
            ASSERT_TRUE(std::none_of(piece.text.begin(), piece.text.end(), [](char c) {
                return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
            }));
        }
    }
    const auto& sheet = opened.sheet();
    ASSERT_TRUE(sheet.rows().size() == 0 || sheet.place() < sheet.rows().size());
    for (unsigned place = 0; place < sheet.rows().size(); ++place) {
        ASSERT_LT(sheet.rows().rowAt(place), sheet.log().rowCount());
    }
}

}  // namespace

TEST(BrowseWalk, NoKeyDoesHarmInAStrangeLog) {
    Random random;
    const std::vector<std::string> keys = keysToPress();
    for (const std::string& text : strangeLogs()) {
        Opened opened(text);
        std::string pressed;
        for (int i = 0; i < 300; ++i) {
            const std::string& key = random.pick(keys);
            pressed += key + " ";
            SCOPED_TRACE(pressed);
            opened.pressOne(key);
            opened.browser->takeCommand();
            if (random.oneIn(10)) opened.browser->click(random.below(50), random.below(20));
            if (random.oneIn(10)) opened.browser->turn(random.between(-5, 5));
            expectSound(opened, static_cast<std::size_t>(random.between(10, 100)),
                        static_cast<std::size_t>(random.between(5, 30)));
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}
