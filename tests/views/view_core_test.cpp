#include <gmock/gmock.h>

#include <type_traits>

#include <vekdb/host/grow_string.h>
#include <vekdb/support/sexpr.h>
#include "testing/capture_diagnostics.h"
#include "testing/views.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::CaptureDiagnostics;

namespace {

std::string fieldsOf(const VDBViewRep& view) {
    GrowString out;
    SExpr::print(view.fieldList(), out);
    return static_cast<const char*>(out);
}

std::string descriptionOf(const VDBViewRep& view) {
    GrowString out;
    view.asString(out);
    return static_cast<const char*>(out);
}

std::string identitySpecOf(const VDBViewRep& view) {
    GrowString out;
    view.identityFieldSpec(out);
    return static_cast<const char*>(out);
}

/// A view whose reserved words a test can set.
class Hooked : public VDBViewRep {
public:
    using VDBViewRep::VDBViewRep;
    void reserve(bool condition, bool order) {
        condition_ = condition ? 1 : 0;
        sortOrder_ = order ? 1 : 0;
    }
};

struct ThreeColumns : testing::Test {
    ThreeColumns() : table(textColumns({"A", "B", "C"})) { table.add_records(4); }
    vekdb table;
    CaptureDiagnostics said;
};

}  // namespace

static_assert(std::is_abstract_v<VDBBase> && std::has_virtual_destructor_v<VDBBase>);
static_assert(std::is_base_of_v<VDBBase, VDBViewRep> && std::is_base_of_v<Notifier, VDBViewRep>);
static_assert(!std::is_copy_constructible_v<VDBViewRep>);

// --- construction and field specs

TEST_F(ThreeColumns, AViewWithoutASpecHasAllColumnsAndNoRowsUntilAsked) {
    VDBView view(&table);
    EXPECT_STREQ("A,B,C", view->fieldSpecText());
    EXPECT_EQ("(A B C)", fieldsOf(*view));
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, view->indexCapacity());
    view->buildIndex();
    EXPECT_EQ("0 1 2 3", rowsOf(*view));
    EXPECT_EQ(table.get_record(2), (*view)[2]);
}

TEST_F(ThreeColumns, ASpecChoosesColumnsInItsOrderAndWarnsOfUnknownNames) {
    VDBView view(new VDBViewRep(&table, "B\t,X,A"));
    EXPECT_STREQ("B\t,X,A", view->fieldSpecText());
    EXPECT_EQ("(B A)", fieldsOf(*view));
    EXPECT_THAT(said.messages, ElementsAre("Warning: VDBView::fieldSpec, non-existant fieldname "
                                           "\"X\".\n"));
}

TEST_F(ThreeColumns, NamesOfASpecAreExact) {
    VDBView view(new VDBViewRep(&table, "a, B,B"));
    EXPECT_EQ("(B)", fieldsOf(*view));
    EXPECT_EQ(2u, said.messages.size());
}

TEST_F(ThreeColumns, AnArrayOfNamesGivesASpecWithAFinalComma) {
    const char* names[] = {"A", "C", nullptr};
    VDBView view(new VDBViewRep(&table, names));
    EXPECT_STREQ("A,C,", view->fieldSpecText());
    EXPECT_EQ("(A C)", fieldsOf(*view));
}

TEST_F(ThreeColumns, AnArrayOfNoNamesGivesTheEmptySpec) {
    const char* names[] = {nullptr};
    VDBView view(new VDBViewRep(&table, names));
    EXPECT_STREQ("", view->fieldSpecText());
    EXPECT_EQ(nullptr, view->fieldList());
    EXPECT_EQ("fieldSpec: \n", descriptionOf(*view));
}

TEST_F(ThreeColumns, NullSpecsMeanAllColumns) {
    VDBView none(new VDBViewRep(&table, nullptr));
    VDBView text(new VDBViewRep(&table, static_cast<const char*>(nullptr)));
    VDBView array(new VDBViewRep(&table, static_cast<const char* const*>(nullptr)));
    for (const VDBView* view : {&none, &text, &array}) {
        EXPECT_STREQ("A,B,C", (*view)->fieldSpecText());
        EXPECT_EQ("(A B C)", fieldsOf(**view));
    }
}

TEST_F(ThreeColumns, AColumnCanBeChosenTwice) {
    VDBView view(new VDBViewRep(&table, "A,A"));
    EXPECT_EQ("(A A)", fieldsOf(*view));
}

