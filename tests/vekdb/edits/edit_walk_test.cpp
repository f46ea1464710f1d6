// Edits, steps, undo and redo at random, with whole copies of a plain model kept for each step.
#include <gtest/gtest.h>

#include <memory>

#include <vekdb/edit_log.h>
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"
#include "vekdb/edits/plain_edits.h"

namespace {

using testing_support::Random;

class Walk {
public:
    Walk(vekdb& table, Random& random) : table_(table), log_(table), random_(random) {
        states_.push_back(plainOf(table));
    }

    void step() {
        if (random_.oneIn(3)) return random_.oneIn(3) ? redo() : undo();
        if (random_.oneIn(40)) return save();
        edit();
    }

    void undoAll() {
        while (log_.canUndo()) undo();
        EXPECT_EQ(0u, now_);
        while (log_.canRedo()) redo();
        EXPECT_EQ(states_.size() - 1, now_);
    }

private:
    PlainLog& model() { return model_; }

    void edit() {
        model_ = states_[now_];
        {
            std::unique_ptr<EditLog::Step> step;
            if (random_.oneIn(3)) step = std::make_unique<EditLog::Step>(log_);
            for (std::size_t n = step ? random_.below(5) : 1; n > 0; --n) editOnce();
        }
        ASSERT_EQ(model_, plainOf(table_));
        if (model_ == states_[now_] && log_.editCount() == counts_[now_]) return;
        states_.resize(now_ + 1);
        counts_.resize(now_ + 1);
        states_.push_back(model_);
        counts_.push_back(log_.editCount());
        if (saved_ > static_cast<int>(now_)) saved_ = -1;
        ++now_;
        check();
    }

    void editOnce() {
        switch (random_.below(9)) {
            case 0:
                return tag();
            case 1:
                return insert();
            case 2:
                return remove();
            case 3:
                return random_.oneIn(4) ? addColumn() : set();
            case 4:
                return random_.oneIn(4) ? removeColumn() : set();
            case 5:
                return random_.oneIn(2) ? rename() : retype();
            case 6:
                return insertFilled();
            default:
                return set();
        }
    }

    unsigned row() { return static_cast<unsigned>(random_.below(model_.rows.size() + 1)); }
    unsigned column() { return static_cast<unsigned>(random_.below(model_.columns.size() + 1)); }
    std::string text() { return random_.text("ab \t1\"\\,", random_.oneIn(9) ? 60 : 4); }
    std::string name() { return "c" + std::to_string(random_.below(12)); }

    void set() {
        const unsigned r = row(), c = column();
        const std::string value = text();
        const bool isCell = r < model_.rows.size() && c < model_.columns.size();
        ASSERT_EQ(isCell, log_.set(r, c, value));
        if (isCell) model_.rows[r].cells[c] = value;
    }
    void tag() {
        const unsigned r = row();
        const auto tag = static_cast<unsigned>(random_.below(3));
        ASSERT_EQ(r < model_.rows.size(), log_.setTag(r, static_cast<int>(tag)));
        if (r < model_.rows.size()) model_.rows[r].tag = tag;
    }
    void insert() {
        const unsigned at = row();
        const std::size_t count = random_.below(4);
        ASSERT_TRUE(log_.insertRows(at, static_cast<unsigned>(count)));
        const PlainLog::Row blank{std::vector<std::string>(model_.columns.size()), 0};
        model_.rows.insert(model_.rows.begin() + at, count, blank);
    }
    void insertFilled() {
        const unsigned at = row();
        PlainLog::Row made{std::vector<std::string>(model_.columns.size()), 0};
        for (std::string& cell : made.cells) cell = text();
        const std::vector<std::string_view> values(made.cells.begin(), made.cells.end());
        ASSERT_TRUE(log_.insertRow(at, values.data(), values.size()));
        model_.rows.insert(model_.rows.begin() + at, made);
    }
    void remove() {
        const unsigned at = row();
        const std::size_t count = std::min(random_.below(4), model_.rows.size() - at);
        ASSERT_EQ(count, log_.deleteRows(at, static_cast<unsigned>(count)));
        const auto from = model_.rows.begin() + at;
        model_.rows.erase(from, from + static_cast<std::ptrdiff_t>(count));
    }
    void addColumn() {
        const std::string to = name();
        if (log_.addColumn({to.c_str(), DBFieldTypes::text}) == EditLog::none) return;
        model_.columns.push_back({to});
        for (PlainLog::Row& r : model_.rows) r.cells.emplace_back();
    }
    void removeColumn() {
        const unsigned c = column();
        if (model_.columns.size() == 1 || !log_.removeColumn(c)) return;
        model_.columns.erase(model_.columns.begin() + c);
        for (PlainLog::Row& r : model_.rows) r.cells.erase(r.cells.begin() + c);
    }
    void rename() {
        const unsigned c = column();
        const std::string to = name();
        ASSERT_EQ(c < model_.columns.size(), log_.renameColumn(c, to.c_str()));
        if (c < model_.columns.size()) model_.columns[c].name = to;
    }
    void retype() {
        const unsigned c = column();
        const auto type = random_.oneIn(2) ? DBFieldTypes::numeric : DBFieldTypes::text;
        ASSERT_EQ(c < model_.columns.size(), log_.setColumnType(c, type));
        if (c < model_.columns.size()) model_.columns[c].type = type;
    }

    void undo() {
        ASSERT_EQ(now_ > 0, log_.undo().edits > 0);
        if (now_ > 0) --now_;
        check();
    }
    void redo() {
        ASSERT_EQ(now_ + 1 < states_.size(), log_.redo().edits > 0);
        if (now_ + 1 < states_.size()) ++now_;
        check();
    }
    void save() {
        log_.markSaved();
        saved_ = static_cast<int>(now_);
    }
    void check() {
        ASSERT_EQ(states_[now_], plainOf(table_));
        ASSERT_EQ(counts_[now_], log_.editCount());
        ASSERT_EQ(saved_ != static_cast<int>(now_), log_.hasUnsavedEdits());
    }

    vekdb& table_;
    EditLog log_;
    Random& random_;
    PlainLog model_;
    std::vector<PlainLog> states_;
    std::vector<std::size_t> counts_ = {0};
    std::size_t now_ = 0;
    int saved_ = 0;
};

void walk(vekdb& table, Random& random, int steps) {
    Walk walk(table, random);
    for (int i = 0; i < steps && !testing::Test::HasFailure(); ++i) walk.step();
    walk.undoAll();
}

}  // namespace

TEST(EditWalk, ATableMadeInMemoryIsAlwaysWhatTheModelIs) {
    Random random;
    for (int i = 0; i < 5; ++i) {
        vekdb table(textColumns({"c0", "c1", "c2"}));
        for (int row = 0; row < 8; ++row) addRow(table, {"a", "b", "c"});
        walk(table, random, 400);
    }
}

// Its records stand on the text of the file.
TEST(EditWalk, ATableThatWasLoadedIsAlwaysWhatTheModelIs) {
    Random random;
    const testing_support::TempDir folder;
    vekdb made(textColumns({"c0", "c1", "c2", "c3"}));
    made.add_param("Project", "x");
    for (int row = 0; row < 12; ++row) addRow(made, {"one", "", "three", "4"});
    made.set_filename(folder.widePath("log"));
    made.save_text();
    for (int i = 0; i < 5; ++i) {
        vekdb table(folder.widePath("log"), 1000, true);
        ASSERT_EQ(12u, table.get_num_records());
        walk(table, random, 400);
    }
}
