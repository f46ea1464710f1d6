#include <gmock/gmock.h>

#include <climits>

#include <vekdb/host/watchdog.h>
#include "testing/views.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Calls = std::vector<std::pair<unsigned, int>>;

/// A table that writes down the deletions and insertions that it is asked for.
class WatchedTable : public vekdb {
public:
    explicit WatchedTable(int rows) : vekdb(textColumns({"Name"})) {
        vekdb::add_records(rows);
        for (int i = 0; i < rows; ++i) {
            const std::string name = std::string("r").append(std::to_string(i));
            set_field(static_cast<unsigned>(i), 0u, name.c_str());
        }
    }
    using vekdb::set_field;

    void delete_records(unsigned first, int n) override {
        deletions.push_back({first, n});
        vekdb::delete_records(first, n);
    }
    void insert_records(unsigned at, int n) override {
        insertions.push_back({at, n});
        vekdb::insert_records(at, n);
    }
    unsigned add_records(int n) override {
        added += n;
        return vekdb::add_records(n);
    }
    int* sortPrepare(int direction, int forceNormal) override {
        prepared.push_back({static_cast<unsigned>(direction), forceNormal});
        return vekdb::sortPrepare(direction, forceNormal);
    }

    Calls deletions, insertions, prepared;
    int added = 0;
};

/// Counts how long operations are bracketed.
class Watchdog final : public iWatchdog {
public:
    Watchdog() : before_(SystemWatchdog::setWatchdog(this)) {}
    ~Watchdog() { SystemWatchdog::setWatchdog(before_); }
    void beginLifeSupport() noexcept override { ++begun; }
    void endLifeSupport() noexcept override { ++ended; }

    int begun = 0;
    int ended = 0;

private:
    iWatchdog* before_;
};

}  // namespace

// --- inserting

TEST(ViewInsert, InsideInsertsBeforeTheSourceRowOfTheRow) {
    WatchedTable table(4);
    VDBView view = viewOfAll(table);
    view->insertBlankRecords(1, 2);
    EXPECT_EQ((Calls{{1, 2}}), table.insertions);
    EXPECT_EQ("0 1 2 3 4 5", rowsOf(*view));
    EXPECT_EQ("r0 - - r1 r2 r3", namesOf(*view));
    EXPECT_EQ("r0 - - r1 r2 r3", namesOf(table));
}

TEST(ViewInsert, AtOrPastTheEndAddsAtTheEndOfTheSource) {
    for (int at : {2, 3, INT_MAX}) {
        WatchedTable table(4);
        VDBView view = viewOf(table, {1, 0});
        view->insertBlankRecords(at, 2);
        EXPECT_EQ(2, table.added);
        EXPECT_EQ("1 0 4 5", rowsOf(*view));
        EXPECT_EQ("r1 r0 - -", namesOf(*view));
    }
}

TEST(ViewInsert, ANegativePositionIsTheFront) {
    WatchedTable table(4);
    VDBView view = viewOf(table, {2, 3});
    view->insertBlankRecords(-7, 1);
    EXPECT_EQ((Calls{{2, 1}}), table.insertions);
    EXPECT_EQ("2 3 4", rowsOf(*view));
    EXPECT_EQ("- r2 r3", namesOf(*view));
}

TEST(ViewInsert, RaisesTheRowsBehindWhetherTheTableMovedThemOrNot) {
    WatchedTable table(6);
    VDBView view = viewOf(table, {5, 3, 1});
    view->insertBlankRecords(1, 1);
    EXPECT_EQ("5 3 4 2", rowsOf(*view));
    EXPECT_EQ("r4 - r3 r2", namesOf(*view));
}

TEST(ViewInsert, NewRowsKeepTheTagsOfTheirSlots) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    setTags(*view, {1, 0, 1});
    view->insertBlankRecords(0, 1);
    EXPECT_EQ("1 1 0 1", tagsOf(*view));
}

TEST(ViewInsert, TellsNobody) {
    const auto table = numberedTable(4);
    VDBView view = viewOfAll(*table), other = viewOfAll(*table);
    VDBView above = stackedOnAll(view);
    NoticeLog log;
    log.follow(*table, "T");
    log.follow(*view, "V");
    view->insertBlankRecords(1, 2);
    EXPECT_THAT(log.entries, IsEmpty());
    EXPECT_EQ("r0 - - r1", namesOf(*other));
    EXPECT_EQ("0 1 2 3", rowsOf(*above));
    EXPECT_EQ("r0 - - r1", namesOf(*above));
}

