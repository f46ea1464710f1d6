#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <stdexcept>

#include <vekdb/edit_log.h>
#include <vekdb/host/cookie.h>
#include <vekdb/host/row_numbers.h>
#include "testing/tables.h"
#include "vekdb/edits/plain_edits.h"

using testing::ElementsAre;

namespace {

constexpr const char* first = "0123456789abcdef0123456789abcdef000041";
constexpr const char* second = "fedcba9876543210fedcba9876543210000041";

class EditLogTest : public testing::Test {
protected:
    EditLogTest() : table(textColumns({"Name", "Scene", "cookie"})) {
        addRow(table, {"a", "1", first});
        addRow(table, {"b", "2", second});
        addRow(table, {"c", "3", ""});
        table.set_tag(1, 1);
        log = std::make_unique<EditLog>(table);
        before = plainOf(table);
    }

    // What was done is taken back, done again, and taken back once more.
    void expectThereAndBack() {
        const PlainLog after = plainOf(table);
        EXPECT_NE(before, after);
        EXPECT_GT(log->undo().edits, 0u);
        EXPECT_EQ(before, plainOf(table));
        EXPECT_GT(log->redo().edits, 0u);
        EXPECT_EQ(after, plainOf(table));
        log->undo();
        EXPECT_EQ(before, plainOf(table));
        EXPECT_FALSE(log->canUndo());
        EXPECT_FALSE(log->hasUnsavedEdits());
    }

    unsigned rowOf(const char* cookie) { return table.getRowIndexByID(Cookie(cookie, false)); }

    vekdb table;
    std::unique_ptr<EditLog> log;
    PlainLog before;
};

// Keeps a number for each row, as an application may.
struct RowNumbersKept final : EditLog::Follower {
    void rowsInserted(std::size_t edit, unsigned first, unsigned count) override {
        std::vector<int> back = gone.count(edit) != 0 ? gone[edit] : std::vector<int>(count, -1);
        numbers.insert(numbers.begin() + first, back.begin(), back.end());
        if (throws) throw std::runtime_error("heard");
    }
    void rowsDeleted(std::size_t edit, unsigned first, unsigned count) override {
        const auto from = numbers.begin() + first;
        gone[edit].assign(from, from + count);
        numbers.erase(from, from + count);
    }

    std::vector<int> numbers = {0, 1, 2};
    std::map<std::size_t, std::vector<int>> gone;
    bool throws = false;
};

}  // namespace

TEST_F(EditLogTest, AFollowerKeepsSomethingForEachRow) {
    RowNumbersKept follower;
    log->follow(&follower);
    log->deleteRows(0, 2);
    log->insertRows(0, 1);
    EXPECT_THAT(follower.numbers, ElementsAre(-1, 2));
    log->undo();
    log->undo();
    EXPECT_THAT(follower.numbers, ElementsAre(0, 1, 2));
    log->redo();
    EXPECT_THAT(follower.numbers, ElementsAre(2));
}

TEST_F(EditLogTest, AFollowerIsToldOfEachChange) {
    struct Notes final : EditLog::Follower {
        void rowsInserted(std::size_t, unsigned, unsigned) override { text += "inserted "; }
        void rowsDeleted(std::size_t, unsigned, unsigned) override { text += "deleted "; }
        void cellChanged(unsigned row, unsigned column) override {
            text += "cell" + std::to_string(row) + std::to_string(column) + ' ';
        }
        void tagChanged(unsigned row) override { text += "tag" + std::to_string(row) + ' '; }
        void columnsChanged() override { text += "columns "; }
        std::string text;
    } notes;
    log->follow(&notes);
    log->set(1, 2, "x");
    log->setTag(2, 1);
    log->renameColumn(0, "x");
    log->insertRows(0, 1);
    while (log->canUndo()) log->undo();
    EXPECT_EQ("cell12 tag2 columns inserted deleted columns tag2 cell12 ", notes.text);
}

