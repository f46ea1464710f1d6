#include <gmock/gmock.h>

#include "testing/views.h"

using testing::ElementsAre;

namespace {

/// Sees which tags are set through the interface.
class TagWatch : public VDBViewRep {
public:
    using VDBViewRep::VDBViewRep;
    void set_tag(unsigned row, int value) override {
        writes.push_back(std::to_string(row) + "=" + std::to_string(value));
        VDBViewRep::set_tag(row, value);
    }
    std::vector<std::string> writes;
};

/// Answers its own query.
class Matching : public vekdb {
public:
    explicit Matching(int rows) : vekdb(textColumns({"Name"})) { vekdb::add_records(rows); }
    unsigned match_record(int row) const override {
        asked.push_back(row);
        return row % 2 == 0 ? 5 : 0;
    }
    mutable std::vector<int> asked;
};

void queryFor(vekdb& table, const char* name) {
    dbrecord query(1);
    query.set_field(0, name);
    table.set_query(&query);
}

}  // namespace

TEST(ViewTags, AreTheViewsOwn) {
    const auto table = numberedTable(3);
    VDBView one = viewOfAll(*table), two = viewOfAll(*table);
    one->set_tag(1, 1);
    table->set_tag(2, 1);
    EXPECT_EQ("0 1 0", tagsOf(*one));
    EXPECT_EQ("0 0 0", tagsOf(*two));
    EXPECT_EQ("0 0 1", tagsOf(*table));
}

TEST(ViewTags, AreOneForAnyOtherValueThanZero) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    setTags(*view, {256, -1, 7});
    EXPECT_EQ("1 1 1", tagsOf(*view));
    setTags(*view, {0, 1, 0});
    EXPECT_EQ("0 1 0", tagsOf(*view));
}

TEST(ViewTags, OutOfRangeAreZeroAndNotSet) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    for (unsigned row : {3u, 20u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        view->set_tag(row, 1);
        view->invert_tag(row);
        EXPECT_EQ(0u, view->get_tag(row));
    }
    EXPECT_EQ(0u, view->get_num_tags());
    for (unsigned slot = 0; slot < view->indexCapacity(); ++slot) {
        EXPECT_EQ(0u, view->slotTag(slot));
    }
}

TEST(ViewTags, AreInverted) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    view->invert_tag(1);
    EXPECT_EQ("0 1 0", tagsOf(*view));
    view->invert_tag(1);
    EXPECT_EQ("0 0 0", tagsOf(*view));
    view->invert_tag(0);
    view->invert_all_tags();
    EXPECT_EQ("0 1 1", tagsOf(*view));
    EXPECT_EQ(2u, view->get_num_tags());
    view->invertAllTags();
    EXPECT_EQ(1u, view->countTags());
}

TEST(ViewTags, AreSetTogether) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    view->set_all_tags(8);
    EXPECT_EQ("1 1 1", tagsOf(*view));
    view->set_all_tags(0);
    EXPECT_EQ("0 0 0", tagsOf(*view));
    view->tagAll(true);
    EXPECT_EQ(3u, view->countTags());
    view->tagAll(false);
    EXPECT_EQ(0u, view->countTags());
}

TEST(ViewTags, NeedASourceToBeSetTogetherOrCounted) {
    VDBView view(static_cast<vekdb*>(nullptr));
    view->append(0);
    view->append(1);
    view->tagAll(true);
    view->invertAllTags();
    EXPECT_EQ("0 0", tagsOf(*view));
    view->set_tag(1, 1);
    EXPECT_EQ("0 1", tagsOf(*view));
    EXPECT_EQ(0u, view->countTags());
    EXPECT_EQ(0u, view->tagMatches(0));
    EXPECT_EQ(0u, view->tagDuplicates(0));
    EXPECT_EQ(0u, view->tagDuplicatesOrdered(0));
    EXPECT_EQ(0u, static_cast<unsigned>(view->tag_all_different(0)));
    view->tagBaseFromTags();
    EXPECT_EQ(nullptr, view->newTagSubview());
    EXPECT_EQ("0 1", tagsOf(*view));
}

TEST(ViewTags, SingleWritesGoThroughTheInterfaceAndPlainLoopsDoNot) {
    const auto table = namedTable({"a", "a", "b"});
    auto* watch = new TagWatch(table.get());
    VDBView view(watch);
    watch->displayAllRecords();
    watch->tagAll(true);
    watch->invertAllTags();
    EXPECT_THAT(watch->writes, ElementsAre());
    queryFor(*table, "a");
    watch->tagMatches(0);
    EXPECT_THAT(watch->writes, ElementsAre("0=1", "1=1", "2=0"));
    watch->writes.clear();
    watch->tagDuplicatesOrdered(0);
    EXPECT_THAT(watch->writes, ElementsAre("1=1"));
    watch->writes.clear();
    VDBView above = stackedOn(view, {2, 0});
    above->set_tag(0, 1);
    above->tagBaseFromTags();
    EXPECT_THAT(watch->writes, ElementsAre("2=1", "0=0"));
}

