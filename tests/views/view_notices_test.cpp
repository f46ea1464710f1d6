#include <gmock/gmock.h>

#include <functional>

#include <vekdb/host/cookie.h>
#include "testing/random.h"
#include "testing/views.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

int typeOf(const char* name) {
    return NotifyMsgTypeDictionary::instance().intern(name);
}

/// Tells a view by hand that rows of its source went.
void tellDeleted(VDBViewRep& view, const char* text) {
    view.recordsDeletedNotify(NotifyMsg(LightweightString<char>(text), nullptr));
}

/// A view over a table, an edit, what is told and what is left.
struct Edit {
    const char* name;
    int tableRows;
    std::vector<int> rows;
    std::function<void(vekdb&, VDBViewRep&)> edit;
    std::vector<std::string> notices;
    const char* rowsLeft;
};

std::ostream& operator<<(std::ostream& out, const Edit& edit) {
    return out << edit.name;
}

const std::vector<int> kTen = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

class OneView : public testing::TestWithParam<Edit> {};

}  // namespace

TEST_P(OneView, TellsEveryRemovalThenAllOfThem) {
    const auto table = numberedTable(GetParam().tableRows);
    VDBView view = viewOf(*table, GetParam().rows);
    NoticeLog log;
    log.follow(*view, "V");
    log.follow(*table, "T");
    GetParam().edit(*table, *view);
    EXPECT_EQ(GetParam().notices, log.entries);
    EXPECT_EQ(GetParam().rowsLeft, rowsOf(*view));
}

INSTANTIATE_TEST_SUITE_P(
    Edits, OneView,
    testing::Values(Edit{"TwoRowsInOrder",
                         10,
                         kTen,
                         [](vekdb& table, VDBViewRep&) { table.delete_records(3, 2); },
                         {"V 3 ", "V 3 ", "V 2 3 ", "V changed", "T 3 4 "},
                         "0 1 2 3 4 5 6 7"},
                    Edit{"FromTheTop",
                         10,
                         kTen,
                         [](vekdb& table, VDBViewRep&) { table.delete_records(0, 2); },
                         {"V 0 ", "V 0 ", "V -1 0 ", "V changed", "T 0 1 "},
                         "0 1 2 3 4 5 6 7"},
                    Edit{"RowsInReverse",
                         10,
                         {9, 8, 7, 6, 5, 4, 3, 2, 1, 0},
                         [](vekdb& table, VDBViewRep&) { table.delete_records(3, 3); },
                         {"V 6 ", "V 5 ", "V 4 ", "V 5 5 5 ", "V changed", "T 3 4 5 "},
                         "6 5 4 3 2 1 0"},
                    Edit{"ARowShownThrice",
                         10,
                         {3, 1, 3, 3},
                         [](vekdb& table, VDBViewRep&) { table.delete_records(3, 1); },
                         {"V 0 ", "V 1 ", "V 1 ", "V -1 0 0 ", "V changed", "T 3 "},
                         "1"},
                    Edit{"ARowThatIsNotShown",
                         10,
                         {2, 8, 9},
                         [](vekdb& table, VDBViewRep&) { table.delete_records(7, 1); },
                         {"T 7 "},
                         "2 7 8"},
                    Edit{"NothingAtAll",
                         4,
                         {0, 1},
                         [](vekdb& table, VDBViewRep&) { table.delete_records(4, 2); },
                         {},
                         "0 1"},
                    Edit{"TaggedRowsRunByRun",
                         6,
                         {0, 1, 2, 3, 4, 5},
                         [](vekdb&, VDBViewRep& view) {
                             tagRows(view, {0, 1, 4});
                             EXPECT_EQ(3, view.deleteTagged());
                         },
                         {"V 0 ", "V 0 ", "V -1 0 ", "V changed", "T 0 1 ", "V 2 ", "V 1 ",
                          "V changed", "T 2 "},
                         "0 1 2"},
                    Edit{"AllRowsDisplayedAnew",
                         3,
                         {0, 1, 2},
                         [](vekdb&, VDBViewRep& view) { view.displayAllRecords(); },
                         {"V 0 1 2 "},
                         "0 1 2"}),
    [](const auto& edit) { return edit.param.name; });

