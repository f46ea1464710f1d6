#include <gtest/gtest.h>

#include <vekdb/host/diagnostics.h>
#include "testing/deferral.h"
#include "testing/failing_allocator.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

// Every allocation of an operation fails once, in turn. The view must stay one that can be read,
// edited and destroyed, and nothing may be lost.

namespace {

using testing_support::CountingAllocator;
using testing_support::failEachAllocation;

/// Says nothing and takes no memory for it.
struct Quiet final : iDiagnosticSink {
    Quiet() : before(setDiagnosticSink(this)) {}
    ~Quiet() { setDiagnosticSink(before); }
    void debug(const char*) noexcept override {}
    void log(const char*) noexcept override {}
    void splat(const char*) noexcept override {}
    iDiagnosticSink* before;
};

void expectReadable(const VDBViewRep& view) {
    for (unsigned i = 0; i < view.get_num_records(); ++i) {
        view.get_record(i);
        EXPECT_LE(view.get_tag(i), 1u);
    }
    EXPECT_TRUE(view.get_num_records() == 0 || view.indexCapacity() >= view.get_num_records());
}

CookieVec someCookies() {
    CookieVec list;
    list.add(Cookie());
    list.add(Cookie("0102030405060708090a0b0c0d0e0f1000004d", false));
    return list;
}

void failEveryEdit() {
    const auto table = numberedTable(60);
    VDBView base = viewOfAll(*table);
    VDBView view = stackedOnAll(base);
    const CookieVec cookies = someCookies();
    const auto edit = [&] {
        view->displayRecordsAt(0, 25, 3);
        view->displayRecordsAt(cookies, 2);
        view->displayTaggedRecordsAt(1);
        view->append(5);
        view->sort(1, 0);
        tagRows(*view, {1, 2, 5});
        view->tagDuplicates(0);
        view->removeTagged();
        view->remove(2, 40);
        view->insertBlankRecords(1, 3);
        view->deleteRecords(0, 2);
        view->buildIndex();
        view->displayAllRecordsWithBaseTagStatus();
        view->newTagSubview()->release();
    };
    const auto check = [&] {
        expectReadable(*base);
        expectReadable(*view);
        EXPECT_EQ(1u, view->handleCount());
        EXPECT_EQ(2u, base->handleCount());
    };
    EXPECT_GT(failEachAllocation(edit, check), 20u);
    check();
}

}  // namespace

TEST(ViewMemory, BuildingAViewLosesNothing) {
    const auto table = numberedTable(30);
    table->add_param("Project", "Night");
    table->set_filename(L"log.vdb");
    VDBView warm = viewOfAll(*table);
    const auto build = [&] {
        VDBView view(table.get());
        view->baseView(warm.get());
        view->displayAllRecords();
        view->fieldSpec("Name,None");
        view->add_param("Own", "value");
    };
    const Quiet quiet;
    EXPECT_GT(failEachAllocation(build, [&] { EXPECT_EQ(1u, warm->handleCount()); }), 10u);
}

TEST(ViewMemory, EveryEditLeavesAViewThatWorks) {
    failEveryEdit();
}

TEST(ViewMemory, EveryEditThatDefersRemovalsLeavesAViewThatWorks) {
    const DeferralFrom atOnce(1, 0);
    failEveryEdit();
}

TEST(ViewMemory, RowsGoWhereThereIsNoMemoryToDeferTheirRemoval) {
    const auto table = numberedTable(60);
    VDBView view = viewOf(*table, {2, 1, 0});
    view->displayRecordsAt(3, 50, 3);
    const std::string rows = rowsOf(*view);
    const DeferralFrom atOnce(1, 0);
    const auto check = [&] { EXPECT_EQ(rows, rowsOf(*view)); };
    const auto takeOutAndShowAgain = [&] {
        view->remove(1, 1);
        view->displayRecordsAt(1, 1, 1);
    };
    EXPECT_GT(failEachAllocation(takeOutAndShowAgain, check), 4u);
    check();
}

TEST(ViewMemory, RemovalsThatFailLeaveEveryRow) {
    const auto table = numberedTable(100);
    VDBView view = viewOfAll(*table);
    const auto check = [&] {
        EXPECT_EQ(100u, view->get_num_records());
        EXPECT_EQ(99u, view->sourceRow(99));
    };
    EXPECT_EQ(1u, failEachAllocation([&] { view->remove(0, 90); }, check));
    EXPECT_EQ("90 91 92 93 94 95 96 97 98 99", rowsOf(*view));
}

TEST(ViewMemory, CopiesThatFailLoseNothing) {
    const auto table = numberedTable(30);
    VDBView view = viewOf(*table, {4, 2, 2, 9});
    const auto copy = [&] {
        const VDBView same = view.copy();
        const VDBView apart = view.copyWithNewBaseView();
        const std::unique_ptr<vekdb> newTable(apart->table());
        const std::unique_ptr<vekdb> converted(Convert_VDBView_to_vekdb(view));
    };
    EXPECT_GT(failEachAllocation(copy, [&] { EXPECT_EQ(1u, view->handleCount()); }), 20u);
}

TEST(ViewMemory, SavesThatFailLeaveTheOldFile) {
    testing_support::TempDir folder;
    folder.write("out", "old");
    const auto table = numberedTable(3);
    VDBView view = viewOfAll(*table);
    const auto name = folder.widePath("out");
    const auto check = [&] {
        EXPECT_EQ("old", folder.read("out"));
        EXPECT_EQ(1u, folder.names().size());
    };
    EXPECT_GT(failEachAllocation([&] { view->saveAsText(name, false); }, check), 2u);
    EXPECT_NE("old", folder.read("out"));
}

TEST(ViewMemory, EverythingGoesBackToTheHost) {
    long live = -1;
    {
        const auto table = numberedTable(50);
        VDBView warm = viewOfAll(*table);
        warm->deleteRecords(0, 1);
        CountingAllocator counting;
        {
            VDBView base = viewOfAll(*table);
            VDBView view = stackedOnAll(base);
            tagRows(*view, {1, 5, 9});
            VDBView tagged(view->newTagSubview());
            view->removeTagged();
            view->tagDuplicates(0);
            VDBView copy = view.copy();
        }
        live = counting.liveBlocks();
    }
    EXPECT_EQ(0, live);
}
