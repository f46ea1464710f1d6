#include <vekdb/views/cursor.h>

#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>
#include <string>
#include <vector>

#include <vekdb/table.h>
#include <vekdb/views/view_rep.h>

namespace {

class ViewCursor : public testing::Test {
protected:
    ViewCursor() : table_(std::vector<DBFieldDesc>{{"Name", DBFieldTypes::text}}), view_(&table_) {}

    void show(const std::vector<const char*>& names) {
        table_.add_records(static_cast<int>(names.size()));
        for (unsigned row = 0; row < names.size(); ++row) {
            table_.set_field(row, 0, names[row]);
        }
        view_->displayAllRecords();
    }

    void tagRows(const std::vector<int>& tags) {
        for (unsigned row = 0; row < tags.size(); ++row) {
            view_->set_tag(row, tags[row]);
        }
    }

    std::vector<int> forwards(VDBViewCursor cursor) {
        std::vector<int> rows;
        while ((++cursor).index() >= 0) {
            rows.push_back(cursor.index());
        }
        return rows;
    }

    std::vector<int> backwards(VDBViewCursor cursor) {
        std::vector<int> rows;
        while ((--cursor).index() >= 0) {
            rows.push_back(cursor.index());
        }
        return rows;
    }

    vekdb table_;
    VDBView view_;
};

/// Remembers which rows were read.
class ReadingView : public VDBViewRep {
public:
    using VDBViewRep::VDBViewRep;

    LightweightString<char> getField(unsigned row, unsigned field) const override {
        rowsRead.push_back(row);
        return VDBViewRep::getField(row, field);
    }

    mutable std::vector<unsigned> rowsRead;
};

using Rows = std::vector<int>;

}  // namespace

TEST_F(ViewCursor, StartsBeforeTheFirstRow) {
    show({"a", "b"});
    const VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.index(), -1);
    EXPECT_EQ(cursor.record(), nullptr);
}