// --- odd texts

TEST(ViewNotices, OddTextsAreReadAsNumbersWithoutHarm) {
    const auto table = numberedTable(5);
    const auto after = [&](const char* text) {
        VDBView view = viewOf(*table, {0, 1, 2, 3, 4});
        tellDeleted(*view, text);
        return rowsOf(*view);
    };
    EXPECT_EQ("0 1 2 3 4", after(nullptr));
    EXPECT_EQ("0 1 2 3 4", after("   "));
    EXPECT_EQ("0 1 2 3", after("word"));
    EXPECT_EQ("0 1 2 3", after("3x"));
    EXPECT_EQ("0 1 2 3 4", after("-1"));
    EXPECT_EQ("0 1 2 3 4", after("99"));
    EXPECT_EQ("0 1 2 3 4", after("99999999999999999999"));
    EXPECT_EQ("0 1 2 3 4", after("-99999999999999999999 -99999999999999999999"));
    EXPECT_EQ("0 1 2", after("0  1"));
    EXPECT_EQ("0 1 2 3", after("4 0"));
    EXPECT_EQ("0 1 2", after("1 1 1"));
}

TEST(ViewNotices, TheAnswerIsAlwaysZero) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(0, view->recordsDeletedNotify(NotifyMsg()));
    EXPECT_EQ(0, view->recordsDeletedNotify(NotifyMsg("0 ", nullptr)));
    view->clear();
    EXPECT_EQ(0, view->recordsDeletedNotify(NotifyMsg("0 ", nullptr)));
}

TEST(ViewNotices, OnlyDeletionsOfItsSourceAreHeard) {
    const auto table = numberedTable(4);
    VDBView view = viewOfAll(*table);
    table->issueNotification(NotifyMsg("0 ", nullptr), typeOf("recordsChanged"));
    table->issueNotification(NotifyMsg("0 ", nullptr), typeOf("something else"));
    EXPECT_EQ(4u, view->get_num_records());
    table->issueNotification(NotifyMsg("0 ", nullptr), typeOf("recordsDeleted"));
    EXPECT_EQ(3u, view->get_num_records());
}

// --- what can be read on the way

TEST(ViewNotices, RowsReadRightOnlyFromTheReportOn) {
    const auto table = numberedTable(6);
    VDBView view = viewOfAll(*table);
    std::vector<std::string> seen;
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg& message) {
        seen.push_back(message.text().c_str() + ("| " + rowsOf(*view)) + " | " + namesOf(*view));
    });
    WhenTold changed(*view, "recordsChanged",
                     [&](const NotifyMsg&) { seen.push_back(namesOf(*view)); });
    table->delete_records(2, 1);
    EXPECT_THAT(seen, ElementsAre("2 | 0 1 3 4 5 | r0 r1 r4 r5 null",
                                  "1 | 0 1 2 3 4 | r0 r1 r3 r4 r5", "r0 r1 r3 r4 r5"));
}

// --- stacks

TEST(StackedNotices, AStackedViewHearsTheTableToo) {
    const auto table = numberedTable(10);
    VDBView base = viewOf(*table, {8, 9});
    VDBView view = stackedOnAll(base);
    table->delete_records(1, 1);
    EXPECT_EQ("7 8", rowsOf(*base));
    EXPECT_EQ("0", rowsOf(*view));
    EXPECT_EQ("r8", namesOf(*view));
}

TEST(StackedNotices, MoreRowsGoThanWereDeleted) {
    const auto table = numberedTable(10);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    table->delete_records(4, 1);
    EXPECT_EQ(9u, base->get_num_records());
    EXPECT_EQ("r0 r1 r2 r3 r5 r6 r7", namesOf(*view));
}