// --- matches

TEST(ViewTagMatches, KeepsOrClearsTheTagsOfTheOthers) {
    const auto table = namedTable({"fig", "pear", "fig", "date"});
    VDBView view = viewOf(*table, {3, 2, 1, 0});
    queryFor(*table, "fig");
    setTags(*view, {1, 0, 0, 0});
    EXPECT_EQ(2u, view->tagMatches(1));
    EXPECT_EQ("1 1 0 1", tagsOf(*view));
    EXPECT_EQ(2u, view->tagMatches(0));
    EXPECT_EQ("0 1 0 1", tagsOf(*view));
}

TEST(ViewTagMatches, TheInterfaceAlwaysClears) {
    const auto table = namedTable({"fig", "pear"});
    VDBView view = viewOfAll(*table);
    queryFor(*table, "fig");
    view->set_tag(1, 1);
    EXPECT_EQ(1u, view->tag_matching_records(1));
    EXPECT_EQ("1 0", tagsOf(*view));
}

TEST(ViewTagMatches, WithoutAQueryEveryRowMatches) {
    const auto table = numberedTable(4);
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(4u, view->tag_matching_records(0));
    EXPECT_EQ("1 1 1 1", tagsOf(*view));
    EXPECT_EQ(0u, table->tag_matching_records(0));
}

TEST(ViewTagMatches, AsksForTheSourceRows) {
    Matching table(5);
    VDBView view = viewOf(table, {4, 1, 2});
    EXPECT_EQ(2u, view->tagMatches(0));
    EXPECT_THAT(table.asked, ElementsAre(4, 1, 2));
    EXPECT_EQ("1 0 1", tagsOf(*view));
}

TEST(ViewTagMatches, InAStackTheRowsAskedForAreTheTables) {
    const auto table = namedTable({"a", "b", "c", "d", "e", "f"});
    VDBView base = viewOf(*table, {3, 4, 5});
    VDBView view = stackedOnAll(base);
    const auto tagged = [&](const char* first, const char* second) {
        unsigned total = 0;
        std::string names;
        for (const char* name : {first, second}) {
            queryFor(*table, name);
            total += view->tagMatches(0);
            for (unsigned i = 0; i < 3; ++i) {
                if (view->get_tag(i) != 0) joinWord(names, view->getField(i, 0).c_str());
            }
        }
        return names + "/" + std::to_string(total);
    };
    queryFor(*table, "d");
    EXPECT_EQ(1u, base->tagMatches(0));
    EXPECT_EQ("1 0 0", tagsOf(*base));
    EXPECT_EQ("/0", tagged("d", "e"));
    EXPECT_EQ("d e/2", tagged("a", "b"));
}

// --- duplicates

TEST(ViewTagDuplicates, InAnOrderedViewEqualTextsAreTaggedWhateverTheirCase) {
    const auto table = namedTable({"abc", "ABC", "abd", "abd"});
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(2u, view->tagDuplicatesOrdered(0));
    EXPECT_EQ("0 1 0 1", tagsOf(*view));
}

TEST(ViewTagDuplicates, InAnOrderedViewNoTagIsCleared) {
    const auto table = namedTable({"a", "b", "b"});
    VDBView view = viewOfAll(*table);
    view->set_tag(0, 1);
    EXPECT_EQ(1u, view->tagDuplicatesOrdered(0));
    EXPECT_EQ("1 0 1", tagsOf(*view));
    VDBView single = viewOf(*table, {1});
    single->set_tag(0, 1);
    EXPECT_EQ(0u, single->tagDuplicatesOrdered(0));
    EXPECT_EQ("1", tagsOf(*single));
    VDBView empty(table.get());
    EXPECT_EQ(0u, empty->tagDuplicatesOrdered(0));
}

TEST(ViewTagDuplicates, InAnOrderedViewMissingValuesAndRecordsReadAsEmpty) {
    const auto table = namedTable({"", "a"});
    VDBView view = viewOf(*table, {0, 99, 98, 1});
    EXPECT_EQ(2u, view->tagDuplicatesOrdered(0));
    EXPECT_EQ("0 1 1 0", tagsOf(*view));
    VDBView columns = viewOfAll(*table);
    EXPECT_EQ(1u, columns->tagDuplicatesOrdered(7));
    EXPECT_EQ("0 1", tagsOf(*columns));
}

