#include <gtest/gtest.h>

#include <vekdb/host/grow_string.h>
#include <vekdb/views/field_map.h>
#include "testing/deferral.h"
#include "testing/failing_allocator.h"
#include "testing/quiet.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

// Every allocation of an operation fails once, in turn. The view must stay one that can be read,
// edited and destroyed, and nothing may be lost.

namespace {

using testing_support::CountingAllocator;
using testing_support::failEachAllocation;
using testing_support::FailingAllocator;
using testing_support::Quiet;

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
    const DeferralFrom atOnce(1, 0);
    for (unsigned n = 1; n < 12; ++n) {
        const auto table = numberedTable(60);
        VDBView view = viewOf(*table, {2, 1, 0});
        view->displayRecordsAt(3, 50, 3);
        try {
            const FailingAllocator failing(n);
            table->delete_records(1, 2);
        } catch (const Quor::Exception::BadAlloc&) {
        }
        if (table->get_num_records() == 60) {
            table->delete_records(1, 2);
        }
        EXPECT_EQ(51u, view->get_num_records()) << n;
        EXPECT_EQ(0u, view->sourceRow(0)) << n;
        EXPECT_EQ(1u, view->sourceRow(1)) << n;
        EXPECT_EQ(50u, view->sourceRow(50)) << n;
    }
}

TEST(ViewMemory, RemovalsThatNobodyHearsOfTakeNone) {
    const auto table = numberedTable(100);
    VDBView view = viewOfAll(*table);
    {
        FailingAllocator failing(1);
        view->remove(0, 90);
    }
    EXPECT_EQ("90 91 92 93 94 95 96 97 98 99", rowsOf(*view));
}

TEST(ViewMemory, RemovalsThatCannotBeToldLeaveEveryRow) {
    const auto table = numberedTable(100);
    VDBView view = viewOfAll(*table);
    VDBView upper = stackedOnAll(view);
    const auto check = [&] {
        EXPECT_EQ(100u, view->get_num_records());
        EXPECT_EQ(99u, view->sourceRow(99));
        EXPECT_EQ(100u, upper->get_num_records());
    };
    FailingAllocator failing(1);
    EXPECT_THROW(view->remove(0, 90), Quor::Exception::BadAlloc);
    check();
}

// The rows are gone from the table by then: whatever fails on the way, views must not show them.
TEST(ViewMemory, ViewsFollowADeletionThatCannotBeReported) {
    for (unsigned n = 1; n < 8; ++n) {
        const auto table = numberedTable(60);
        VDBView view = viewOfAll(*table);
        VDBView upper = stackedOnAll(view);
        VDBView later = viewOfAll(*table);
        bool failed;
        {
            FailingAllocator failing(n);
            try {
                view->delete_records(2, 35);
            } catch (const Quor::Exception::BadAlloc&) {
            }
            failed = failing.fired();
        }
        const unsigned left = table->get_num_records();
        EXPECT_TRUE(left == 25 || (failed && left == 60)) << n << ": " << left;
        EXPECT_EQ(left, view->get_num_records()) << n;
        EXPECT_EQ(namesOf(*table), namesOf(*view)) << n;
        EXPECT_EQ(namesOf(*table), namesOf(*later)) << n;
        EXPECT_EQ(std::string::npos, namesOf(*upper).find("null")) << n;
    }
}

TEST(ViewMemory, ShowingAllRowsAnewShowsAllOrWhatWasShown) {
    const auto table = numberedTable(60);
    VDBView view = viewOf(*table, {4, 2});
    const auto check = [&] { EXPECT_EQ("4 2", rowsOf(*view)); };
    EXPECT_GT(failEachAllocation([&] { view->displayAllRecords(); }, check), 0u);
    EXPECT_EQ(60u, view->get_num_records());
}

TEST(ViewMemory, ABindingThatFailsLeavesTheOldOne) {
    const auto table = numberedTable(6);
    const auto other = numberedTable(3);
    other->add_param("A name too long for a short text", "and a value that is one as well");
    other->set_filename(L"a name that is too long to be a short text");
    VDBView base(other.get());
    VDBView view = viewOf(*table, {4, 2});
    const auto check = [&] {
        EXPECT_EQ("4 2", rowsOf(*view));
        EXPECT_EQ(table.get(), view->table());
        EXPECT_EQ(nullptr, view->base());
        EXPECT_EQ(1u, base->handleCount());
    };
    EXPECT_GT(failEachAllocation([&] { view->baseView(base.get()); }, check), 3u);
    EXPECT_EQ(2u, base->handleCount());
    view->baseView(nullptr);
    view->append(4);
    view->append(2);
    EXPECT_GT(failEachAllocation([&] { view->vdb(other.get()); }, check), 3u);
    EXPECT_EQ(other.get(), view->table());
}

TEST(ViewMemory, AFieldSpecThatFailsLeavesTheColumns) {
    const auto table = std::make_unique<vekdb>(textColumns({"A", "B", "C"}));
    VDBViewRep* made = new VDBViewRep(table.get(), "B");
    const VDBView view(made);
    const auto columns = [&] {
        GrowString text;
        view->asString(text);
        return std::string(static_cast<const char*>(text));
    };
    const std::string before = columns();
    const auto check = [&] { EXPECT_EQ(before, columns()); };
    EXPECT_GT(failEachAllocation([&] { view->fieldSpec("C,A"); }, check), 3u);
    EXPECT_EQ("fieldSpec: C,A\nfields: (B C A)\n", columns());
}

TEST(FieldMapMemory, NamesAndFlagsStayOfOneLength) {
    const auto table = std::make_unique<vekdb>(textColumns({"A", "B", "C"}));
    FieldMap map(*table);
    const auto check = [&] {
        EXPECT_EQ("1 2 3", std::string(map.asString().c_str()));
        EXPECT_EQ(map.size(), map.numVisible());
    };
    const auto append = [&] {
        for (int i = 0; i < 70; ++i) {
            map.append(std::to_string(i).c_str(), true);
        }
    };
    const auto checkAppended = [&] {
        EXPECT_EQ(map.size(), map.numVisible());
        EXPECT_TRUE(map.isVisible(static_cast<int>(map.size()) - 1));
    };
    const VDBView other(table.get());
    const auto bind = [&] { FieldMap(map).setSourceDb(other); };
    EXPECT_GT(failEachAllocation(bind, check), 2u);
    EXPECT_GT(failEachAllocation(append, checkAppended), 3u);
    FieldMap target(other);
    const auto checkTarget = [&] { EXPECT_EQ("1 2 3", std::string(target.asString().c_str())); };
    EXPECT_GT(failEachAllocation([&] { target = map; }, checkTarget), 1u);
    EXPECT_EQ(73u, target.size());
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
