#include <gtest/gtest.h>

#include <ctime>

#include "testing/views.h"

TEST(ViewCopy, OverATableKeepsRowsOrderAndTags) {
    const auto table = numberedTable(6);
    VDBView view(new VDBViewRep(table.get(), "Name,"));
    show(*view, {4, 1, 3});
    setTags(*view, {0, 1, 1});
    VDBView copy = view.copy();
    EXPECT_NE(view.get(), copy.get());
    EXPECT_EQ(table.get(), copy->table());
    EXPECT_EQ(nullptr, copy->base());
    EXPECT_EQ("4 1 3", rowsOf(*copy));
    EXPECT_EQ("0 1 1", tagsOf(*copy));
    EXPECT_STREQ("Name,", copy->fieldSpecText());
    EXPECT_EQ(1u, copy->handleCount());
    EXPECT_EQ(1u, view->handleCount());
    copy->remove(0, 1);
    EXPECT_EQ("4 1 3", rowsOf(*view));
}

TEST(ViewCopy, RepeatedRowsCollapseWhileTagsGoByPosition) {
    const auto table = numberedTable(4);
    VDBView view = viewOf(*table, {2, 2, 0});
    setTags(*view, {0, 1, 0});
    VDBView copy = view.copy();
    EXPECT_EQ("2 0", rowsOf(*copy));
    EXPECT_EQ("0 1", tagsOf(*copy));
}

TEST(ViewCopy, OfAStackedViewShowsTheWholeBase) {
    const auto table = numberedTable(5);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOn(base, {2, 3, 4});
    setTags(*view, {1, 0, 0});
    VDBView copy = view.copy();
    EXPECT_EQ(base.get(), copy->base());
    EXPECT_EQ(3u, base->handleCount());
    EXPECT_EQ("0 1 2 3 4", rowsOf(*copy));
    EXPECT_EQ("1 0 0 0 0", tagsOf(*copy));
    EXPECT_EQ("r0 r1 r2 r3 r4", namesOf(*copy));
}

TEST(ViewCopy, HasTheParametersAndFileNameOfTheTable) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    view->add_param("Mood", "dark");
    view->set_filename(L"view.vdb");
    table->set_filename(L"table.vdb");
    table->add_param("Project", "Night");
    VDBView copy = view.copy();
    EXPECT_STREQ("", copy->get_param_val("Mood"));
    EXPECT_STREQ("Night", copy->get_param_val("Project"));
    EXPECT_EQ(L"table.vdb", copy->get_filename());
}

TEST(ViewCopy, OfARawViewStartsWithNoHolder) {
    const auto table = numberedTable(2);
    VDBView view = viewOfAll(*table);
    VDBViewRep* copy = view->copy();
    EXPECT_EQ(0u, copy->handleCount());
    delete copy;
}

TEST(ViewCopy, OfAnEmptyViewIsEmpty) {
    const auto table = numberedTable(2);
    VDBView view(table.get());
    VDBView copy = view.copy();
    ASSERT_TRUE(copy);
    EXPECT_EQ(0u, copy->get_num_records());
    VDBView apart = view.copyWithNewBaseView();
    ASSERT_TRUE(apart);
    const std::unique_ptr<vekdb> newTable(apart->table());
    EXPECT_EQ(0u, apart->get_num_records());
    EXPECT_EQ(2u, newTable->get_num_records());
    apart = nullptr;
}

TEST(ViewCopy, WithoutATableIsNull) {
    VDBView none, unbound(static_cast<vekdb*>(nullptr));
    EXPECT_FALSE(none.copy());
    EXPECT_FALSE(none.copyWithNewBaseView());
    EXPECT_FALSE(unbound.copy());
    EXPECT_FALSE(unbound.copyWithNewBaseView());
}

TEST(ViewCopy, OfALargeViewIsNotQuadratic) {
    const int rows = 100000;
    vekdb table(textColumns({"Name"}));
    table.add_records(rows);
    VDBView view = viewOfAll(table);
    const std::clock_t start = std::clock();
    VDBView copy = view.copy();
    const std::clock_t took = std::clock() - start;
    EXPECT_EQ(static_cast<unsigned>(rows), copy->get_num_records());
    EXPECT_EQ(99999u, copy->sourceRow(99999));
    // Looking for each record from the first row on would take ten times as long at the least.
    EXPECT_LT(took, 5 * CLOCKS_PER_SEC);
}