TEST(ViewInsert, GoesDownAStackAndStaysInStep) {
    const auto table = numberedTable(4);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    view->insert_records(3, 1);
    EXPECT_EQ("0 1 2 3 4", rowsOf(*base));
    EXPECT_EQ("0 1 2 3 4", rowsOf(*view));
    EXPECT_EQ("r0 r1 r2 - r3", namesOf(*view));
}

TEST(ViewInsert, AddingReturnsTheRowCountBefore) {
    const auto table = numberedTable(3);
    VDBView view = viewOf(*table, {2});
    EXPECT_EQ(1u, view->add_records(2));
    EXPECT_EQ("2 3 4", rowsOf(*view));
    EXPECT_EQ(5u, table->get_num_records());
    EXPECT_EQ(3u, view->add_records(0));
    EXPECT_EQ(3u, view->add_records(-1));
    EXPECT_EQ(5u, table->get_num_records());
}

TEST(ViewInsert, OverATableThatRefusesRowsWithoutRecordsAppear) {
    const auto table = numberedTable(4);
    VDBView view = viewOfAll(*table);
    table->set_tag(2, 1);
    table->set_show_tags_only(1);
    EXPECT_EQ(4u, view->add_records(2));
    EXPECT_EQ("0 1 2 3 1 2", rowsOf(*view));
    EXPECT_EQ(1u, table->get_num_records());
    EXPECT_EQ(nullptr, view->get_record(4));
}

TEST(ViewInsert, NoneOrFewerLeavesTheRowsAsTheyAre) {
    WatchedTable table(3);
    VDBView view = viewOfAll(table);
    view->insertBlankRecords(1, 0);
    view->insertBlankRecords(1, -2);
    view->insertBlankRecords(9, INT_MIN);
    EXPECT_EQ("0 1 2", rowsOf(*view));
    EXPECT_EQ(3u, table.get_num_records());
}

TEST(ViewInsert, WithoutASourceNothingHappens) {
    VDBView view(static_cast<vekdb*>(nullptr));
    view->insertBlankRecords(0, 2);
    EXPECT_EQ(0u, view->add_records(2));
    EXPECT_EQ(0u, view->get_num_records());
}

// --- deleting

TEST(ViewDelete, AnUnbrokenRunIsOneDeletion) {
    WatchedTable table(10);
    VDBView view = viewOfAll(table);
    view->deleteRecords(2, 3);
    EXPECT_EQ((Calls{{2, 3}}), table.deletions);
    EXPECT_EQ("0 1 2 3 4 5 6", rowsOf(*view));
    EXPECT_EQ("r0 r1 r5 r6 r7 r8 r9", namesOf(*view));
    EXPECT_EQ(7u, table.get_num_records());
}

TEST(ViewDelete, EveryRunIsADeletionOfItsOwn) {
    WatchedTable table(10);
    VDBView view = viewOf(table, {5, 6, 2, 3});
    view->deleteRecords(0, 4);
    EXPECT_EQ((Calls{{5, 2}, {2, 2}}), table.deletions);
    EXPECT_EQ("", rowsOf(*view));
    EXPECT_EQ("r0 r1 r4 r7 r8 r9", namesOf(table));
}

TEST(ViewDelete, DescendingRowsAreDeletedSingly) {
    WatchedTable table(5);
    VDBView view = viewOf(table, {4, 3, 1});
    view->delete_records(0, 2);
    EXPECT_EQ((Calls{{4, 1}, {3, 1}}), table.deletions);
    EXPECT_EQ("r1", namesOf(*view));
}

TEST(ViewDelete, IsCutAtTheEndOfTheView) {
    WatchedTable table(5);
    VDBView view = viewOf(table, {0, 1, 2});
    view->deleteRecords(1, INT_MAX);
    EXPECT_EQ((Calls{{1, 2}}), table.deletions);
    EXPECT_EQ("r0", namesOf(*view));
    EXPECT_EQ("r0 r3 r4", namesOf(table));
}

