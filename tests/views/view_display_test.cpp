#include <gmock/gmock.h>

#include <climits>

#include <vekdb/host/watchdog.h>
#include "testing/random.h"
#include "testing/views.h"

using testing::ElementsAre;

namespace {

Cookie cookieOf(unsigned number) {
    Cookie cookie;
    cookie.uuid.bytes[0] = static_cast<std::uint8_t>(number);
    cookie.uuid.bytes[1] = static_cast<std::uint8_t>(number >> 8);
    cookie.uuid.bytes[2] = static_cast<std::uint8_t>(number >> 16);
    cookie.type = cookieTypeM;
    return cookie;
}

CookieVec listOf(std::vector<unsigned> numbers) {
    CookieVec list;
    for (unsigned number : numbers) list.add(cookieOf(number));
    return list;
}

/// Rows named a, b, c and so on, with the cookies 1, 2, 3 and so on.
void addNamedCookies(vekdb& table, int rows) {
    for (int i = 0; i < rows; ++i) {
        const char name[] = {static_cast<char>('a' + i), '\0'};
        addRow(table, {name, cookieOf(static_cast<unsigned>(i) + 1).asString(false).c_str()});
    }
}

struct CookieTable : vekdb {
    explicit CookieTable(int rows) : vekdb(textColumns({"Name", "Cookie"})) {
        addNamedCookies(*this, rows);
    }
};

/// Counts the searches that reach it.
struct SearchedTable : CookieTable {
    using CookieTable::CookieTable;
    unsigned findFirst(const char* field, const char* value, int prefixLength) override {
        searches.push_back(std::string(field) + "/" + std::to_string(prefixLength));
        return vekdb::findFirst(field, value, prefixLength);
    }
    std::vector<std::string> searches;
};

}  // namespace

TEST(ViewDisplay, RowsAreShownAtAPosition) {
    const auto table = numberedTable(20);
    VDBView view = viewOf(*table, {0, 1, 2});
    EXPECT_EQ(3, view->displayRecordsAt(10, 3, 1));
    EXPECT_EQ("0 10 11 12 1 2", rowsOf(*view));
}

TEST(ViewDisplay, ThePositionIsCutToTheRows) {
    const auto table = numberedTable(20);
    VDBView view = viewOf(*table, {5});
    EXPECT_EQ(2, view->displayRecordsAt(0, 2, -5));
    EXPECT_EQ("0 1 5", rowsOf(*view));
    EXPECT_EQ(2, view->displayRecordsAt(0, 2, 99));
    EXPECT_EQ("0 1 5 0 1", rowsOf(*view));
    EXPECT_EQ(1, view->displayRecordsAt(7, 1, INT_MIN));
    EXPECT_EQ(1, view->displayRecordsAt(8, 1, INT_MAX));
    EXPECT_EQ("7 0 1 5 0 1 8", rowsOf(*view));
}

TEST(ViewDisplay, NothingChecksThatRowsExistOrAreShownAlready) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    view->displayRecordsAt(1, 3, 2);
    EXPECT_EQ("r0 r1 r1 null null", namesOf(*view));
    view->displayRecordsAt(-1, 2, 0);
    EXPECT_EQ(0xFFFFFFFFu, view->sourceRow(0));
    EXPECT_EQ(0u, view->sourceRow(1));
}

TEST(ViewDisplay, RowsShownInsideTakeTheTagsOfTheRowsDisplaced) {
    const auto table = numberedTable(20);
    VDBView view = viewOf(*table, {0, 1, 2});
    setTags(*view, {1, 0, 1});
    view->displayRecordsAt(10, 1, 0);
    EXPECT_EQ("1 1 0 1", tagsOf(*view));
    view->displayRecordsAt(11, 2, 1);
    EXPECT_EQ("10 11 12 0 1 2", rowsOf(*view));
    EXPECT_EQ("1 1 0 1 0 1", tagsOf(*view));
}

