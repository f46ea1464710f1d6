#include "model/plain_model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The plain model against values worked out by hand, so that what the library is compared with
// is itself known to be right.

namespace {

using plain::Notice;
using plain::Table;
using plain::View;
using Rows = std::vector<int>;

/// A table whose rows are named after their numbers, and views over it.
class PlainModel : public testing::Test {
protected:
    void makeTable(int rows) {
        table_ = std::make_unique<Table>(
            std::vector<std::pair<std::string, unsigned>>{{"Name", 'a'}});
        table_->add_records(rows);
        for (int row = 0; row < rows; ++row) {
            table_->set_field(static_cast<unsigned>(row), 0, std::to_string(row).c_str());
        }
    }

    View& makeView(View* base = nullptr) {
        views_.push_back(std::make_unique<View>(table_.get()));
        views_.back()->hold();
        views_.back()->baseView(base);
        return *views_.back();
    }

    View& viewOfAll(View* base = nullptr) {
        View& view = makeView(base);
        view.displayAllRecords();
        return view;
    }

    static void show(View& view, const Rows& rows) {
        for (int row : rows) {
            view.append(row);
        }
    }

    static void tag(View& view, const Rows& rows) {
        for (int row : rows) {
            view.set_tag(static_cast<unsigned>(row), 1);
        }
    }

    static Rows sourceRows(const View& view) {
        Rows rows;
        for (int i = 0; i < view.count(); ++i) {
            rows.push_back(static_cast<int>(view.slots()[static_cast<std::size_t>(i)].row));
        }
        return rows;
    }

    static Rows tags(const View& view) {
        Rows tags;
        for (int i = 0; i < view.count(); ++i) {
            tags.push_back(static_cast<int>(view.get_tag(static_cast<unsigned>(i))));
        }
        return tags;
    }

    /// The names of the records shown; -1 where there is none.
    static Rows records(const View& view) {
        Rows names;
        for (int i = 0; i < view.count(); ++i) {
            const plain::Record* record = view.get_record(static_cast<unsigned>(i));
            names.push_back(record != nullptr ? std::stoi(record->value(0)) : -1);
        }
        return names;
    }

    void hear(plain::Notifier& notifier, const std::string& who) {
        for (const char* type : {"recordsDeleted", "recordsChanged"}) {
            notifier.listen(type, [this, who](const Notice& notice) {
                heard_.push_back(who + (notice.type == "recordsChanged" ? " changed" : " ") +
                                 notice.text);
            });
        }
    }

    std::unique_ptr<Table> table_;
    std::vector<std::unique_ptr<View>> views_;
    std::vector<std::string> heard_;
};

using Texts = std::vector<std::string>;

}  // namespace

TEST_F(PlainModel, AStackedViewTakesTableRowsForRowsOfItsBase) {
    makeTable(10);
    View& lower = makeView();
    show(lower, {8, 9});
    View& upper = makeView(&lower);
    show(upper, {0, 1});
    table_->delete_records(1, 1);
    EXPECT_EQ(sourceRows(lower), (Rows{7, 8}));
    EXPECT_EQ(records(upper), (Rows{8}));
}

TEST_F(PlainModel, EveryLevelOfAStackLosesMoreRows) {
    makeTable(12);
    View& first = viewOfAll();
    View& second = viewOfAll(&first);
    View& third = viewOfAll(&second);
    table_->delete_records(4, 1);
    EXPECT_EQ(first.count(), 11);
    EXPECT_EQ(second.count(), 9);
    EXPECT_EQ(third.count(), 5);
}

TEST_F(PlainModel, NegativeReportNumbersMatchNoRow) {
    makeTable(10);
    View& lower = viewOfAll();
    View& upper = viewOfAll(&lower);
    table_->delete_records(0, 2);
    EXPECT_EQ(records(upper), (Rows{2, 3, 4, 5, 6, 7}));
}

TEST_F(PlainModel, AViewTellsEachRowThenAllThenTheTableTellsOthers) {
    makeTable(10);
    View& view = viewOfAll();
    hear(view, "V");
    hear(*table_, "T");
    table_->delete_records(3, 2);
    EXPECT_EQ(heard_, (Texts{"V 3 ", "V 3 ", "V 2 3 ", "V changed", "T 3 4 "}));
}

