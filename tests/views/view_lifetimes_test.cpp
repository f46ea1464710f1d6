#include <gtest/gtest.h>

#include <vekdb/host/grow_string.h>
#include <vekdb/support/sexpr.h>
#include "testing/capture_diagnostics.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

namespace {

/// Counts the views of it that live.
class Counted : public VDBViewRep {
public:
    explicit Counted(vekdb* table) : VDBViewRep(table) { ++alive; }
    ~Counted() override { --alive; }
    static int alive;
};

int Counted::alive = 0;

struct Lifetimes : testing::Test {
    Lifetimes() : table(numberedTable(10)) { Counted::alive = 0; }
    ~Lifetimes() override { EXPECT_EQ(0, Counted::alive); }

    /// A view that this test counts, showing the whole table.
    VDBView counted() {
        VDBView view(new Counted(table.get()));
        view->displayAllRecords();
        return view;
    }
    VDBView countedOn(const VDBView& base) {
        VDBView view(new Counted(table.get()));
        view->baseView(base.get());
        view->displayAllRecords();
        return view;
    }

    std::unique_ptr<vekdb> table;
};

/// What can be done to a view that makes it tell others of removals.
using Operation = void (*)(vekdb& table, VDBViewRep& view);

struct Named {
    const char* name;
    Operation run;
};

std::ostream& operator<<(std::ostream& out, const Named& named) {
    return out << named.name;
}

const Named kOperations[] = {
    {"TableDeletion", [](vekdb& table, VDBViewRep&) { table.delete_records(1, 4); }},
    {"TableTaggedDeletion",
     [](vekdb& table, VDBViewRep&) {
         tagRows(table, {0, 2, 3, 5, 7});
         table.delete_tagged_records();
     }},
    {"DeleteRecords", [](vekdb&, VDBViewRep& view) { view.deleteRecords(1, 4); }},
    {"DeleteTagged",
     [](vekdb&, VDBViewRep& view) {
         tagRows(view, {0, 2, 3, 5, 7});
         view.deleteTagged();
     }},
    {"RemoveTagged",
     [](vekdb&, VDBViewRep& view) {
         tagRows(view, {0, 2, 3, 5, 7});
         view.removeTagged();
     }},
    {"RemoveUntagged",
     [](vekdb&, VDBViewRep& view) {
         tagRows(view, {0, 2, 3, 5, 7});
         view.removeNonTagged();
     }},
    {"Remove", [](vekdb&, VDBViewRep& view) { view.remove(2, 3); }},
    {"RemoveFromBase", [](vekdb&, VDBViewRep& view) { view.removeRecordsFromBaseView(2, 3); }},
    {"DisplayAll", [](vekdb&, VDBViewRep& view) { view.displayAllRecords(); }},
    {"DisplayAllWithTags",
     [](vekdb&, VDBViewRep& view) { view.displayAllRecordsWithBaseTagStatus(); }},
    {"SetupTags", [](vekdb&, VDBViewRep& view) { view.setupViewTagsFromVekdbTagField(); }},
    {"DeleteTaggedRecords",
     [](vekdb&, VDBViewRep& view) {
         tagRows(view, {0, 2, 3});
         view.delete_tagged_records();
     }},
    {"ShowTagsOnly", [](vekdb&, VDBViewRep& view) { view.set_show_tags_only(1); }},
    {"Binding", [](vekdb&, VDBViewRep& view) { view.vdb(nullptr); }},
};

class DyingViews : public Lifetimes, public testing::WithParamInterface<Named> {};

}  // namespace

// --- the table goes first