TEST_F(EditLogTest, WhatAFollowerThrowsLeavesTheEditDone) {
    RowNumbersKept follower;
    follower.throws = true;
    log->follow(&follower);
    EXPECT_THROW(log->insertRows(0, 1), std::runtime_error);
    follower.throws = false;
    EXPECT_EQ(4u, table.get_num_records());
    EXPECT_EQ(1u, log->undo().edits);
    EXPECT_EQ(before, plainOf(table));
}

TEST_F(EditLogTest, ACellComesBackByteForByte) {
    log->set(0, 0, std::string_view("  with blanks and a \0 in it ", 28));
    EXPECT_EQ(28u, table.getField(0, 0).length());
    expectThereAndBack();
}

TEST_F(EditLogTest, ATagComesBack) {
    log->setTag(0, 255);
    EXPECT_EQ(255u, table.get_tag(0));
    expectThereAndBack();
}

TEST_F(EditLogTest, DeletedRowsComeBackWithValuesAndTags) {
    EXPECT_EQ(2u, log->deleteRows(1, 100));
    expectThereAndBack();
}

TEST_F(EditLogTest, InsertedRowsGoAndComeBack) {
    EXPECT_TRUE(log->insertRows(1, 2));
    EXPECT_THAT(columnOf(table, 0), ElementsAre("a", "", "", "b", "c"));
    expectThereAndBack();
}

TEST_F(EditLogTest, ARowIsInsertedWithItsValues) {
    const std::string_view values[] = {" x", "", "", "for a column that is not there"};
    EXPECT_TRUE(log->insertRow(3, values, 4));
    EXPECT_THAT(columnOf(table, 0), ElementsAre("a", "b", "c", " x"));
    expectThereAndBack();
}

TEST_F(EditLogTest, AnAddedColumnGoesAndComesBack) {
    EXPECT_EQ(3u, log->addColumn({"Take", DBFieldTypes::numeric}));
    expectThereAndBack();
}

TEST_F(EditLogTest, ARemovedColumnComesBackToItsPlaceWithItsValues) {
    EXPECT_TRUE(log->removeColumn(1));
    expectThereAndBack();
}

TEST_F(EditLogTest, OfTwoColumnsOfOneNameTheOneThatIsMeantIsRemoved) {
    table.set_fieldname(1, "Name");
    before = plainOf(table);
    EXPECT_TRUE(log->removeColumn(0));
    EXPECT_THAT(columnOf(table, 0), ElementsAre("1", "2", "3"));
    EXPECT_STREQ("Name", table.get_fieldname(0));
    expectThereAndBack();
}

TEST_F(EditLogTest, ANewNameAndTypeOfAColumnAreTakenBack) {
    {
        const EditLog::Step step(*log);
        EXPECT_TRUE(log->renameColumn(1, "Szene"));
        EXPECT_TRUE(log->setColumnType(1, DBFieldTypes::numeric));
    }
    expectThereAndBack();
}

TEST_F(EditLogTest, ANameThatWasTakenBackFindsNoColumnAnyMore) {
    log->renameColumn(1, "Szene");
    EXPECT_EQ(1u, table.get_fieldnum("Scene"));
    log->undo();
    EXPECT_EQ(EditLog::none, table.get_fieldnum("Szene"));
    EXPECT_EQ(3u, log->addColumn({"Szene", DBFieldTypes::text}));
}

TEST_F(EditLogTest, AColumnWhoseNameIsTakenIsNotAdded) {
    EXPECT_EQ(EditLog::none, log->addColumn({"name", DBFieldTypes::text}));
    EXPECT_EQ(0u, log->editCount());
}

TEST_F(EditLogTest, SeveralEditsAreOneStep) {
    {
        const EditLog::Step step(*log);
        log->set(0, 0, "x");
        {
            const EditLog::Step inner(*log);
            log->insertRows(0, 1);
        }
        log->set(0, 1, "y");
        EXPECT_EQ(0u, log->undo().edits);
    }
    expectThereAndBack();
}