TEST(StackedNotices, EachFloorLosesMore) {
    const auto table = numberedTable(12);
    VDBView first = viewOfAll(*table);
    VDBView second = stackedOnAll(first);
    VDBView third = stackedOnAll(second);
    table->delete_records(4, 1);
    EXPECT_EQ(11u, first->get_num_records());
    EXPECT_EQ(9u, second->get_num_records());
    EXPECT_EQ(5u, third->get_num_records());
}

TEST(StackedNotices, TheNumberBeforeTheFirstRowIsNoRow) {
    const auto table = numberedTable(10);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    table->delete_records(0, 2);
    EXPECT_EQ("r2 r3 r4 r5 r6 r7", namesOf(*view));
}

TEST(StackedNotices, DeletingTheFirstRowCostsAStackedViewTwo) {
    const auto table = numberedTable(6);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    table->delete_records(0, 1);
    EXPECT_EQ("r1 r2 r3 r4", namesOf(*view));
}

TEST(StackedNotices, TheOrderOfConstructionDecidesWhoHearsFirst) {
    for (bool viewFirst : {false, true}) {
        const auto table = numberedTable(8);
        VDBView early(table.get()), late(table.get());
        VDBView& view = viewFirst ? early : late;
        VDBView& base = viewFirst ? late : early;
        show(*base, {2, 3, 4, 5, 6});
        view->baseView(base.get());
        view->displayAllRecords();
        table->delete_records(3, 1);
        EXPECT_EQ(viewFirst ? "r2 r4" : "r2 r4 r5", namesOf(*view));
    }
}

TEST(StackedNotices, ShowingTheBaseAnewEmptiesTheViewsAbove) {
    const auto table = numberedTable(3);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    VDBView top = stackedOnAll(view);
    NoticeLog log;
    log.follow(*base, "V1");
    base->displayAllRecords();
    EXPECT_THAT(log.entries, ElementsAre("V1 0 1 2 "));
    EXPECT_EQ(3u, base->get_num_records());
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, top->get_num_records());
}

TEST(StackedNotices, ClearingAndBuildingTheBaseIsNotTold) {
    const auto table = numberedTable(3);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    NoticeLog log;
    log.follow(*base, "V1");
    log.follow(*view, "V2");
    base->clear();
    EXPECT_EQ("null null null", namesOf(*view));
    base->buildIndex();
    EXPECT_EQ("r0 r1 r2", namesOf(*view));
    EXPECT_THAT(log.entries, IsEmpty());
}

TEST(StackedNotices, AViewTakenOffItsBaseHearsItNoMore) {
    const auto table = numberedTable(3);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    view->baseView(nullptr);
    view->displayAllRecords();
    base->remove(0, 1);
    EXPECT_EQ(3u, view->get_num_records());
}

TEST(TableChanges, WithoutANoticeLeaveViewsPointingElsewhere) {
    const auto table = numberedTable(4);
    VDBView view = viewOfAll(*table);
    table->set_tag(2, 1);
    table->set_show_tags_only(1);
    EXPECT_EQ("r2 null null null", namesOf(*view));
    table->set_show_tags_only(0);
    table->insert_records(0, 1);
    EXPECT_EQ("- r0 r1 r2", namesOf(*view));
    table->sort(-1, 0);
    EXPECT_EQ("r3 r2 r1 r0", namesOf(*view));
    table->free();
    EXPECT_EQ("null null null null", namesOf(*view));
}

// --- a listener that checks

namespace {

/// Follows a view and verifies at each notice that the row count and the rows around the ones
/// that went are what the notices so far say.
class CheckingListener {
public:
    explicit CheckingListener(VDBViewRep& view)
        : view_(view),
          deleted_(view, "recordsDeleted", [this](const NotifyMsg& msg) { onDeleted(msg); }),
          changed_(view, "recordsChanged", [this](const NotifyMsg& msg) { onChanged(msg); }) {
        look();
    }