TEST_F(ThreeColumns, TheDescriptionNamesSpecAndFields) {
    VDBView view(new VDBViewRep(&table, "C,A"));
    EXPECT_EQ("fieldSpec: C,A\nfields: (C A)\n", descriptionOf(*view));
    view->fieldSpec(nullptr);
    EXPECT_EQ("fieldSpec: \nfields: (C A)\n", descriptionOf(*view));
}

TEST_F(ThreeColumns, ASecondSpecPutsItsColumnsBehindTheReversedOldOnes) {
    table.addField({"D", DBFieldTypes::text});
    VDBView view(new VDBViewRep(&table, "A,B"));
    const SExpr* list = view->fieldSpec("C,D");
    EXPECT_EQ(view->fieldList(), list);
    EXPECT_EQ("(B A C D)", fieldsOf(*view));
    EXPECT_STREQ("C,D", view->fieldSpecText());
}

TEST_F(ThreeColumns, ANullSpecDropsTheTextAndKeepsTheList) {
    VDBView view(new VDBViewRep(&table, "A,B"));
    const SExpr* list = view->fieldList();
    EXPECT_EQ(list, view->fieldSpec(nullptr));
    EXPECT_EQ(nullptr, view->fieldSpecText());
    EXPECT_EQ("(A B)", fieldsOf(*view));
}

TEST_F(ThreeColumns, ASpecMayBeTheViewsOwnText) {
    VDBView view(new VDBViewRep(&table, "A,B"));
    view->fieldSpec(view->fieldSpecText());
    EXPECT_STREQ("A,B", view->fieldSpecText());
    EXPECT_EQ("(B A A B)", fieldsOf(*view));
}

TEST_F(ThreeColumns, FieldsReferToTheSourceOfTheTime) {
    VDBView base(&table);
    VDBView view(&table);
    EXPECT_EQ(&table, static_cast<SExprRef*>(view->fieldList()->element)->table());
    view->baseView(base.get());
    EXPECT_EQ(&table, static_cast<SExprRef*>(view->fieldList()->element)->table());
    view->fieldSpec("C");
    const auto* last = static_cast<SExprRef*>(view->fieldList()->next->next->next->element);
    EXPECT_EQ(static_cast<VDBBase*>(base.get()), last->table());
    EXPECT_EQ(2u, last->column);
}

TEST_F(ThreeColumns, NamesWithASeparatorCannotBeChosen) {
    table.set_fieldname(1, "B,b");
    VDBView view(&table);
    EXPECT_STREQ("A,B,b,C", view->fieldSpecText());
    EXPECT_EQ("(A C)", fieldsOf(*view));
    EXPECT_EQ(2u, said.messages.size());
}

TEST_F(ThreeColumns, TheFirstColumnOfANameCounts) {
    table.set_fieldname(2, "A");
    VDBView view(&table);
    EXPECT_EQ(0, view->dbFieldIndex("A"));
    EXPECT_EQ(1, view->dbFieldIndex("B"));
    EXPECT_EQ(-1, view->dbFieldIndex("b"));
    EXPECT_EQ(-1, view->dbFieldIndex(""));
    EXPECT_EQ(-1, view->dbFieldIndex(nullptr));
    const auto* third = static_cast<SExprRef*>(view->fieldList()->next->next->element);
    EXPECT_EQ(0u, third->column);
}

TEST_F(ThreeColumns, AViewOfManyColumnsIsBuiltInOnePass) {
    vekdb wide;
    for (int i = 0; i < 20000; ++i) {
        wide.addField({std::string("c").append(std::to_string(i)).c_str(), DBFieldTypes::text});
    }
    VDBView view(&wide);
    int columns = 0;
    for (const SExpr* cell = view->fieldList(); cell != nullptr; cell = cell->next) {
        EXPECT_EQ(static_cast<unsigned>(columns), static_cast<SExprRef*>(cell->element)->column);
        ++columns;
    }
    EXPECT_EQ(20000, columns);
    EXPECT_THAT(said.messages, IsEmpty());
}

TEST(ViewOfNothing, ATableWithoutColumnsGivesTheEmptySpec) {
    vekdb table;
    VDBView view(&table);
    EXPECT_STREQ("", view->fieldSpecText());
    EXPECT_EQ(nullptr, view->fieldList());
    EXPECT_EQ("", identitySpecOf(*view));
}

TEST(ViewOfNothing, WithoutATableThereIsNoSourceAndNoColumn) {
    VDBView view(static_cast<vekdb*>(nullptr));
    EXPECT_EQ(nullptr, view->source());
    EXPECT_STREQ("", view->fieldSpecText());
    EXPECT_EQ("", identitySpecOf(*view));
    EXPECT_EQ(-1, view->dbFieldIndex("A"));
    CaptureDiagnostics said;
    EXPECT_EQ(nullptr, view->fieldSpec("A"));
    EXPECT_EQ(1u, said.messages.size());
    view->buildIndex();
    EXPECT_EQ(0u, view->get_num_records());
}