TEST_F(Lifetimes, ViewsOutliveTheirTableWithoutASource) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    const testing_support::CaptureDiagnostics quiet;
    table.reset();
    EXPECT_EQ(nullptr, base->table());
    EXPECT_EQ(nullptr, base->source());
    EXPECT_EQ(static_cast<VDBBase*>(base.get()), view->source());
    for (VDBViewRep* each : {base.get(), view.get()}) {
        EXPECT_EQ(10u, each->get_num_records());
        EXPECT_EQ(nullptr, each->get_record(3));
        EXPECT_TRUE(each->getField(3, 0).empty());
        EXPECT_FALSE(each->set_field(3, 0u, "x"));
        EXPECT_FALSE(each->get_valid());
        EXPECT_EQ(0u, each->get_num_fields());
        EXPECT_EQ(0u, each->baseIndex(3));
        EXPECT_EQ(nullptr, each->copy());
        EXPECT_EQ(nullptr, each->copyWithNewBaseView());
        EXPECT_EQ(nullptr, each->newTagSubview());
        EXPECT_EQ(nullptr, Convert_VDBView_to_vekdb(VDBView(each)));
        each->tagDuplicates(0);
        each->tagMatches(0);
        each->sort(0, 0);
        each->deleteRecords(0, 5);
        each->insertBlankRecords(0, 2);
    }
    base->remove(0, 1);
    EXPECT_EQ(9u, base->get_num_records());
}

TEST_F(Lifetimes, ViewsOfATableThatWentCanBeSavedNoMore) {
    testing_support::TempDir folder;
    VDBView view = counted();
    table.reset();
    EXPECT_EQ(0, view->saveAsText(folder.widePath("out"), false));
    EXPECT_EQ(0, view->saveOnlyTagged(folder.widePath("out")));
    EXPECT_FALSE(folder.has("out"));
}

TEST_F(Lifetimes, ViewsOfATableThatWentCanBeBoundToAnother) {
    VDBView view = counted();
    table.reset();
    const auto other = numberedTable(3);
    view->vdb(other.get());
    view->displayAllRecords();
    EXPECT_EQ("r0 r1 r2", namesOf(*view));
    other->delete_records(0, 1);
    EXPECT_EQ("r1 r2", namesOf(*view));
}

TEST_F(Lifetimes, FieldsOfASourceThatWentPrintVoidref) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    view->fieldSpec("Name");
    const auto fields = [&] {
        GrowString out;
        SExpr::print(view->fieldList(), out);
        return std::string(out);
    };
    EXPECT_EQ("(Name Name)", fields());
    const auto other = numberedTable(1);
    view->vdb(other.get());
    EXPECT_EQ("(Name Name)", fields());
    base = nullptr;
    EXPECT_EQ("(Name voidref)", fields());
    table.reset();
    EXPECT_EQ("(voidref voidref)", fields());
}

// --- stacks

TEST_F(Lifetimes, ATallStackGoesWithItsLastHandle) {
    VDBView top = counted();
    for (int i = 0; i < 50; ++i) {
        top = countedOn(top);
    }
    EXPECT_EQ(51, Counted::alive);
    top = nullptr;
    EXPECT_EQ(0, Counted::alive);
}

TEST_F(Lifetimes, SiblingsKeepTheirBase) {
    VDBView first, second;
    {
        VDBView base = counted();
        first = countedOn(base);
        second = countedOn(base);
        EXPECT_EQ(3u, base->handleCount());
    }
    first = nullptr;
    EXPECT_EQ(2, Counted::alive);
    EXPECT_EQ("r0 r1 r2 r3 r4 r5 r6 r7 r8 r9", namesOf(*second));
    second->removeRecordsFromBaseView(0, 1);
    EXPECT_EQ(9u, second->get_num_records());
}

TEST_F(Lifetimes, RestackingOnTheBaseOfTheBaseKeepsIt) {
    VDBView top;
    VDBViewRep* bottom = nullptr;
    {
        VDBView base = counted();
        bottom = base.get();
        VDBView middle = countedOn(base);
        top = countedOn(middle);
    }
    EXPECT_EQ(3, Counted::alive);
    top->baseView(bottom);
    EXPECT_EQ(2, Counted::alive);
    EXPECT_EQ(bottom, top->base());
    EXPECT_EQ(1u, bottom->handleCount());
    top->displayAllRecords();
    EXPECT_EQ(10u, top->get_num_records());
}

TEST_F(Lifetimes, ABaseDeletedOutrightLeavesTheViewOnItsTable) {
    auto* base = new Counted(table.get());
    base->displayAllRecords();
    VDBView view(new Counted(table.get()));
    view->baseView(base);
    view->displayAllRecords();
    delete base;
    EXPECT_EQ(nullptr, view->base());
    EXPECT_EQ(table.get(), view->source());
    table->delete_records(0, 1);
    EXPECT_EQ(9u, view->get_num_records());
}