TEST_F(EditLogTest, AStepIsTakenBackALittleAtATime) {
    {
        const EditLog::Step step(*log);
        for (const char* text : {"x", "y", "z"}) log->set(0, 0, text);
    }
    const PlainLog after = plainOf(table);
    EXPECT_EQ(3u, log->editsToUndo());
    const EditLog::Outcome some = log->undo(2);
    EXPECT_EQ(2u, some.edits);
    EXPECT_FALSE(some.isStepOver);
    EXPECT_EQ("x", table.getField(0, 0));
    EXPECT_EQ(2u, log->editsToRedo());
    EXPECT_TRUE(log->undo(2).isStepOver);
    EXPECT_EQ(before, plainOf(table));
    EXPECT_EQ(0u, log->editsToUndo());
    EXPECT_FALSE(log->redo(1).isStepOver);
    EXPECT_TRUE(log->redo(5).isStepOver);
    EXPECT_EQ(after, plainOf(table));
    EXPECT_EQ(0u, log->undo(0).edits);
}

TEST_F(EditLogTest, ManyEditsAreDroppedByANewOneAndTheOthersStay) {
    for (std::size_t kept : {0, 1, 1023, 1024, 1025, 3000}) {
        table.setField(0, 0, "");
        EditLog long_(table);
        for (int i = 0; i < 5000; ++i) long_.set(0, 0, std::to_string(i));
        while (long_.editCount() > kept) long_.undo();
        long_.set(0, 0, "other");
        EXPECT_EQ(kept + 1, long_.editCount());
        EXPECT_FALSE(long_.canRedo());
        for (std::size_t i = kept; i > 0; --i) {
            long_.undo();
            ASSERT_EQ(std::to_string(i - 1), table.getField(0, 0).c_str());
        }
        long_.undo();
        EXPECT_EQ("", table.getField(0, 0));
    }
}

TEST_F(EditLogTest, EditsWithoutAStepAreOneEach) {
    log->set(0, 0, "x");
    log->set(0, 0, "y");
    EXPECT_EQ(1u, log->undo().edits);
    EXPECT_THAT(columnOf(table, 0), ElementsAre("x", "b", "c"));
}

TEST_F(EditLogTest, AnEditThatChangesNothingIsNone) {
    EXPECT_TRUE(log->set(0, 0, "a"));
    EXPECT_TRUE(log->setTag(1, 1));
    EXPECT_TRUE(log->insertRows(0, 0));
    EXPECT_TRUE(log->renameColumn(0, "Name"));
    EXPECT_FALSE(log->canUndo());
    EXPECT_FALSE(log->hasUnsavedEdits());
}

TEST_F(EditLogTest, WhatIsNotThereIsRefused) {
    EXPECT_FALSE(log->set(3, 0, "x"));
    EXPECT_FALSE(log->set(0, 3, "x"));
    EXPECT_FALSE(log->setTag(3, 1));
    EXPECT_FALSE(log->insertRows(4, 1));
    EXPECT_FALSE(log->insertRow(4, nullptr, 0));
    EXPECT_EQ(0u, log->deleteRows(3, 1));
    EXPECT_FALSE(log->renameColumn(3, "x"));
    EXPECT_FALSE(log->removeColumn(3));
    EXPECT_EQ(before, plainOf(table));
    EXPECT_FALSE(log->canUndo());
}

TEST_F(EditLogTest, WhileTaggedRowsAloneAreShownNothingIsEdited) {
    table.set_show_tags_only(1);
    EXPECT_FALSE(log->set(0, 0, "x"));
    EXPECT_FALSE(log->insertRows(0, 1));
    EXPECT_EQ(0u, log->deleteRows(0, 1));
    EXPECT_FALSE(log->removeColumn(0));
}