// --- binding

TEST_F(ThreeColumns, BindingTakesTheTablesNameAndParameters) {
    table.set_filename(L"log.vdb");
    table.add_param("Project", "Night");
    VDBView view(&table);
    EXPECT_EQ(L"log.vdb", view->get_filename());
    EXPECT_STREQ("Rev 1", view->get_param_val("VEKDB"));
    EXPECT_STREQ("Night", view->get_param_val("Project"));
    EXPECT_STREQ("Night", view->get_param_val("PROJECT"));
}

TEST_F(ThreeColumns, ATableWithoutParametersLeavesTheRevisionEmpty) {
    VDBView view(&table);
    EXPECT_STREQ("", view->get_param_val("VEKDB"));
    view->internRevision();
    EXPECT_STREQ("", view->get_param_val("VEKDB"));
}

TEST_F(ThreeColumns, BindingTheTableBoundAlreadyKeepsEverything) {
    VDBView view = viewOfAll(table);
    tagRows(*view, {1});
    view->add_param("Own", "x");
    view->set_filename(L"own.vdb");
    view->vdb(&table);
    EXPECT_EQ("0 1 2 3", rowsOf(*view));
    EXPECT_EQ("0 1 0 0", tagsOf(*view));
    EXPECT_STREQ("x", view->get_param_val("Own"));
    EXPECT_EQ(L"own.vdb", view->get_filename());
    table.delete_records(0, 1);
    EXPECT_EQ("0 1 2", rowsOf(*view));
}

TEST_F(ThreeColumns, BindingAnotherTableStartsAfreshButKeepsTheFields) {
    vekdb other(textColumns({"X"}));
    other.add_records(9);
    other.set_filename(L"other.vdb");
    other.add_param("Project", "Day");
    VDBView base = viewOfAll(table);
    VDBView view = stackedOnAll(base);
    view->add_param("Own", "x");
    view->vdb(&other);
    EXPECT_EQ(&other, view->table());
    EXPECT_EQ(nullptr, view->base());
    EXPECT_EQ(1u, base->handleCount());
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, view->indexCapacity());
    EXPECT_EQ(L"other.vdb", view->get_filename());
    EXPECT_STREQ("Day", view->get_param_val("Project"));
    EXPECT_STREQ("", view->get_param_val("Own"));
    EXPECT_EQ("(A B C)", fieldsOf(*view));
    view->displayAllRecords();
    table.delete_records(0, 1);
    EXPECT_EQ(9u, view->get_num_records());
    other.delete_records(0, 1);
    EXPECT_EQ(8u, view->get_num_records());
}

TEST_F(ThreeColumns, BindingToNothingKeepsFileNameAndFieldsOnly) {
    table.set_filename(L"log.vdb");
    table.add_param("Project", "Night");
    VDBView view = viewOfAll(table);
    view->vdb(nullptr);
    EXPECT_EQ(nullptr, view->source());
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(L"log.vdb", view->get_filename());
    EXPECT_EQ("(A B C)", fieldsOf(*view));
    EXPECT_STREQ("", view->get_param_val("Project"));
    table.delete_records(0, 1);
}

TEST_F(ThreeColumns, ClearingKeepsFieldsParametersAndRegistrations) {
    table.add_param("Project", "Night");
    VDBView view = viewOfAll(table);
    view->clear();
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, view->indexCapacity());
    EXPECT_EQ("(A B C)", fieldsOf(*view));
    EXPECT_STREQ("Night", view->get_param_val("Project"));
    view->displayAllRecords();
    table.delete_records(0, 1);
    EXPECT_EQ("0 1 2", rowsOf(*view));
}

TEST_F(ThreeColumns, InitLetsGoOfEverything) {
    VDBView base = viewOfAll(table);
    auto* view = new VDBViewRep(&table, "A");
    view->baseView(base.get());
    view->displayAllRecords();
    view->init();
    EXPECT_EQ(0u, view->handleCount());
    EXPECT_EQ(nullptr, view->source());
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, view->indexCapacity());
    EXPECT_EQ(nullptr, view->fieldSpecText());
    EXPECT_EQ(nullptr, view->fieldList());
    EXPECT_EQ(1u, base->handleCount());
    table.delete_records(0, 1);
    delete view;
}

// --- stacking