// --- views that nobody holds

TEST_F(Lifetimes, AnUnheldViewGoesWithTheTemporaryOnTopOfIt) {
    auto* view = new Counted(table.get());
    view->displayAllRecords();
    VDBViewRep* tagged = view->newTagSubview();
    EXPECT_EQ(1u, view->handleCount());
    delete tagged;
    EXPECT_EQ(0, Counted::alive);
}

TEST_F(Lifetimes, TaggingDuplicatesInAnUnheldViewAnswersAndEndsIt) {
    table->set_field(1, 0u, "r0");
    auto* view = new Counted(table.get());
    view->displayAllRecords();
    EXPECT_EQ(1u, view->tagDuplicates(0));
    EXPECT_EQ(0, Counted::alive);
    view = new Counted(table.get());
    view->displayAllRecords();
    EXPECT_EQ(9u, view->tag_all_different(0));
    EXPECT_EQ(0, Counted::alive);
}

TEST_F(Lifetimes, AHeldViewOutlivesTheTemporary) {
    VDBView view = counted();
    view->tagDuplicates(0);
    EXPECT_EQ(1u, view->handleCount());
    delete view->newTagSubview();
    EXPECT_EQ(1u, view->handleCount());
}

TEST_F(Lifetimes, ATagSubviewThatNobodyHoldsGoesWithAnyViewOnTopOfIt) {
    VDBView view = counted();
    tagRows(*view, {1, 2});
    VDBViewRep* tagged = view->newTagSubview();
    {
        VDBView top(table.get());
        top->baseView(tagged);
        EXPECT_EQ(3, static_cast<int>(view->handleCount() + tagged->handleCount()));
    }
    EXPECT_EQ(1u, view->handleCount());
}

// --- views that die while they are being told, or telling

TEST_P(DyingViews, TheLastHandleGoesInsideTheViewsOwnNotice) {
    VDBView view = counted();
    VDBViewRep* rep = view.get();
    WhenTold death(*view, "recordsDeleted", [&](const NotifyMsg&) { view = nullptr; });
    GetParam().run(*table, *rep);
    view = nullptr;
}

TEST_P(DyingViews, TheLastHandleGoesInsideTheNoticeOfTheTable) {
    VDBView view;
    WhenTold death(*table, "recordsDeleted", [&](const NotifyMsg&) { view = nullptr; });
    view = counted();
    VDBViewRep* rep = view.get();
    GetParam().run(*table, *rep);
    view = nullptr;
}

TEST_P(DyingViews, TheViewIsDeletedInsideItsOwnNotice) {
    auto* view = new Counted(table.get());
    view->displayAllRecords();
    bool deleted = false;
    WhenTold death(*view, "recordsDeleted", [&](const NotifyMsg&) {
        if (!deleted) {
            deleted = true;
            delete view;
        }
    });
    GetParam().run(*table, *view);
    if (!deleted) {
        delete view;
    }
}

TEST_P(DyingViews, TheStackGoesInsideANoticeOfItsBase) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    VDBViewRep* rep = view.get();
    WhenTold death(*base, "recordsDeleted", [&](const NotifyMsg&) {
        view = nullptr;
        base = nullptr;
    });
    GetParam().run(*table, *rep);
    view = nullptr;
    base = nullptr;
}

TEST_P(DyingViews, TheStackGoesInsideANoticeOfItsTop) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    VDBViewRep* rep = view.get();
    WhenTold death(*view, "recordsDeleted", [&](const NotifyMsg&) {
        base = nullptr;
        view = nullptr;
    });
    GetParam().run(*table, *rep);
    view = nullptr;
    base = nullptr;
}

TEST_P(DyingViews, ASiblingGoesInsideANotice) {
    VDBView base = counted();
    VDBView view = countedOn(base), sibling = countedOn(base), last = countedOn(base);
    WhenTold death(*base, "recordsDeleted", [&](const NotifyMsg&) { sibling = nullptr; });
    WhenTold second(*view, "recordsDeleted", [&](const NotifyMsg&) { last = nullptr; });
    GetParam().run(*table, *view);
    EXPECT_EQ(base.get(), view->table() != nullptr ? view->base() : base.get());
}