TEST(ViewDelete, OutOfRangeDoesNothing) {
    WatchedTable table(3);
    VDBView view = viewOfAll(table);
    view->deleteRecords(-1, 2);
    view->deleteRecords(3, 1);
    view->deleteRecords(0, 0);
    view->deleteRecords(0, -4);
    view->deleteRecords(INT_MAX, INT_MAX);
    view->delete_records(0xFFFFFFFF, 1);
    EXPECT_THAT(table.deletions, IsEmpty());
    EXPECT_EQ("0 1 2", rowsOf(*view));
}

TEST(ViewDelete, SiblingsOverTheTableStayInStep) {
    const auto table = numberedTable(8);
    VDBView view = viewOf(*table, {1, 2, 6});
    VDBView sibling = viewOf(*table, {7, 2, 0});
    view->deleteRecords(0, 2);
    EXPECT_EQ("r6", namesOf(*view));
    EXPECT_EQ("r7 r0", namesOf(*sibling));
}

TEST(ViewDelete, TaggedRowsGoRunByRun) {
    WatchedTable table(6);
    VDBView view = viewOfAll(table);
    tagRows(*view, {0, 1, 4});
    EXPECT_EQ(3, view->deleteTagged());
    EXPECT_EQ((Calls{{0, 2}, {2, 1}}), table.deletions);
    EXPECT_EQ("r2 r3 r5", namesOf(*view));
    EXPECT_EQ("0 0 0", tagsOf(*view));
    EXPECT_EQ("r2 r3 r5", namesOf(table));
}

TEST(ViewDelete, ARunOfTaggedRowsAtTheEndGoesToo) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    tagRows(*view, {0, 3, 4});
    EXPECT_EQ(3, view->deleteTagged());
    EXPECT_EQ("r1 r2", namesOf(*table));
    tagRows(*view, {0, 1});
    EXPECT_EQ(2, view->deleteTagged());
    EXPECT_EQ("", namesOf(*view));
    EXPECT_EQ(0, view->deleteTagged());
}

TEST(ViewDelete, CountsWhatItPassedOnEvenWhenTheTableRefuses) {
    WatchedTable table(4);
    VDBView view = viewOf(table, {0, 1, 2});
    view->tagAll(true);
    table.set_tag(0, 1);
    table.set_tag(1, 1);
    table.set_tag(2, 1);
    table.set_tag(3, 1);
    table.set_show_tags_only(1);
    view->append(3);
    EXPECT_EQ(6, view->deleteTagged());
    EXPECT_EQ((Calls{{0, 3}, {1, 2}, {2, 1}}), table.deletions);
    EXPECT_EQ(4u, view->get_num_records());
}

TEST(ViewDelete, ThroughAStackedViewItCanHitOtherRecordsThanTheOnesShown) {
    WatchedTable table(10);
    VDBView base = viewOfAll(table);
    VDBView view = stackedOnAll(base);
    tagRows(*view, {2, 6});
    EXPECT_EQ(2, view->deleteTagged());
    EXPECT_EQ((Calls{{2, 1}, {3, 1}}), table.deletions);
    EXPECT_EQ("r0 r1 r3 r5 r6 r7 r8 r9", namesOf(table));

    WatchedTable same(10);
    VDBView direct = viewOfAll(same);
    tagRows(*direct, {2, 6});
    EXPECT_EQ(2, direct->deleteTagged());
    EXPECT_EQ("r0 r1 r3 r4 r5 r7 r8 r9", namesOf(same));
}

TEST(ViewDelete, ThroughAStackedViewWithGapsItHitsTheNeighbour) {
    const auto table = numberedTable(8);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOn(base, {0, 2, 4, 6});
    view->deleteRecords(0, 2);
    EXPECT_EQ("r2 r3 r4 r5 r6 r7", namesOf(*table));
}

TEST(ViewDelete, WithoutASourceNothingHappens) {
    VDBView view(static_cast<vekdb*>(nullptr));
    view->append(3);
    view->deleteRecords(0, 1);
    view->tagAll(true);
    EXPECT_EQ(1u, view->get_num_records());
    EXPECT_EQ(0, view->deleteTagged());
}

// --- removing

TEST(ViewRemove, TakesRowsOutOfTheViewAloneAndTells) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    setTags(*view, {0, 1, 0, 0, 1});
    NoticeLog log;
    log.follow(*view, "V");
    view->remove(1, 2);
    EXPECT_EQ("0 3 4", rowsOf(*view));
    EXPECT_EQ("0 0 1", tagsOf(*view));
    EXPECT_EQ(5u, table->get_num_records());
    EXPECT_THAT(log.entries, ElementsAre("V 1 2 "));
}