TEST_F(PlainModel, TheReportOfAnUnorderedViewIsUnordered) {
    makeTable(10);
    View& view = makeView();
    show(view, {9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
    hear(view, "V");
    table_->delete_records(3, 3);
    EXPECT_EQ(heard_, (Texts{"V 6 ", "V 5 ", "V 4 ", "V 5 5 5 ", "V changed"}));
}

TEST_F(PlainModel, ARowShownTwiceGoesTwice) {
    makeTable(10);
    View& view = makeView();
    show(view, {3, 1, 3, 3});
    hear(view, "V");
    table_->delete_records(3, 1);
    EXPECT_EQ(heard_, (Texts{"V 0 ", "V 1 ", "V 1 ", "V -1 0 0 ", "V changed"}));
    EXPECT_EQ(sourceRows(view), (Rows{1}));
}

TEST_F(PlainModel, DeletingThroughAStackedViewHitsOtherRows) {
    makeTable(10);
    View& lower = viewOfAll();
    View& upper = viewOfAll(&lower);
    tag(upper, {2, 6});
    EXPECT_EQ(upper.deleteTagged(), 2);
    EXPECT_EQ(table_->get_num_records(), 8U);
    EXPECT_EQ(records(lower), (Rows{0, 1, 3, 5, 6, 7, 8, 9}));
}

TEST_F(PlainModel, TheOrderOfRegistrationDecides) {
    makeTable(8);
    View& lower = makeView();
    View& upper = makeView(&lower);
    show(lower, {2, 3, 4, 5, 6});
    show(upper, {0, 1, 2, 3, 4});
    View& early = *views_.emplace_back(std::make_unique<View>(table_.get()));
    View& late = makeView();
    show(late, {2, 3, 4, 5, 6});
    early.hold();
    early.baseView(&late);
    show(early, {0, 1, 2, 3, 4});
    table_->delete_records(3, 1);
    EXPECT_EQ(records(upper), (Rows{2, 4, 5}));
    EXPECT_EQ(records(early), (Rows{2, 4}));
}

TEST_F(PlainModel, NewRowsKeepTheTagsOfTheSlots) {
    makeTable(20);
    View& view = makeView();
    show(view, {0, 1, 2});
    tag(view, {0, 2});
    view.displayRecordsAt(10, 1, 0);
    EXPECT_EQ(tags(view), (Rows{1, 1, 0, 1}));
    view.displayRecordsAt(11, 2, 1);
    EXPECT_EQ(sourceRows(view), (Rows{10, 11, 12, 0, 1, 2}));
    EXPECT_EQ(tags(view), (Rows{1, 1, 0, 1, 0, 1}));
}

TEST_F(PlainModel, ARowAppendedAfterARemovalFindsTheOldTag) {
    makeTable(5);
    View& view = viewOfAll();
    tag(view, {4});
    view.remove(4, 1);
    view.append(0);
    EXPECT_EQ(tags(view), (Rows{0, 0, 0, 0, 1}));
}

TEST_F(PlainModel, RowsShownSinglyTakeOtherTagsThanABlock) {
    makeTable(5);
    View& singly = makeView();
    View& block = makeView();
    for (View* view : {&singly, &block}) {
        show(*view, {0, 1});
        tag(*view, {0});
    }
    for (int i = 0; i < 3; ++i) {
        singly.displayRecordsAt(2 + i, 1, i);
    }
    block.displayRecordsAt(2, 3, 0);
    EXPECT_EQ(tags(singly), (Rows{1, 1, 1, 1, 0}));
    EXPECT_EQ(tags(block), (Rows{1, 0, 0, 1, 0}));
}

TEST_F(PlainModel, BuildingAgainKeepsTagsWhileTheRoomIsSmall) {
    makeTable(30);
    View& small = viewOfAll();
    small.tagAll(true);
    small.buildIndex();
    EXPECT_EQ(small.countTags(), 30U);
    makeTable(60);
    View& large = viewOfAll();
    large.tagAll(true);
    large.buildIndex();
    EXPECT_EQ(large.countTags(), 0U);
}

TEST_F(PlainModel, TheRoomGrowsAndShrinksByTheRule) {
    struct Case {
        int room;
        int wanted;
        std::size_t given;
    };
    makeTable(0);
    for (const Case& c : {Case{0, 1, 20}, Case{20, 21, 40}, Case{20, 50, 50}, Case{40, 20, 40},
                          Case{41, 20, 20}, Case{101, 30, 50}, Case{100, 5, 50}}) {
        View& view = makeView();
        view.sizeIndexFor(c.room);
        view.sizeIndexFor(c.wanted);
        EXPECT_EQ(view.slots().size(), c.given) << c.room << " for " << c.wanted;
    }
}

TEST_F(PlainModel, RemovingTaggedRowsOfAStackTellsTwice) {
    makeTable(8);
    View& lower = viewOfAll();
    View& upper = viewOfAll(&lower);
    tag(upper, {1, 2, 5});
    hear(lower, "1");
    hear(upper, "2");
    EXPECT_EQ(upper.removeTagged(), 3);
    EXPECT_EQ(sourceRows(lower), (Rows{0, 3, 4, 6, 7}));
    EXPECT_EQ(sourceRows(upper), (Rows{0, 1, 2, 3, 4}));
    EXPECT_EQ(heard_, (Texts{"2 1 ", "2 1 ", "2 0 1 ", "2 changed", "1 1 2 ", "2 3 ", "2 2 ",
                             "2 changed", "1 3 "}));
}

TEST_F(PlainModel, AThirdLevelKeepsATaggedRow) {
    makeTable(8);
    View& first = viewOfAll();
    View& second = viewOfAll(&first);
    View& third = viewOfAll(&second);
    tag(third, {1, 2, 5});
    EXPECT_EQ(third.removeTagged(), 2);
    EXPECT_EQ(second.count(), 6);
    EXPECT_EQ(records(third), (Rows{0, 3, 4, 5}));
    EXPECT_EQ(third.countTags(), 1U);
}

TEST_F(PlainModel, RowsThatCannotBeDeletedAreCountedAllTheSame) {
    makeTable(4);
    View& view = viewOfAll();
    tag(view, {0, 1, 2});
    table_->set_all_tags(1);
    table_->set_show_tags_only(1);
    EXPECT_EQ(view.deleteTagged(), 6);
    EXPECT_EQ(table_->get_num_records(), 4U);
}

TEST_F(PlainModel, InsertedRowsRaiseEveryRowBehindThem) {
    makeTable(6);
    View& view = makeView();
    show(view, {5, 3, 1});
    view.insertBlankRecords(1, 1);
    EXPECT_EQ(sourceRows(view), (Rows{5, 3, 4, 2}));
}

TEST_F(PlainModel, NegativePlacesComeOutReversed) {
    makeTable(6);
    View& others = makeView();
    show(others, {2, 3, 4, 5});
    View& view = makeView();
    show(view, {0});
    EXPECT_EQ(view.displayAllFromAt(&others, -2), 4);
    EXPECT_EQ(sourceRows(view), (Rows{4, 5, 3, 2, 0}));
}

TEST_F(PlainModel, RepeatedEmptyValuesAreDuplicates) {
    makeTable(6);
    const char* const names[] = {"b", "A", "a", "", "B", ""};
    for (unsigned row = 0; row < 6; ++row) {
        table_->set_field(row, 0, names[row]);
    }
    View& view = viewOfAll();
    EXPECT_EQ(view.tagDuplicates(0), 3U);
    EXPECT_EQ(tags(view), (Rows{0, 0, 1, 0, 1, 1}));
    EXPECT_EQ(view.tag_all_different(0), 3U);
    EXPECT_EQ(tags(view), (Rows{1, 1, 0, 1, 0, 0}));
}

TEST_F(PlainModel, ViewAndTableTellInTurn) {
    makeTable(6);
    View& view = viewOfAll();
    tag(view, {0, 1, 4});
    hear(view, "V");
    hear(*table_, "T");
    EXPECT_EQ(view.deleteTagged(), 3);
    EXPECT_EQ(heard_, (Texts{"V 0 ", "V 0 ", "V -1 0 ", "V changed", "T 0 1 ", "V 2 ", "V 1 ",
                             "V changed", "T 2 "}));
    EXPECT_EQ(records(view), (Rows{2, 3, 5}));
}

TEST_F(PlainModel, ACopyTakesTagsByPosition) {
    makeTable(5);
    View& view = makeView();
    show(view, {2, 2, 0});
    tag(view, {1});
    View copy(table_.get());
    view.copyInto(copy);
    EXPECT_EQ(sourceRows(copy), (Rows{2, 0}));
    EXPECT_EQ(tags(copy), (Rows{0, 1}));
}

TEST_F(PlainModel, TheTableDeletesTaggedRowsRunByRun) {
    makeTable(5);
    for (unsigned row : {0U, 1U, 3U}) {
        table_->set_tag(row, 1);
    }
    table_->set_tag(4, 2);
    hear(*table_, "T");
    EXPECT_EQ(table_->delete_tagged_records(), 3U);
    EXPECT_EQ(heard_, (Texts{"T 0 1 ", "T 1 "}));
    EXPECT_EQ(table_->getField(1, 0), "4");
}

TEST_F(PlainModel, PeopleCountDigits) {
    const char* const order[] = {"", "2", "10", "10A", "10B", "a2", "A10", "b"};
    for (std::size_t i = 1; i < std::size(order); ++i) {
        EXPECT_LT(plain::peopleOrder(order[i - 1], order[i]), 0) << order[i];
        EXPECT_GT(plain::peopleOrder(order[i], order[i - 1]), 0) << order[i];
    }
    EXPECT_EQ(plain::peopleOrder("a2", "A2"), 0);
    EXPECT_NE(plain::peopleOrder("a02", "A2"), 0);
}