TEST(ViewTagDuplicates, TheFieldIsTakenAsSixteenBits) {
    const auto table = namedTable({"a", "a"});
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(1u, view->tagDuplicatesOrdered(65536));
}

TEST(ViewTagDuplicates, EveryRepeatedTextIsTaggedEmptyOnesToo) {
    const auto table = namedTable({"b", "A", "a", "", "B", ""});
    VDBView view = viewOfAll(*table);
    view->tagAll(true);
    EXPECT_EQ(3u, view->tagDuplicates(0));
    EXPECT_EQ("0 0 1 0 1 1", tagsOf(*view));
    EXPECT_EQ("b A a - B -", namesOf(*view));
    EXPECT_EQ(3u, view->tag_all_different(0));
    EXPECT_EQ("1 1 0 1 0 0", tagsOf(*view));
    EXPECT_EQ(1u, view->handleCount());
}

TEST(ViewTagDuplicates, ASingleRowIsNoDuplicate) {
    const auto table = namedTable({"a"});
    VDBView view = viewOfAll(*table);
    view->set_tag(0, 1);
    EXPECT_EQ(0u, view->tagDuplicates(0));
    EXPECT_EQ("0", tagsOf(*view));
}

TEST(ViewTagDuplicates, BlanksThatTheOrderSkipsTellTextsApart) {
    const auto table = namedTable({"x", "y", "x"});
    table->get_record(1)->set_field(0, " x", false);
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(0u, view->tagDuplicates(0));
    EXPECT_EQ("0 0 0", tagsOf(*view));
}

TEST(ViewTagDuplicates, ChangesTheSortFieldOfTheTable) {
    vekdb table(textColumns({"A", "B"}));
    addRow(table, {"2", "1"});
    addRow(table, {"1", "2"});
    VDBView view = viewOfAll(table);
    view->tagDuplicates(1);
    EXPECT_EQ("2 1", namesOf(table));
    table.sort(0, 0);
    EXPECT_EQ("2 1", namesOf(table));
    view->tagDuplicates(0);
    table.sort(0, 0);
    EXPECT_EQ("1 2", namesOf(table));
}

TEST(ViewTagDuplicates, WorksThroughAStack) {
    const auto table = namedTable({"a", "b", "a", "b", "c"});
    VDBView base = viewOf(*table, {4, 3, 2, 1, 0});
    VDBView view = stackedOn(base, {4, 3, 2, 1});
    EXPECT_EQ(2u, view->tagDuplicates(0));
    EXPECT_EQ("a b a b", namesOf(*view));
    EXPECT_EQ("0 0 1 1", tagsOf(*view));
    EXPECT_EQ("0 0 0 0 0", tagsOf(*base));
}

// --- to and from the source

TEST(ViewTagBase, WritesTheTagsOfShownRowsOnly) {
    const auto table = numberedTable(4);
    setTags(*table, {1, 1, 1, 1});
    VDBView view = viewOf(*table, {2, 0});
    view->set_tag(1, 1);
    view->tagBaseFromTags();
    EXPECT_EQ("1 1 0 1", tagsOf(*table));
}

TEST(ViewTagBase, WritesIntoTheBaseViewNotTheTable) {
    const auto table = numberedTable(3);
    VDBView base = viewOf(*table, {2, 1, 0});
    VDBView view = stackedOnAll(base);
    setTags(*view, {1, 0, 1});
    view->tagBaseFromTags();
    EXPECT_EQ("1 0 1", tagsOf(*base));
    EXPECT_EQ("0 0 0", tagsOf(*table));
}

TEST(ViewTagSubview, ShowsTheTaggedRowsOnTopOfTheView) {
    const auto table = numberedTable(5);
    VDBView view(new VDBViewRep(table.get(), "Name,"));
    show(*view, {4, 3, 2, 1});
    tagRows(*view, {0, 2});
    VDBView tagged(view->newTagSubview());
    EXPECT_EQ(view.get(), tagged->base());
    EXPECT_EQ(table.get(), tagged->table());
    EXPECT_STREQ("Name,", tagged->fieldSpecText());
    EXPECT_EQ("0 2", rowsOf(*tagged));
    EXPECT_EQ("r4 r2", namesOf(*tagged));
    EXPECT_EQ("0 0", tagsOf(*tagged));
    EXPECT_EQ(2u, view->handleCount());
    EXPECT_EQ(1u, tagged->handleCount());
}

TEST(ViewTagSubview, StartsWithNoHolder) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    VDBViewRep* tagged = view->newTagSubview();
    ASSERT_NE(nullptr, tagged);
    EXPECT_EQ(0u, tagged->handleCount());
    EXPECT_EQ(0u, tagged->get_num_records());
    delete tagged;
    EXPECT_EQ(1u, view->handleCount());
}