TEST(ViewCopyWithTable, ReadsACopyOfTheTableInTheSameOrder) {
    const auto table = numberedTable(5);
    table->add_param("Project", "Night");
    VDBView view(new VDBViewRep(table.get(), ""));
    show(*view, {3, 0, 3});
    setTags(*view, {0, 1, 1});
    view->add_param("Mood", "dark");
    VDBView copy = view.copyWithNewBaseView();
    const std::unique_ptr<vekdb> newTable(copy->table());
    EXPECT_NE(table.get(), newTable.get());
    EXPECT_EQ(5u, newTable->get_num_records());
    EXPECT_EQ("3 0 3", rowsOf(*copy));
    EXPECT_EQ("r3 r0 r3", namesOf(*copy));
    EXPECT_EQ("0 1 1", tagsOf(*copy));
    EXPECT_EQ(newTable->get_record(3), copy->get_record(0));
    EXPECT_STREQ("Name", copy->fieldSpecText());
    EXPECT_STREQ("dark", copy->get_param_val("Mood"));
    EXPECT_STREQ("Night", copy->get_param_val("Project"));
    EXPECT_EQ(nullptr, newTable->get_param_val("Mood"));
    EXPECT_EQ(1u, copy->handleCount());
    copy = nullptr;
}

TEST(ViewCopyWithTable, OfAStackReadsTheTableDirectly) {
    const auto table = numberedTable(5);
    VDBView base = viewOf(*table, {4, 3, 2});
    VDBView view = stackedOn(base, {2, 0});
    VDBView copy = view.copyWithNewBaseView();
    const std::unique_ptr<vekdb> newTable(copy->table());
    EXPECT_EQ(nullptr, copy->base());
    EXPECT_EQ("2 4", rowsOf(*copy));
    EXPECT_EQ("r2 r4", namesOf(*copy));
    table->free();
    EXPECT_EQ("r2 r4", namesOf(*copy));
    copy = nullptr;
}

TEST(ViewCopyWithTable, LeavesRowsWithoutARecordOutAndTagsGoByPosition) {
    const auto table = numberedTable(3);
    VDBView view = viewOf(*table, {2, 77, 0, 1});
    setTags(*view, {0, 1, 0, 1});
    VDBView copy = view.copyWithNewBaseView();
    const std::unique_ptr<vekdb> newTable(copy->table());
    EXPECT_EQ("2 0 1", rowsOf(*copy));
    EXPECT_EQ("0 1 0", tagsOf(*copy));
    copy = nullptr;
}

TEST(ViewConversion, GivesATableOfTheRowsInViewOrder) {
    const auto table = numberedTable(5);
    table->add_param("Project", "Night");
    table->set_tag(3, 1);
    VDBView base = viewOf(*table, {4, 3, 2});
    VDBView view = stackedOn(base, {1, 0, 1});
    view->tagAll(true);
    const std::unique_ptr<vekdb> converted(Convert_VDBView_to_vekdb(view));
    ASSERT_NE(nullptr, converted);
    EXPECT_EQ("r3 r4 r3", namesOf(*converted));
    EXPECT_EQ("0 0 0", tagsOf(*converted));
    EXPECT_STREQ("Night", converted->get_param_val("Project"));
    EXPECT_STREQ("Name", converted->get_fieldname(0));
    EXPECT_EQ(converted.get(), converted->get_record(0)->get_container());
    EXPECT_EQ("0 0 0 1 0", tagsOf(*table));
    EXPECT_EQ(1u, view->handleCount());
}

TEST(ViewConversion, OfAnEmptyViewGivesATableWithoutRecords) {
    const auto table = numberedTable(5);
    VDBView view(table.get());
    const std::unique_ptr<vekdb> converted(Convert_VDBView_to_vekdb(view));
    ASSERT_NE(nullptr, converted);
    EXPECT_EQ(0u, converted->get_num_records());
    EXPECT_EQ(1u, converted->get_num_fields());
    EXPECT_TRUE(converted->get_valid());
}

TEST(ViewConversion, RowsWithoutARecordBecomeBlankOnes) {
    const auto table = numberedTable(3);
    VDBView view = viewOf(*table, {2, 77, 0});
    const std::unique_ptr<vekdb> converted(Convert_VDBView_to_vekdb(view));
    EXPECT_EQ("r2 - r0", namesOf(*converted));
}

TEST(ViewConversion, DropsTheBlanksThatValuesBeginWith) {
    const auto table = numberedTable(1);
    table->get_record(0)->set_field(0, "  wide", false);
    VDBView view = viewOfAll(*table);
    const std::unique_ptr<vekdb> converted(Convert_VDBView_to_vekdb(view));
    EXPECT_EQ("wide", namesOf(*converted));
}

TEST(ViewConversion, WithoutAViewOrATableIsNull) {
    EXPECT_EQ(nullptr, Convert_VDBView_to_vekdb(nullptr));
    EXPECT_EQ(nullptr, Convert_VDBView_to_vekdb(VDBView()));
    EXPECT_EQ(nullptr, Convert_VDBView_to_vekdb(VDBView(static_cast<vekdb*>(nullptr))));
}