    /// Takes the rows as they are now: rows may have been moved or added since the last notice.
    void look() {
        rows_.clear();
        for (int i = 0; i < static_cast<int>(view_.get_num_records()); ++i) {
            rows_.push_back({view_.sourceRow(i), view_.get_tag(static_cast<unsigned>(i))});
        }
        unreported_ = 0;
    }

    void expectSettled() const {
        EXPECT_FALSE(reported_);
        EXPECT_EQ(rows_.size(), view_.get_num_records());
    }

    int removals = 0;
    int reports = 0;

private:
    struct Row {
        unsigned source;
        unsigned tag;
    };

    void onDeleted(const NotifyMsg& message) {
        EXPECT_FALSE(reported_) << "a report is followed by \"recordsChanged\"";
        std::vector<int> numbers;
        for (NotifyMsgTokenIterator token(message); token; ++token) {
            numbers.push_back(std::stoi((*token).c_str()));
        }
        if (view_.get_num_records() == rows_.size()) {
            expectReport(numbers);
        } else {
            expectRemoval(numbers);
        }
    }

    void expectReport(const std::vector<int>& numbers) {
        EXPECT_LE(numbers.size(), unreported_);
        unreported_ = 0;
        reported_ = true;
        ++reports;
    }

    void expectRemoval(const std::vector<int>& numbers) {
        ASSERT_FALSE(numbers.empty());
        const std::size_t first = static_cast<std::size_t>(numbers.front());
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            ASSERT_EQ(first + i, static_cast<std::size_t>(numbers[i]));
        }
        ASSERT_LE(first + numbers.size(), rows_.size());
        rows_.erase(rows_.begin() + numbers.front(),
                    rows_.begin() + numbers.front() + static_cast<int>(numbers.size()));
        unreported_ += numbers.size();
        ++removals;
        expectNeighbours();
    }

    // Source rows may have been lowered since, by rows of the source that went.
    void expectNeighbours() {
        ASSERT_EQ(rows_.size(), view_.get_num_records());
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const int row = static_cast<int>(i);
            EXPECT_LE(view_.sourceRow(row), rows_[i].source);
            EXPECT_EQ(view_.get_tag(static_cast<unsigned>(i)), rows_[i].tag);
            rows_[i].source = view_.sourceRow(row);
        }
        EXPECT_EQ(nullptr, view_.get_record(view_.get_num_records()));
    }

    void onChanged(const NotifyMsg& message) {
        EXPECT_TRUE(reported_) << "\"recordsChanged\" follows a report";
        EXPECT_TRUE(message.text().empty());
        EXPECT_EQ(nullptr, message.object().get());
        EXPECT_EQ(rows_.size(), view_.get_num_records());
        reported_ = false;
    }

    VDBViewRep& view_;
    WhenTold<std::function<void(const NotifyMsg&)>> deleted_, changed_;
    std::vector<Row> rows_;
    std::size_t unreported_ = 0;
    bool reported_ = false;
};

/// Three views, each on the one before, with a checking listener each.
struct CheckedStack {
    explicit CheckedStack(int rows) : table(numberedTable(rows)) {
        views.push_back(viewOfAll(*table));
        views.push_back(stackedOnAll(views[0]));
        views.push_back(stackedOnAll(views[1]));
        for (const VDBView& view : views) {
            listeners.push_back(std::make_unique<CheckingListener>(*view));
        }
    }

    void look() {
        for (const auto& listener : listeners) listener->look();
    }

    void expectSettled() const {
        for (const auto& listener : listeners) listener->expectSettled();
    }

    void refill() {
        for (const VDBView& view : views) {
            view->displayAllRecords();
        }
    }

    std::unique_ptr<vekdb> table;
    std::vector<VDBView> views;
    std::vector<std::unique_ptr<CheckingListener>> listeners;
};

}  // namespace