TEST(ViewRemove, IsCutAtTheEnd) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    NoticeLog log;
    log.follow(*view, "V");
    view->remove(3, 100);
    EXPECT_EQ("0 1 2", rowsOf(*view));
    view->remove(1, INT_MAX);
    EXPECT_EQ("0", rowsOf(*view));
    EXPECT_THAT(log.entries, ElementsAre("V 3 4 ", "V 1 2 "));
}

TEST(ViewRemove, OutOfRangeDoesNothingAndTellsNothing) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    NoticeLog log;
    log.follow(*view, "V");
    view->remove(-1, 1);
    view->remove(2, 1);
    view->remove(0, -1);
    view->remove(INT_MIN, INT_MIN);
    EXPECT_EQ("0 1", rowsOf(*view));
    EXPECT_THAT(log.entries, IsEmpty());
}

TEST(ViewRemove, NoneAdjustsTheRoomAndTellsAnEmptyText) {
    const auto table = numberedTable(20);
    VDBView view = viewOfAll(*table);
    view->sizeIndexFor(50);
    ASSERT_EQ(50u, view->indexCapacity());
    NoticeLog log;
    log.follow(*view, "V");
    view->remove(5, 0);
    EXPECT_EQ(25u, view->indexCapacity());
    EXPECT_EQ(20u, view->get_num_records());
    EXPECT_THAT(log.entries, ElementsAre("V "));
}

TEST(ViewRemove, TheRoomIsAdjustedBeforeTheCountDrops) {
    const auto table = numberedTable(45);
    VDBView view = viewOfAll(*table);
    view->sizeIndexFor(46);
    ASSERT_EQ(90u, view->indexCapacity());
    view->tagAll(true);
    view->remove(5, 30);
    EXPECT_EQ(45u, view->indexCapacity());
    for (unsigned slot = 0; slot < 45; ++slot) {
        EXPECT_EQ(1u, view->slotTag(slot));
    }
}

TEST(ViewRemove, LastRowTaggedThenShownAgainLeavesItsTag) {
    const auto table = numberedTable(5);
    VDBView last = viewOfAll(*table), first = viewOfAll(*table);
    tagRows(*last, {4});
    tagRows(*first, {4});
    last->remove(4, 1);
    last->append(0);
    EXPECT_EQ("0 0 0 0 1", tagsOf(*last));
    first->remove(0, 1);
    first->append(0);
    EXPECT_EQ("0 0 0 1 1", tagsOf(*first));
}

TEST(ViewRemove, TagsLeftByADeletionGreetAddedRows) {
    const auto table = numberedTable(6);
    VDBView view = viewOfAll(*table);
    tagRows(*view, {5});
    table->delete_records(1, 2);
    view->add_records(3);
    EXPECT_EQ("0 0 0 1 1 1 0", tagsOf(*view));
}

TEST(ViewRemove, UntaggedRowsGoAndTheTableKeepsItsRecords) {
    const auto table = numberedTable(4);
    VDBView view = viewOfAll(*table);
    setTags(*view, {1, 0, 0, 1});
    EXPECT_EQ(2, view->removeNonTagged());
    EXPECT_EQ("r0 r3", namesOf(*view));
    EXPECT_EQ("1 1", tagsOf(*view));
    EXPECT_EQ(4u, table->get_num_records());
}

TEST(ViewRemove, AlternatingTagsGoOneByOne) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    setTags(*view, {1, 0, 1, 0, 1});
    NoticeLog log;
    log.follow(*view, "V");
    EXPECT_EQ(3, view->removeTagged());
    EXPECT_EQ("r1 r3", namesOf(*view));
    EXPECT_THAT(log.entries, ElementsAre("V 0 ", "V 1 ", "V 2 "));
    EXPECT_EQ(0, view->removeTagged());
}

TEST(ViewRemove, SomeTakesATestOfTheView) {
    class Picky : public VDBViewRep {
    public:
        using VDBViewRep::VDBViewRep;
        bool odd(int row) { return sourceRow(row) % 2 == 1; }
    };
    const auto table = numberedTable(6);
    VDBView view(new Picky(table.get()));
    view->displayAllRecords();
    EXPECT_EQ(3, view->removeSome(static_cast<VDBViewRep::PositionTest>(&Picky::odd)));
    EXPECT_EQ("0 2 4", rowsOf(*view));
}