TEST(ViewDisplay, NoRowsAdjustTheRoomOnly) {
    const auto table = numberedTable(20);
    VDBView view = viewOfAll(*table);
    view->sizeIndexFor(50);
    EXPECT_EQ(0, view->displayRecordsAt(3, 0, 1));
    EXPECT_EQ(25u, view->indexCapacity());
    EXPECT_EQ(-3, view->displayRecordsAt(3, -3, 1));
    EXPECT_EQ(20u, view->get_num_records());
    EXPECT_EQ(25u, view->indexCapacity());
}

// --- matches

TEST(ViewDisplay, AMatchIsShownWhereWanted) {
    const auto table = namedTable({"fig", "pear", "fig"});
    VDBView view = viewOf(*table, {1, 1});
    EXPECT_EQ(1, view->displayMatchAt("Name", "fig", 1));
    EXPECT_EQ("1 0 1", rowsOf(*view));
    EXPECT_EQ(0, view->displayMatchAt("Name", "Fig", 0));
    EXPECT_EQ(0, view->displayMatchAt("None", "fig", 0));
    EXPECT_EQ("1 0 1", rowsOf(*view));
}

TEST(ViewDisplay, AMatchInAStackIsARowOfTheTable) {
    const auto table = namedTable({"a", "b", "c", "d", "e", "f"});
    VDBView base = viewOf(*table, {3, 4, 5});
    VDBView view = stackedOn(base, {});
    EXPECT_EQ(1, view->displayMatchAt("Name", "d", 0));
    EXPECT_EQ("3", rowsOf(*view));
    EXPECT_EQ("null", namesOf(*view));
}

TEST(ViewDisplay, IdentitiesAreShownInTheOrderOfTheList) {
    CookieTable table(5);
    VDBView view = viewOf(table, {0});
    EXPECT_EQ(3, view->displayRecordsAt(listOf({4, 99, 2, 4}), 1));
    EXPECT_EQ("0 3 1 3", rowsOf(*view));
}

TEST(ViewDisplay, IdentitiesOfASetAreShownInItsOrder) {
    CookieTable table(5);
    VDBView view(&table);
    CookieSet set(listOf({5, 2, 5, 77, 3}));
    EXPECT_EQ(3, view->displayRecordsAt(set, 0));
    EXPECT_EQ("1 2 4", rowsOf(*view));
    EXPECT_EQ(0, view->displayRecordsAt(CookieSet(), 0));
}

TEST(ViewDisplay, IdentitiesAtNegativePositionsComeOutReversed) {
    CookieTable table(5);
    VDBView two(&table), one(&table);
    two->displayRecordsAt(listOf({3, 4, 5}), -2);
    EXPECT_EQ("e d c", namesOf(*two));
    one->displayRecordsAt(listOf({3, 4, 5}), -1);
    EXPECT_EQ("d e c", namesOf(*one));
}

TEST(ViewDisplay, IdentitiesOneByOneAreNotOneBlock) {
    CookieTable table(5);
    VDBView singly = viewOf(table, {0, 1}), together = viewOf(table, {0, 1});
    setTags(*singly, {1, 0});
    setTags(*together, {1, 0});
    EXPECT_EQ(3, singly->displayRecordsAt(listOf({3, 4, 5}), 0));
    EXPECT_EQ(3, together->displayRecordsAt(2, 3, 0));
    EXPECT_EQ(rowsOf(*singly), rowsOf(*together));
    EXPECT_EQ("1 1 1 1 0", tagsOf(*singly));
    EXPECT_EQ("1 0 0 1 0", tagsOf(*together));
}

TEST(ViewDisplay, IdentitiesAreFoundByTheirTextWhenNotByTheirNumber) {
    CookieTable table(3);
    // The map of identities then holds this one alone.
    table.set_field(0, cookieOf(50));
    VDBView view(&table);
    EXPECT_EQ(3, view->displayRecordsAt(listOf({2, 50, 3, 1}), 0));
    EXPECT_EQ("1 0 2", rowsOf(*view));
}

TEST(ViewDisplay, IdentitiesNeedAColumnOfThatName) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(0, view->displayRecordsAt(listOf({1, 2}), 0));
    EXPECT_EQ("0 1 2", rowsOf(*view));
}