TEST(CheckedStack, EveryLevelSeesItsRowsGoOneAtATime) {
    CheckedStack stack(12);
    stack.table->delete_records(4, 2);
    stack.expectSettled();
    for (const auto& listener : stack.listeners) {
        EXPECT_GE(listener->removals, 2);
        EXPECT_GE(listener->reports, 1);
    }
}

TEST(CheckedStack, HoldsThroughEveryKindOfDeletionAndRemoval) {
    testing_support::Random random;
    for (int run = 0; run < 150; ++run) {
        CheckedStack stack(random.between(1, 40));
        for (int step = 0; step < 8; ++step) {
            VDBViewRep& view = *random.pick(stack.views);
            const int at = random.between(-1, 20), n = random.between(1, 6);
            for (unsigned i = 0; i < view.get_num_records(); ++i) {
                view.set_tag(i, random.oneIn(3));
            }
            stack.look();
            switch (random.between(0, 7)) {
                case 0:
                    stack.table->delete_records(static_cast<unsigned>(at), n);
                    break;
                case 1:
                    view.deleteRecords(at, n);
                    break;
                case 2:
                    view.deleteTagged();
                    break;
                case 3:
                    view.removeTagged();
                    break;
                case 4:
                    view.removeNonTagged();
                    break;
                case 5:
                    view.removeRecordsFromBaseView(at, n);
                    break;
                case 6:
                    view.remove(at, n);
                    break;
                default:
                    view.sort(1, 0);
                    break;
            }
            stack.expectSettled();
            if (HasFailure()) return;
            if (random.oneIn(3)) {
                stack.refill();
            }
        }
    }
}

// The way to delete under a stack that docs/notices.md gives.
TEST(Recipe, UpperViewsOfTheTaggedRowsAreMadeAnewAfterADeletionBelow) {
    const auto table = numberedTable(10);
    VDBView lower = viewOfAll(*table);
    tagRows(*lower, {2, 5, 8, 9});
    const VDBView upper(lower->newTagSubview());
    EXPECT_EQ("r2 r5 r8 r9", namesOf(*upper));
    lower->deleteRecords(4, 2);
    EXPECT_NE("r2 r8 r9", namesOf(*upper));
    upper->clear();
    upper->displayTaggedRecordsAt(0);
    EXPECT_EQ("r2 r8 r9", namesOf(*upper));
}

TEST(Recipe, ChangedCellsAreToldByTheBracketAlone) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    NoticeLog log;
    log.follow(*table, "table");
    log.follow(*view, "view");
    table->set_field(0, 0u, "changed");
    view->set_field(1, 0u, "changed");
    EXPECT_THAT(log.entries, IsEmpty());
    table->beginUpdate();
    table->addToUpdate(Cookie("0102030405060708090a0b0c0d0e0f1000004d", false));
    table->endUpdate();
    EXPECT_THAT(log.entries, ElementsAre("table changed with a payload"));
}

// A listener in front of a view must not leave the view with rows that the table has no more.
TEST(ThrowingListener, LeavesNoViewBehindItWithDeletedRows) {
    const auto table = numberedTable(10);
    bool heardBehind = false;
    const auto fail = [](const NotifyMsg&) { throw 7; };
    const WhenTold before(*table, "recordsDeleted", fail);
    VDBView view = viewOfAll(*table);
    const WhenTold inside(*view, "recordsDeleted", fail);
    VDBView upper = stackedOnAll(view);
    const auto hear = [&](const NotifyMsg&) { heardBehind = true; };
    const WhenTold behind(*table, "recordsDeleted", hear);
    EXPECT_THROW(table->delete_records(3, 4), int);
    EXPECT_FALSE(heardBehind);
    EXPECT_EQ("r0 r1 r2 r7 r8 r9", namesOf(*view));
    EXPECT_EQ(std::string::npos, namesOf(*upper).find("null"));
}