TEST_P(DyingViews, TheViewIsEmptiedInsideItsOwnNotice) {
    VDBView view = counted();
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg&) { view->clear(); });
    GetParam().run(*table, *view);
    EXPECT_LE(view->get_num_records(), 10u);
}

TEST_P(DyingViews, TheViewIsRefilledInsideItsOwnNotice) {
    VDBView view = counted();
    bool refilled = false;
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg&) {
        if (!refilled) {
            refilled = true;
            view->displayAllRecords();
            view->displayRecordsAt(0, 50, 3);
        }
    });
    GetParam().run(*table, *view);
    EXPECT_LE(view->get_num_records(), 70u);
}

TEST_P(DyingViews, MoreRowsAreDeletedInsideTheNotice) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    int depth = 0;
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg&) {
        if (depth < 3) {
            ++depth;
            view->deleteRecords(0, 1);
            base->remove(0, 1);
            table->delete_records(0, 1);
        }
    });
    GetParam().run(*table, *view);
    EXPECT_LE(view->get_num_records(), 10u);
}

TEST_P(DyingViews, TheViewIsUnboundInsideItsOwnNotice) {
    VDBView view = counted();
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg&) { view->vdb(nullptr); });
    GetParam().run(*table, *view);
    EXPECT_LE(view->get_num_records(), 10u);
}

TEST_P(DyingViews, TheTableGoesInsideItsOwnNotice) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    VDBView sibling = counted();
    WhenTold death(*table, "recordsDeleted", [&](const NotifyMsg&) { table.reset(); });
    VDBView last = counted();
    const testing_support::CaptureDiagnostics quiet;
    GetParam().run(*table, *view);
    for (const VDBView& each : {base, view, sibling, last}) {
        EXPECT_LE(each->get_num_records(), 10u);
    }
}

TEST_P(DyingViews, TheTableGoesInsideANoticeOfTheView) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    WhenTold death(*view, "recordsDeleted", [&](const NotifyMsg&) { table.reset(); });
    const testing_support::CaptureDiagnostics quiet;
    GetParam().run(*table, *view);
    EXPECT_LE(view->get_num_records(), 10u);
}

TEST_P(DyingViews, TheTableAndAllItsViewsGoInsideANotice) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    VDBViewRep* rep = view.get();
    WhenTold death(*base, "recordsDeleted", [&](const NotifyMsg&) {
        table.reset();
        view = nullptr;
        base = nullptr;
    });
    GetParam().run(*table, *rep);
    view = nullptr;
    base = nullptr;
}

TEST_P(DyingViews, HandlesAreCopiedAndDroppedInsideANotice) {
    VDBView base = counted();
    VDBView view = countedOn(base);
    std::vector<VDBView> kept;
    WhenTold copies(*base, "recordsDeleted", [&](const NotifyMsg&) {
        kept.push_back(base);
        kept.push_back(view.copy());
        kept.push_back(VDBView(base->newTagSubview()));
        if (kept.size() > 9) {
            kept.clear();
        }
    });
    GetParam().run(*table, *view);
    EXPECT_GE(base->handleCount(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Operations, DyingViews, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return operation.param.name; });

TEST_F(Lifetimes, AViewHeldAnewWhileItWasToGoStays) {
    VDBView view = counted();
    VDBViewRep* rep = view.get();
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg&) {
        view = nullptr;
        view = VDBView(rep);
    });
    table->delete_records(1, 2);
    EXPECT_EQ(1, Counted::alive);
    EXPECT_EQ(rep, view.get());
    EXPECT_EQ("r0 r3 r4 r5 r6 r7 r8 r9", namesOf(*view));
    view = nullptr;
}

TEST_F(Lifetimes, TheTableIsFreedInsideANotice) {
    VDBView view = counted();
    WhenTold deleted(*view, "recordsDeleted", [&](const NotifyMsg&) { table->free(); });
    view->remove(0, 2);
    EXPECT_EQ(nullptr, view->get_record(0));
    view->displayAllRecords();
    EXPECT_EQ(0u, view->get_num_records());
}