TEST_F(ThreeColumns, StackingTakesTheBasesParametersAndCountsIt) {
    VDBView base(&table);
    base->add_param("Of base", "b");
    VDBView view(&table);
    view->add_param("Own", "x");
    view->displayAllRecords();
    view->baseView(base.get());
    EXPECT_EQ(2u, base->handleCount());
    EXPECT_EQ(base.get(), view->base());
    EXPECT_EQ(static_cast<VDBBase*>(base.get()), view->source());
    EXPECT_EQ(&table, view->table());
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(0u, view->indexCapacity());
    EXPECT_STREQ("b", view->get_param_val("Of base"));
    EXPECT_STREQ("", view->get_param_val("Own"));
    view->baseView(nullptr);
    EXPECT_EQ(1u, base->handleCount());
    EXPECT_EQ(&table, view->source());
    EXPECT_STREQ("", view->get_param_val("Of base"));
}

TEST_F(ThreeColumns, StackingOnThePresentBaseKeepsTheRows) {
    VDBView base = viewOfAll(table);
    VDBView view = stackedOnAll(base);
    view->baseView(base.get());
    EXPECT_EQ("0 1 2 3", rowsOf(*view));
    EXPECT_EQ(2u, base->handleCount());
}

TEST_F(ThreeColumns, AViewCannotStandOnItself) {
    VDBView bottom = viewOfAll(table);
    VDBView middle = stackedOnAll(bottom);
    VDBView top = stackedOnAll(middle);
    bottom->baseView(bottom.get());
    bottom->baseView(middle.get());
    bottom->baseView(top.get());
    EXPECT_EQ(nullptr, bottom->base());
    EXPECT_EQ("0 1 2 3", rowsOf(*bottom));
    EXPECT_EQ(1u, top->handleCount());
}

TEST_F(ThreeColumns, ParametersOfAnotherViewAreAdded) {
    VDBView one(&table), two(&table);
    one->add_param("Shared", "1");
    one->add_param("Of one", "1");
    one->set_param_val("Unset", nullptr);
    two->add_param("shared", "2");
    two->addParamsFrom(one.get());
    EXPECT_STREQ("1", two->get_param_val("Shared"));
    EXPECT_STREQ("1", two->get_param_val("Of one"));
    EXPECT_STREQ("", two->get_param_val("Unset"));
    two->addParamsFrom(two.get());
    two->addParamsFrom(static_cast<VDBViewRep*>(nullptr));
    two->addParamsFrom(static_cast<vekdb*>(nullptr));
    EXPECT_STREQ("1", two->get_param_val("Of one"));
}

TEST_F(ThreeColumns, ParametersOfTheTableReplaceTheViewsOwn) {
    table.add_param("Project", "Night");
    VDBView view(&table);
    view->set_param_val("project", "Mine");
    EXPECT_STREQ("Night", table.get_param_val("Project"));
    view->addParamsFrom(&table);
    EXPECT_STREQ("Night", view->get_param_val("Project"));
}

// --- the index

TEST(ViewRows, TheRoomFollowsTheRuleAndTheCountStays) {
    vekdb table(textColumns({"A"}));
    VDBView view(&table);
    view->sizeIndexFor(1);
    EXPECT_EQ(20u, view->indexCapacity());
    view->sizeIndexFor(21);
    EXPECT_EQ(40u, view->indexCapacity());
    view->sizeIndexFor(100);
    EXPECT_EQ(100u, view->indexCapacity());
    view->sizeIndexFor(5);
    EXPECT_EQ(50u, view->indexCapacity());
    view->sizeIndexFor(5);
    EXPECT_EQ(25u, view->indexCapacity());
    for (int n = 1; n <= 25; ++n) {
        view->sizeIndexFor(n);
        EXPECT_EQ(25u, view->indexCapacity());
    }
    EXPECT_EQ(0u, view->get_num_records());
    view->sizeIndexFor(0);
    EXPECT_EQ(0u, view->indexCapacity());
}

TEST(ViewRows, RowsOutsideTheViewHaveNoRecord) {
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    EXPECT_EQ(nullptr, (*view)[-1]);
    EXPECT_EQ(nullptr, (*view)[3]);
    EXPECT_EQ(table->get_record(2), (*view)[2]);
    VDBView unbound(static_cast<vekdb*>(nullptr));
    unbound->append(0);
    EXPECT_EQ(1u, unbound->get_num_records());
    EXPECT_EQ(nullptr, (*unbound)[0]);
}

