// Ten thousand keys at random, compared with plain lists: cells, tags, what undo and redo bring
// back, what is recovered after a kill and what is saved.
#include <gtest/gtest.h>

#include <algorithm>

#include "browse/opened.h"
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
        switch (random_.below(6)) {
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
                tag(next, rows, !sheet.hasMark());
                press("t");
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

    static void tag(Cells& cells, const std::vector<unsigned>& rows, bool inverts) {
        if (rows.empty()) return;
        auto at = std::find(cells[0].begin(), cells[0].end(), "Tag") - cells[0].begin();
        if (at == static_cast<std::ptrdiff_t>(cells[0].size())) {
            cells[0].emplace_back("Tag");
            for (std::size_t i = 1; i < cells.size(); ++i) cells[i].emplace_back();
        }
        for (unsigned row : rows) {
            std::string& cell = cells[row + 1][static_cast<std::size_t>(at)];
            const bool was = std::atoi(cell.c_str()) != 0;
            const bool wants = inverts ? !was : true;
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

}  // namespace

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
    return {"\n", "Name,Scene\n", wide + "\n" + values + "\n" + values + "\n",
            "Name,Long\na," + std::string(200000, 'x') + "\nb,\n", invalid};
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