TEST(ViewDisplay, NoIdentitiesShowNothingAndNeedNoLifeSupport) {
    CookieTable table(3);
    VDBView view(&table);
    struct Dog final : iWatchdog {
        Dog() : before(SystemWatchdog::setWatchdog(this)) {}
        ~Dog() { SystemWatchdog::setWatchdog(before); }
        void beginLifeSupport() noexcept override { ++begun; }
        void endLifeSupport() noexcept override { ++ended; }
        iWatchdog* before;
        int begun = 0, ended = 0;
    } dog;
    EXPECT_EQ(0, view->displayRecordsAt(CookieVec(), 0));
    EXPECT_EQ(0, dog.begun);
    EXPECT_EQ(1, view->displayRecordsAt(listOf({1}), 0));
    EXPECT_EQ(1, dog.begun);
    EXPECT_EQ(1, dog.ended);
}

TEST(ViewDisplay, ATableOfAnotherClassIsAskedForEachIdentity) {
    SearchedTable table(5);
    VDBView base(&table);
    VDBView view(&table);
    view->baseView(base.get());
    EXPECT_EQ(2, view->displayRecordsAt(listOf({5, 99, 1}), INT_MAX));
    EXPECT_EQ("4 0", rowsOf(*view));
    EXPECT_THAT(table.searches, ElementsAre("Cookie/0", "Cookie/0", "Cookie/0"));
}

// The same lists go to a table whose own search is asked and to one that is searched in a pass.
TEST(ViewDisplay, IdentitiesTogetherGiveWhatSingleSearchesGive) {
    testing_support::Random random;
    for (int run = 0; run < 200; ++run) {
        const int rows = random.between(0, 8);
        CookieTable plain(rows);
        SearchedTable searched(rows);
        VDBView together(&plain), singly(&searched);
        for (int step = 0; step < 6; ++step) {
            std::vector<unsigned> numbers;
            for (int i = random.between(0, 30); i > 0; --i) {
                numbers.push_back(static_cast<unsigned>(random.between(1, 10)));
            }
            const int at = random.between(-5, 40), tagged = random.between(0, 30);
            EXPECT_EQ(singly->displayRecordsAt(listOf(numbers), at),
                      together->displayRecordsAt(listOf(numbers), at));
            for (VDBViewRep* view : {together.get(), singly.get()}) {
                view->set_tag(static_cast<unsigned>(tagged), 1);
                if (step % 2 == 1) view->remove(tagged / 2, 3);
            }
            EXPECT_EQ(rowsOf(*singly), rowsOf(*together));
            EXPECT_EQ(tagsOf(*singly), tagsOf(*together));
            ASSERT_EQ(singly->indexCapacity(), together->indexCapacity());
            for (unsigned slot = 0; slot < singly->indexCapacity(); ++slot) {
                EXPECT_EQ(singly->slotTag(slot), together->slotTag(slot));
            }
            if (HasFailure()) return;
        }
    }
}

// --- tagged and all rows

TEST(ViewDisplay, TaggedRowsOfTheSourceAreShownInItsOrder) {
    const auto table = numberedTable(6);
    tagRows(*table, {1, 4});
    VDBView view(table.get());
    view->displayTaggedRecordsAt(0);
    EXPECT_EQ("1 4", rowsOf(*view));
    EXPECT_EQ("0 0", tagsOf(*view));
    view->displayTaggedRecordsAt(1);
    EXPECT_EQ("1 1 4 4", rowsOf(*view));
}

TEST(ViewDisplay, TaggedRowsOfATableThatShowsThoseAloneAreAllItsRows) {
    const auto table = numberedTable(6);
    tagRows(*table, {1, 4});
    table->set_show_tags_only(1);
    VDBView view(table.get());
    view->displayTaggedRecordsAt(-3);
    EXPECT_EQ("0 1", rowsOf(*view));
    EXPECT_EQ("r1 r4", namesOf(*view));
}