TEST(ViewRows, RowsWithoutRoomHaveNoRecord) {
    const auto table = numberedTable(30);
    VDBView view = viewOfAll(*table);
    view->sizeIndexFor(0);
    EXPECT_EQ(30u, view->get_num_records());
    EXPECT_EQ(nullptr, (*view)[0]);
    EXPECT_EQ(0u, view->get_tag(0));
    view->set_tag(0, 1);
    view->sort(0, 0);
    view->tagAll(true);
    EXPECT_EQ(0u, view->countTags());
}

TEST(ViewRows, BuildingShowsTheSourceFromTheTopOfAStackDown) {
    const auto table = numberedTable(5);
    VDBView base = viewOf(*table, {4, 2, 0});
    VDBView view(table.get());
    view->baseView(base.get());
    view->buildIndex();
    EXPECT_EQ("0 1 2", rowsOf(*view));
    EXPECT_EQ("r4 r2 r0", namesOf(*view));
}

TEST(ViewRows, BuildingAgainKeepsTagsBySlotInSmallViews) {
    const auto table = numberedTable(30);
    VDBView view(table.get());
    view->buildIndex();
    EXPECT_EQ(40u, view->indexCapacity());
    view->tagAll(true);
    view->buildIndex();
    EXPECT_EQ(30u, view->countTags());
}

TEST(ViewRows, BuildingAgainLosesTheTagsOfLargerViews) {
    const auto table = numberedTable(60);
    VDBView view(table.get());
    view->displayAllRecords();
    ASSERT_EQ(60u, view->indexCapacity());
    view->tagAll(true);
    view->buildIndex();
    EXPECT_EQ(60u, view->get_num_records());
    EXPECT_EQ(0u, view->countTags());
}

TEST(ViewRows, BuildingMoreRowsThanBeforeClearsTheNewOnes) {
    const auto table = numberedTable(20);
    VDBView view(table.get());
    view->buildIndex();
    ASSERT_EQ(20u, view->indexCapacity());
    view->tagAll(true);
    table->add_records(10);
    view->buildIndex();
    EXPECT_EQ(40u, view->indexCapacity());
    EXPECT_EQ(20u, view->countTags());
    EXPECT_EQ(1u, view->get_tag(19));
    EXPECT_EQ(0u, view->get_tag(20));
}

TEST(ViewRows, BuildingAVanishedSourceLeavesNoRowsButTheRoom) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    table->free();
    view->buildIndex();
    EXPECT_EQ(0u, view->get_num_records());
    EXPECT_EQ(20u, view->indexCapacity());
}

TEST(ViewRows, TheReservedWordsOnlyWarn) {
    const auto table = numberedTable(2);
    auto* hooked = new Hooked(table.get());
    VDBView view(hooked);
    CaptureDiagnostics said;
    view->buildIndex();
    view->sortIndex();
    EXPECT_TRUE(view->satisfiesCondition(nullptr));
    EXPECT_THAT(said.splatted, IsEmpty());
    hooked->reserve(true, true);
    view->buildIndex();
    EXPECT_EQ("0 1", rowsOf(*view));
    EXPECT_THAT(said.splatted, ElementsAre("VDBViewRep::satisfiesCondition, not implemented\n",
                                           "VDBViewRep::satisfiesCondition, not implemented\n",
                                           "VDBViewRep::sortIndex(), not implemented!\n"));
    EXPECT_TRUE(view->satisfiesCondition(table->get_record(0)));
    EXPECT_EQ(4u, said.splatted.size());
}

TEST(ViewRows, FindingASourceRowTakesTheFirst) {
    const auto table = numberedTable(5);
    VDBView view = viewOf(*table, {3, 1, 3});
    EXPECT_EQ(0, view->findViewIndexForBaseRow(3));
    EXPECT_EQ(1, view->findViewIndexForBaseRow(1));
    EXPECT_EQ(-1, view->findViewIndexForBaseRow(0));
    EXPECT_EQ(-1, view->findViewIndexForBaseRow(0x100000003));
    view->clear();
    EXPECT_EQ(-1, view->findViewIndexForBaseRow(3));
}

TEST(ViewRows, RoomIsSeenSlotBySlot) {
    const auto table = numberedTable(5);
    VDBView view = viewOfAll(*table);
    tagRows(*view, {4});
    view->remove(4, 1);
    EXPECT_EQ(1u, view->slotTag(4));
    EXPECT_EQ(0u, view->slotTag(5));
    EXPECT_EQ(0u, view->slotTag(20));
    EXPECT_EQ(0xFFFFFFFFu, view->sourceRow(4));
    EXPECT_EQ(0xFFFFFFFFu, view->sourceRow(-1));
}