TEST(ViewRemove, TheTagTestsAnswerForEveryRow) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    setTags(*view, {1, 0});
    EXPECT_TRUE(view->tag(0));
    EXPECT_FALSE(view->tag(1));
    EXPECT_FALSE(view->tag(-1));
    EXPECT_FALSE(view->tag(2));
    EXPECT_FALSE(view->notTagged(0));
    EXPECT_TRUE(view->notTagged(1));
    EXPECT_TRUE(view->notTagged(-1));
    EXPECT_TRUE(view->notTagged(2));
    view->clear();
    EXPECT_TRUE(view->notTagged(0));
}

TEST(ViewRemove, TheRecordSourceFormsRemoveAndDeleteNothing) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    setTags(*view, {1, 1, 0, 0, 1});
    EXPECT_EQ(0u, view->delete_tagged_records());
    EXPECT_EQ("r2 r3", namesOf(*view));
    view->set_show_tags_only(0);
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, view->indexCapacity());
    EXPECT_EQ(0u, view->get_show_tags_only());
    EXPECT_EQ(5u, table->get_num_records());
    view->displayAllRecords();
    tagRows(*view, {3});
    view->set_show_tags_only(1);
    EXPECT_EQ("r3", namesOf(*view));
    EXPECT_EQ(0u, view->get_show_tags_only());
}

TEST(ViewRemove, FromAStackGoesToTheLowestView) {
    const auto table = numberedTable(8);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    VDBView sibling = stackedOnAll(base);
    tagRows(*view, {1, 2, 5});
    NoticeLog log;
    log.follow(*base, "V1");
    log.follow(*view, "V2");
    EXPECT_EQ(3, view->removeTagged());
    EXPECT_EQ("0 3 4 6 7", rowsOf(*base));
    EXPECT_EQ("0 1 2 3 4", rowsOf(*view));
    EXPECT_EQ("0 1 2 3 4", rowsOf(*sibling));
    EXPECT_EQ("r0 r3 r4 r6 r7", namesOf(*view));
    EXPECT_EQ(8u, table->get_num_records());
    EXPECT_THAT(log.entries, ElementsAre("V2 1 ", "V2 1 ", "V2 0 1 ", "V2 changed", "V1 1 2 ",
                                         "V2 3 ", "V2 2 ", "V2 changed", "V1 3 "));
}

TEST(ViewRemove, FromThreeStackedViewsLosesTrackOfTheRuns) {
    const auto table = numberedTable(8);
    VDBView first = viewOfAll(*table);
    VDBView second = stackedOnAll(first);
    VDBView third = stackedOnAll(second);
    tagRows(*third, {1, 2, 5});
    EXPECT_EQ(2, third->removeTagged());
    EXPECT_EQ(6u, second->get_num_records());
    EXPECT_EQ("r0 r3 r4 r5", namesOf(*third));
    EXPECT_EQ(1u, third->countTags());
}

TEST(ViewRemove, RepeatedRowsBreakTheScan) {
    const auto table = numberedTable(5);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOn(base, {3, 1, 3, 0, 2});
    tagRows(*view, {2, 4});
    EXPECT_EQ(1, view->removeTagged());
    EXPECT_EQ("1 0 2", rowsOf(*view));
    EXPECT_EQ("0 0 1", tagsOf(*view));
}

TEST(ViewRemove, FromTheBaseOutOfRangeDoesNothing) {
    const auto table = numberedTable(4);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    for (VDBViewRep* each : {base.get(), view.get()}) {
        each->removeRecordsFromBaseView(-1, 1);
        each->removeRecordsFromBaseView(4, 1);
        each->removeRecordsFromBaseView(0, 0);
        each->removeRecordsFromBaseView(0, -1);
    }
    EXPECT_EQ("0 1 2 3", rowsOf(*base));
    view->removeRecordsFromBaseView(2, INT_MAX);
    EXPECT_EQ("0 1", rowsOf(*base));
    EXPECT_EQ("0 1", rowsOf(*view));
}

TEST(ViewRemove, FromTheBaseGoesRunByRun) {
    const auto table = numberedTable(8);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOn(base, {6, 7, 1, 2});
    NoticeLog log;
    log.follow(*base, "V1");
    view->removeRecordsFromBaseView(0, 4);
    EXPECT_EQ("0 3 4 5", rowsOf(*base));
    EXPECT_EQ("", rowsOf(*view));
    EXPECT_THAT(log.entries, ElementsAre("V1 6 7 ", "V1 1 2 "));
}