TEST(ViewDisplay, TaggedRowsNeverOverrunTheirPlace) {
    struct Boaster : vekdb {
        Boaster() : vekdb(textColumns({"A"})) { vekdb::add_records(4); }
        unsigned get_num_tags() const override { return tags; }
        unsigned get_tag(unsigned) const override { return 1; }
        unsigned tags = 2;
    } table;
    VDBView view = viewOf(table, {9, 9});
    view->displayTaggedRecordsAt(0);
    EXPECT_EQ("0 1 9 9", rowsOf(*view));
    table.tags = 6;
    view->clear();
    view->displayTaggedRecordsAt(0);
    EXPECT_EQ("0 1 2 3 0 0", rowsOf(*view));
}

TEST(ViewDisplay, AllRecordsReplaceWhatWasShownUntagged) {
    const auto table = numberedTable(4);
    VDBView view = viewOf(*table, {3, 3, 0});
    view->tagAll(true);
    NoticeLog log;
    log.follow(*view, "V");
    view->displayAllRecords();
    EXPECT_EQ("0 1 2 3", rowsOf(*view));
    EXPECT_EQ("0 0 0 0", tagsOf(*view));
    EXPECT_THAT(log.entries, ElementsAre("V 0 1 2 "));
    log.entries.clear();
    view->clear();
    view->displayAllRecords();
    EXPECT_THAT(log.entries, ElementsAre());
    EXPECT_EQ(4u, view->get_num_records());
}

TEST(ViewDisplay, AllRecordsOfABaseViewAreItsRows) {
    const auto table = numberedTable(6);
    VDBView base = viewOf(*table, {5, 0});
    VDBView view = stackedOnAll(base);
    EXPECT_EQ("0 1", rowsOf(*view));
    EXPECT_EQ("r5 r0", namesOf(*view));
}

TEST(ViewDisplay, TheSourcesTagsComeAlongWhereItHasATagColumn) {
    vekdb tagged(textColumns({"Name", "tag"}));
    tagged.add_records(3);
    tagged.set_tag(1, 200);
    VDBView view(&tagged);
    view->displayAllRecordsWithBaseTagStatus();
    EXPECT_EQ("0 1 0", tagsOf(*view));

    const auto plain = numberedTable(3);
    plain->set_tag(1, 1);
    VDBView other(plain.get());
    other->displayAllRecordsWithBaseTagStatus();
    EXPECT_EQ("0 0 0", tagsOf(*other));
    EXPECT_EQ(3u, other->get_num_records());
}

TEST(ViewDisplay, TheTagColumnsNumbersBecomeTags) {
    vekdb table(textColumns({"Name", "Tag"}));
    for (const char* tag : {"1", "", "0", "-3", "x", " 7up"}) {
        table.get_record(table.add_records(1))->set_field(1, tag, false);
    }
    table.set_tag(2, 1);
    VDBView view(&table);
    view->setupViewTagsFromVekdbTagField();
    EXPECT_EQ("1 0 0 1 0 1", tagsOf(*view));
    VDBView above(&table);
    above->baseView(view.get());
    above->setupViewTagsFromVekdbTagField();
    EXPECT_EQ("1 0 0 1 0 1", tagsOf(*above));

    const auto plain = numberedTable(2);
    VDBView other = viewOf(*plain, {1});
    other->setupViewTagsFromVekdbTagField();
    EXPECT_EQ("0 1", rowsOf(*other));
    EXPECT_EQ("0 0", tagsOf(*other));
}

// --- rows of another view

TEST(ViewDisplayAllFrom, ShowsWhatIsNotShownYet) {
    const auto table = numberedTable(6);
    VDBView view = viewOf(*table, {0, 4});
    VDBView other = viewOf(*table, {5, 4, 3, 5});
    EXPECT_EQ(2, view->displayAllFromAt(other.get(), 1));
    EXPECT_EQ("0 5 3 4", rowsOf(*view));
    EXPECT_EQ(0, view->displayAllFromAt(other.get(), 1));
    EXPECT_EQ("0 5 3 4", rowsOf(*view));
    EXPECT_EQ(0, view->displayAllFromAt(view.get(), 0));
}