TEST_F(EditLogTest, ANewEditDropsWhatWasTakenBack) {
    log->set(0, 0, "x");
    log->set(0, 0, "y");
    log->undo();
    log->set(0, 1, "z");
    EXPECT_FALSE(log->canRedo());
    log->undo();
    EXPECT_THAT(columnOf(table, 0), ElementsAre("x", "b", "c"));
}

TEST_F(EditLogTest, WhatWasSavedIsKnownAgainByUndoAndRedo) {
    log->set(0, 0, "x");
    log->markSaved();
    EXPECT_FALSE(log->hasUnsavedEdits());
    log->undo();
    EXPECT_TRUE(log->hasUnsavedEdits());
    log->redo();
    EXPECT_FALSE(log->hasUnsavedEdits());
    log->undo();
    log->set(0, 0, "y");
    EXPECT_TRUE(log->hasUnsavedEdits());
    log->undo();
    EXPECT_TRUE(log->hasUnsavedEdits());
}

TEST_F(EditLogTest, WhatIsForgottenCannotBeTakenBackAndIsStillNotSaved) {
    log->set(0, 0, "x");
    log->forget();
    EXPECT_FALSE(log->canUndo());
    EXPECT_TRUE(log->hasUnsavedEdits());
    log->markSaved();
    log->forget();
    EXPECT_FALSE(log->hasUnsavedEdits());
}

TEST_F(EditLogTest, IdentitiesFindTheirRowsAfterEachUndoAndRedo) {
    EXPECT_EQ(1u, rowOf(second));
    log->deleteRows(0, 1);
    EXPECT_EQ(0u, rowOf(second));
    EXPECT_EQ(EditLog::none, rowOf(first));
    log->undo();
    EXPECT_EQ(0u, rowOf(first));
    EXPECT_EQ(1u, rowOf(second));
    EXPECT_TRUE(log->setCookie(2, Cookie(second, false)));
    log->set(1, 2, "");
    EXPECT_EQ(2u, rowOf(second));
    log->undo();
    EXPECT_EQ(1u, rowOf(second));
    log->removeColumn(2);
    EXPECT_EQ(EditLog::none, rowOf(second));
    log->undo();
    EXPECT_EQ(1u, rowOf(second));
}

TEST_F(EditLogTest, DeletionsAreToldAndThoseByUndoToo) {
    NoticeTexts told(table, kRecordsDeleted);
    log->deleteRows(0, 1);
    log->undo();
    EXPECT_EQ(1u, told.texts.size());
    log->redo();
    EXPECT_EQ(2u, told.texts.size());
    log->insertRows(0, 1);
    log->undo();
    EXPECT_EQ(3u, told.texts.size());
}

TEST_F(EditLogTest, AnOutcomeSaysWhatWasTouched) {
    log->set(1, 2, "x");
    EditLog::Outcome outcome = log->undo();
    EXPECT_EQ(1u, outcome.row);
    EXPECT_EQ(2u, outcome.column);
    EXPECT_FALSE(outcome.hasMovedRows);
    log->deleteRows(2, 1);
    EXPECT_TRUE(log->undo().hasMovedRows);
    log->renameColumn(1, "x");
    outcome = log->undo();
    EXPECT_TRUE(outcome.hasOtherColumns);
    EXPECT_EQ(EditLog::none, outcome.row);
}

TEST_F(EditLogTest, TheTableCountsAsModifiedByEveryEdit) {
    const auto isModifiedBy = [&](auto edit) {
        table.clear_changed();
        edit();
        return table.get_modified();
    };
    EXPECT_TRUE(isModifiedBy([&] { log->insertRows(0, 1); }));
    EXPECT_TRUE(isModifiedBy([&] { log->undo(); }));
    EXPECT_TRUE(isModifiedBy([&] { log->renameColumn(0, "x"); }));
    EXPECT_TRUE(isModifiedBy([&] { log->undo(); }));
    EXPECT_TRUE(isModifiedBy([&] { log->set(0, 0, "x"); }));
}