TEST(ViewRemove, WithoutATableOnlyPlainRemovalWorks) {
    VDBView view(static_cast<vekdb*>(nullptr));
    view->append(0);
    view->append(1);
    EXPECT_EQ(2, view->removeNonTagged());
    EXPECT_EQ(2u, view->get_num_records());
    view->remove(0, 1);
    EXPECT_EQ("1", rowsOf(*view));
}

// --- sorting

TEST(ViewSort, ReordersRowsAndTagsAndLeavesTheTable) {
    const auto table = namedTable({"pear", "apple", "fig"});
    VDBView view = viewOfAll(*table);
    setTags(*view, {1, 0, 0});
    view->sort(0, 0);
    EXPECT_EQ("1 2 0", rowsOf(*view));
    EXPECT_EQ("0 0 1", tagsOf(*view));
    EXPECT_EQ("pear apple fig", namesOf(*table));
}

TEST(ViewSort, NegativeDirectionsReverseDistinctWords) {
    const auto table = namedTable({"pear", "apple", "fig"});
    VDBView view = viewOfAll(*table);
    view->sort(-1, 0);
    EXPECT_EQ("pear fig apple", namesOf(*view));
    view->sort(1, 0);
    EXPECT_EQ("apple fig pear", namesOf(*view));
}

TEST(ViewSort, EmptyValuesAreLastUpwardsAndPlainDownwards) {
    const auto table = namedTable({"b", "", "a"});
    VDBView view = viewOfAll(*table);
    view->sort(0, 0);
    EXPECT_EQ("a b -", namesOf(*view));
    view->sort(-1, 0);
    EXPECT_EQ("b a -", namesOf(*view));
}

TEST(ViewSort, EqualRowsKeepTheirOrder) {
    const auto table = namedTable({"b", "a", "b", "a", "b"});
    VDBView view = viewOf(*table, {4, 0, 3, 2, 1});
    view->sort(0, 0);
    EXPECT_EQ("3 1 4 0 2", rowsOf(*view));
    view->sort(-1, 0);
    EXPECT_EQ("4 0 2 3 1", rowsOf(*view));
}

TEST(ViewSort, PreparesThroughTheSource) {
    WatchedTable table(3);
    VDBView view = viewOf(table, {0});
    VDBView above = stackedOnAll(view);
    above->sort(1, 7);
    EXPECT_EQ((Calls{{1, 7}}), table.prepared);
    view->clear();
    view->sort(0, 0);
    EXPECT_EQ(2u, table.prepared.size());
}

TEST(ViewSort, SortsAStackedViewByTheRecordsUnderIt) {
    const auto table = namedTable({"pear", "apple", "fig", "date"});
    VDBView base = viewOf(*table, {3, 0, 2});
    VDBView view = stackedOnAll(base);
    view->sort(0, 0);
    EXPECT_EQ("date fig pear", namesOf(*view));
    EXPECT_EQ("0 2 1", rowsOf(*view));
    EXPECT_EQ("3 0 2", rowsOf(*base));
}

TEST(ViewSort, RowsWithoutARecordDoNoHarm) {
    const auto table = namedTable({"d", "c", "b", "a"});
    VDBView view = viewOf(*table, {0, 99, 1, 50, 2, 4000000, 3, 77});
    view->sort(0, 0);
    view->sort(-1, 0);
    EXPECT_EQ(8u, view->get_num_records());
    std::vector<unsigned> rows;
    for (int i = 0; i < 8; ++i) {
        rows.push_back(view->sourceRow(i));
    }
    EXPECT_THAT(rows, testing::UnorderedElementsAre(0, 1, 2, 3, 50, 77, 99, 4000000));
}

TEST(ViewSort, RunsUnderLifeSupportOnEveryPath) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table), unbound(static_cast<vekdb*>(nullptr));
    Watchdog dog;
    view->sort(0, 0);
    EXPECT_EQ(1, dog.begun);
    EXPECT_EQ(1, dog.ended);
    unbound->sort(0, 0);
    EXPECT_EQ(2, dog.begun);
    EXPECT_EQ(2, dog.ended);
}