TEST_F(ViewCursor, SetIndexTakesRowsOfTheViewOnly) {
    show({"a", "b", "c"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(2).index(), 2);
    EXPECT_EQ(cursor.record(), table_.get_record(2));
    EXPECT_EQ(cursor.set_index(3).index(), -1);
    EXPECT_EQ(cursor.set_index(0).index(), 0);
    EXPECT_EQ(cursor.set_index(-3).index(), -1);
}

TEST_F(ViewCursor, StepsThroughEveryRowAndPastTheEnd) {
    show({"a", "b", "c"});
    EXPECT_EQ(forwards(VDBViewCursor(view_)), (Rows{0, 1, 2}));
    EXPECT_EQ(backwards(VDBViewCursor(view_)), (Rows{2, 1, 0}));
}

TEST_F(ViewCursor, SteppingBackFromTheFirstRowEndsAndFromTheEndIsTheLast) {
    show({"a", "b", "c"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ((--cursor.set_index(0)).index(), -1);
    EXPECT_EQ((--cursor).index(), 2);
}

TEST_F(ViewCursor, SteppingForwardFromTheEndIsTheFirstRow) {
    show({"a", "b"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ((++cursor.set_index(1)).index(), -1);
    EXPECT_EQ((++cursor).index(), 0);
}

TEST_F(ViewCursor, AnEmptyViewHasNowhereToGo) {
    for (bool tagsOnly : {false, true}) {
        VDBViewCursor cursor(view_, tagsOnly);
        EXPECT_EQ((++cursor).index(), -1);
        EXPECT_EQ((--cursor).index(), -1);
        EXPECT_EQ(cursor.set_index(0).index(), -1);
    }
}

TEST_F(ViewCursor, TagsOnlyStopsAtTaggedRowsOnly) {
    show({"a", "b", "c"});
    tagRows({0, 1, 0});
    VDBViewCursor cursor(view_, true);
    EXPECT_EQ((++cursor).index(), 1);
    EXPECT_EQ((++cursor).index(), -1);
    EXPECT_EQ((--cursor).index(), 1);
    EXPECT_EQ((--cursor).index(), -1);
}

TEST_F(ViewCursor, TagsOnlyMeetsTheFirstAndTheLastRow) {
    show({"a", "b", "c", "d"});
    tagRows({1, 0, 0, 1});
    EXPECT_EQ(forwards(VDBViewCursor(view_, true)), (Rows{0, 3}));
    EXPECT_EQ(backwards(VDBViewCursor(view_, true)), (Rows{3, 0}));
}

TEST_F(ViewCursor, TagsOnlyWithoutATaggedRowEndsAtOnce) {
    show({"a", "b"});
    EXPECT_EQ(forwards(VDBViewCursor(view_, true)), Rows());
    EXPECT_EQ(backwards(VDBViewCursor(view_, true)), Rows());
}

TEST_F(ViewCursor, TagsOnlyCanBeTurnedOnAndOff) {
    show({"a", "b", "c"});
    tagRows({0, 0, 1});
    VDBViewCursor cursor(view_);
    cursor.setTagsOnly(true);
    EXPECT_EQ((++cursor).index(), 2);
    cursor.setTagsOnly(false);
    EXPECT_EQ((--cursor).index(), 1);
}

TEST_F(ViewCursor, StepsBackFromARowThatIsGone) {
    show({"a", "b", "c", "d"});
    tagRows({1, 0, 0, 0});
    VDBViewCursor all(view_);
    VDBViewCursor tagged(view_, true);
    all.set_index(3);
    tagged.set_index(3);
    view_->remove(1, 3);
    EXPECT_EQ(all.record(), nullptr);
    EXPECT_EQ((--all).index(), 2);
    EXPECT_EQ((--tagged).index(), 0);
}

TEST_F(ViewCursor, RemoveStaysWhereTheNextRowNowStands) {
    show({"a", "b", "c"});
    VDBViewCursor cursor(view_);
    cursor.set_index(0).remove();
    EXPECT_EQ(cursor.index(), 0);
    EXPECT_EQ(cursor.record(), table_.get_record(1));
    EXPECT_EQ(view_->get_num_records(), 2U);
    EXPECT_EQ(table_.get_num_records(), 3U);
}

TEST_F(ViewCursor, RemoveOfTheLastRowEnds) {
    show({"a", "b"});
    VDBViewCursor cursor(view_);
    cursor.set_index(1).remove();
    EXPECT_EQ(cursor.index(), -1);
    cursor.remove();
    EXPECT_EQ(view_->get_num_records(), 1U);
}

TEST_F(ViewCursor, RemoveTellsTheViewsAbove) {
    show({"a", "b", "c"});
    VDBView above(&table_);
    above->baseView(view_.get());
    above->displayAllRecords();
    VDBViewCursor cursor(view_);
    cursor.set_index(1).remove();
    ASSERT_EQ(above->get_num_records(), 2U);
    EXPECT_EQ(above->get_record(1), table_.get_record(2));
}

TEST_F(ViewCursor, FindGoesToTheRecordWhateverIsTagged) {
    show({"a", "b", "c"});
    tagRows({1, 0, 0});
    VDBViewCursor cursor(view_, true);
    EXPECT_EQ(cursor.find(table_.get_record(2)), 2);
    EXPECT_EQ(cursor.index(), 2);
}

TEST_F(ViewCursor, FindAlwaysStartsAtTheFirstRow) {
    show({"a", "b", "c"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(2).find(table_.get_record(0)), 0);
}

TEST_F(ViewCursor, FindOfARecordNotShownEnds) {
    show({"a", "b", "c"});
    view_->remove(1, 1);
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(0).find(table_.get_record(1)), -1);
    EXPECT_EQ(cursor.index(), -1);
    EXPECT_EQ(cursor.find(nullptr), -1);
}

TEST_F(ViewCursor, FindStopsAtARowWithoutARecord) {
    show({"a", "b"});
    view_->displayRecordsAt(7, 1, 1);
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.find(table_.get_record(0)), 0);
    EXPECT_EQ(cursor.find(table_.get_record(1)), -1);
}

TEST_F(ViewCursor, FindFieldStartsAtTheCurrentRowAndIgnoresCase) {
    show({"Apple", "pear", "APPLE"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(0).findField("Name", "aPPle"), 0);
    EXPECT_EQ(cursor.findField("Name", "apple"), 0);
    EXPECT_EQ((++cursor).findField("name", "apple"), 2);
    EXPECT_EQ(cursor.findField("Name", "pear"), -1);
    EXPECT_EQ(cursor.index(), -1);
}

TEST_F(ViewCursor, FindFieldFromTheEndFindsNothing) {
    show({"a"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.findField("Name", "a"), -1);
}

TEST_F(ViewCursor, FindFieldOfAMissingColumnEnds) {
    show({"a"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(0).findField("Reel", "a"), -1);
    EXPECT_EQ(cursor.index(), -1);
}

TEST_F(ViewCursor, FindFieldFindsAnEmptyFieldByTheEmptyText) {
    show({"a", "", "b"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(0).findField("Name", ""), 1);
}

TEST_F(ViewCursor, FindFieldLooksAtTaggedRowsOnlyOnceItSteps) {
    show({"x", "a", "a", "x"});
    tagRows({0, 0, 1, 1});
    VDBViewCursor cursor(view_, true);
    EXPECT_EQ(cursor.set_index(0).findField("Name", "a"), 2);
    EXPECT_EQ(cursor.set_index(1).findField("Name", "a"), 1);
}

TEST_F(ViewCursor, FindFieldSortedEndsWithoutFinding) {
    show({"a", "b", "c", "d", "e"});
    auto* view = new ReadingView(&table_);
    const VDBView handle(view);
    view->displayAllRecords();
    VDBViewCursor cursor(handle);
    EXPECT_EQ(cursor.findFieldSorted("Name", "bb"), -1);
    EXPECT_EQ(cursor.index(), -1);
    EXPECT_EQ(view->rowsRead, (std::vector<unsigned>{2, 0, 1}));
}

TEST_F(ViewCursor, FindFieldSortedNeverLooksAtTheRowItStartsFrom) {
    show({"a", "b", "c", "d", "e"});
    auto* view = new ReadingView(&table_);
    const VDBView handle(view);
    view->displayAllRecords();
    VDBViewCursor cursor(handle);
    EXPECT_EQ(cursor.set_index(0).findFieldSorted("Name", "a"), -1);
    EXPECT_EQ(cursor.index(), -1);
    EXPECT_EQ(view->rowsRead, (std::vector<unsigned>{2, 1}));
}

TEST_F(ViewCursor, FindFieldSortedOfAMissingColumnEnds) {
    show({"a", "b", "c"});
    VDBViewCursor cursor(view_);
    EXPECT_EQ(cursor.set_index(1).findFieldSorted("Reel", "b"), -1);
    EXPECT_EQ(cursor.index(), -1);
}

TEST_F(ViewCursor, FindFieldSortedNeverReturnsOnceItMeetsTheText) {
    show({"a", "b", "c", "d", "e"});
    VDBViewCursor cursor(view_);
    const auto search = [&] {
        itimerval soon = {{0, 0}, {0, 300000}};
        setitimer(ITIMER_REAL, &soon, nullptr);
        cursor.findFieldSorted("Name", "C");
    };
    EXPECT_EXIT(search(), testing::KilledBySignal(SIGALRM), "");
}

TEST_F(ViewCursor, SharesTheView) {
    show({"a"});
    {
        const VDBViewCursor cursor(view_);
        EXPECT_EQ(view_->handleCount(), 2U);
    }
    EXPECT_EQ(view_->handleCount(), 1U);
}

TEST_F(ViewCursor, KeepsTheViewAlive) {
    show({"a", "b"});
    VDBViewCursor cursor(view_);
    view_ = VDBView();
    EXPECT_EQ(forwards(cursor), (Rows{0, 1}));
}

TEST_F(ViewCursor, WorksOnAStackedView) {
    show({"a", "b", "c"});
    tagRows({0, 1, 1});
    const VDBView tagged(view_->newTagSubview());
    VDBViewCursor cursor(tagged);
    EXPECT_EQ(cursor.set_index(0).findField("Name", "c"), 1);
    EXPECT_EQ(cursor.record(), table_.get_record(2));
}

TEST(ViewCursorOnNothing, EveryOperationEnds) {
    VDBViewCursor cursor{VDBView()};
    EXPECT_EQ(cursor.set_index(0).index(), -1);
    EXPECT_EQ((++cursor).index(), -1);
    EXPECT_EQ((--cursor).index(), -1);
    EXPECT_EQ(cursor.find(nullptr), -1);
    EXPECT_EQ(cursor.findField("Name", "a"), -1);
    EXPECT_EQ(cursor.findFieldSorted("Name", "a"), -1);
    EXPECT_EQ(cursor.record(), nullptr);
    cursor.remove();
    EXPECT_EQ(cursor.index(), -1);
}

TEST(ViewCursorOnNothing, AViewWithoutASourceHasNoRows) {
    VDBViewCursor cursor{VDBView(static_cast<vekdb*>(nullptr))};
    EXPECT_EQ((++cursor).index(), -1);
    EXPECT_EQ(cursor.findField("Name", ""), -1);
    EXPECT_EQ(cursor.findFieldSorted("Name", ""), -1);
}