TEST(ViewDisplayAllFrom, AtNegativePositionsComesOutReversed) {
    const auto table = numberedTable(6);
    VDBView view = viewOf(*table, {0});
    VDBView other = viewOf(*table, {2, 3, 4, 5});
    EXPECT_EQ(4, view->displayAllFromAt(other.get(), -2));
    EXPECT_EQ("4 5 3 2 0", rowsOf(*view));
}

TEST(ViewDisplayAllFrom, RowsWithoutARecordAreNeverShownYet) {
    const auto table = numberedTable(2);
    VDBView view = viewOf(*table, {0, 50});
    VDBView other = viewOf(*table, {50, 0, 50, 60});
    EXPECT_EQ(3, view->displayAllFromAt(other.get(), 9));
    EXPECT_EQ("0 50 50 50 60", rowsOf(*view));
}

TEST(ViewDisplayAllFrom, NeedsTwoViewsThatReadTheSameTableThemselves) {
    const auto table = numberedTable(3), another = numberedTable(3);
    VDBView view(table.get()), base = viewOfAll(*table), foreign = viewOfAll(*another);
    VDBView stacked = stackedOnAll(base), empty(table.get());
    VDBView unbound(static_cast<vekdb*>(nullptr));
    EXPECT_EQ(0, view->displayAllFromAt(nullptr, 0));
    EXPECT_EQ(0, view->displayAllFromAt(stacked.get(), 0));
    EXPECT_EQ(0, view->displayAllFromAt(foreign.get(), 0));
    EXPECT_EQ(0, view->displayAllFromAt(empty.get(), 0));
    EXPECT_EQ(0, stacked->displayAllFromAt(base.get(), 0));
    EXPECT_EQ(0, unbound->displayAllFromAt(base.get(), 0));
    EXPECT_EQ(0, unbound->displayAllFromAt(unbound.get(), 0));
    EXPECT_EQ(0u, view->get_num_records());
}

TEST(ViewFind, FindsTheFirstRowOfARecord) {
    const auto table = numberedTable(4);
    VDBView view = viewOf(*table, {3, 1, 3, 99});
    EXPECT_EQ(0, view->find(table->get_record(3)));
    EXPECT_EQ(1, view->find(table->get_record(1)));
    EXPECT_EQ(-1, view->find(table->get_record(0)));
    EXPECT_EQ(-1, view->find(nullptr));
    VDBView above = stackedOn(view, {1, 0});
    EXPECT_EQ(1, above->find(table->get_record(3)));
    view->clear();
    EXPECT_EQ(-1, view->find(table->get_record(3)));
}

TEST(ViewDisplay, WithoutASourceNothingIsShown) {
    VDBView view(static_cast<vekdb*>(nullptr));
    EXPECT_EQ(0, view->displayRecordsAt(0, 3, 0));
    EXPECT_EQ(0, view->displayMatchAt("Name", "a", 0));
    EXPECT_EQ(0, view->displayRecordsAt(listOf({1, 2}), 0));
    EXPECT_EQ(0, view->displayRecordsAt(CookieSet(listOf({1})), 0));
    view->displayTaggedRecordsAt(0);
    view->displayAllRecords();
    view->displayAllRecordsWithBaseTagStatus();
    view->setupViewTagsFromVekdbTagField();
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(-1, view->find(nullptr));
}

TEST(ViewDisplay, LongListsOfIdentitiesTakeOnePass) {
    vekdb table(textColumns({"Name", "Cookie"}));
    CookieVec list;
    const int rows = 20000;
    table.add_records(rows);
    for (unsigned i = 0; i < rows; ++i) {
        table.set_field(i, 1u, cookieOf(i).asString(false).c_str());
        list.add(cookieOf(i + rows / 2));
    }
    VDBView view = viewOfAll(table);
    EXPECT_EQ(rows / 2, view->displayRecordsAt(list, 3));
    EXPECT_EQ(30000u, view->get_num_records());
    EXPECT_EQ(2u, view->sourceRow(2));
    EXPECT_EQ(10000u, view->sourceRow(3));
    EXPECT_EQ(3u, view->sourceRow(10003));
}
