#include <gtest/gtest.h>

#include <utility>

#include "testing/views.h"

namespace {

/// A view that tells when it is destroyed.
class Mortal : public VDBViewRep {
public:
    Mortal(vekdb* table, bool& dead) : VDBViewRep(table), dead_(dead) { dead_ = false; }
    ~Mortal() override { dead_ = true; }

private:
    bool& dead_;
};

}  // namespace

TEST(ViewHandle, ANewViewHasOneHolder) {
    const auto table = numberedTable(2);
    VDBView view(table.get());
    ASSERT_TRUE(view);
    EXPECT_EQ(1u, view->handleCount());
    EXPECT_EQ(table.get(), view->table());
    EXPECT_EQ(view.get(), view.operator->());
    EXPECT_EQ(view.get(), &*view);
}

TEST(ViewHandle, ATableBecomesAViewWhereOneIsWanted) {
    const auto table = numberedTable(2);
    const auto rowsIn = [](VDBView view) { return view->get_num_records(); };
    EXPECT_EQ(0u, rowsIn(table.get()));
}

TEST(ViewHandle, IsOnePointer) {
    EXPECT_EQ(sizeof(void*), sizeof(VDBView));
}

TEST(ViewHandle, NullHandlesHaveNoView) {
    VDBView none, null(nullptr), noRep(static_cast<VDBViewRep*>(nullptr));
    for (const VDBView* view : {&none, &null, &noRep}) {
        EXPECT_FALSE(*view);
        EXPECT_EQ(nullptr, view->get());
    }
    VDBView copied(none);
    none = null;
    EXPECT_FALSE(none);
    EXPECT_FALSE(copied);
}

TEST(ViewHandle, CopiesShareTheView) {
    const auto table = numberedTable(2);
    bool dead = false;
    VDBView view(new Mortal(table.get(), dead));
    EXPECT_EQ(1u, view->handleCount());
    {
        const VDBView second(view);
        EXPECT_EQ(view.get(), second.get());
        EXPECT_EQ(2u, view->handleCount());
    }
    EXPECT_EQ(1u, view->handleCount());
    EXPECT_FALSE(dead);
    view = VDBView();
    EXPECT_TRUE(dead);
}

TEST(ViewHandle, MovingHandsTheViewOver) {
    const auto table = numberedTable(2);
    VDBView view(table.get());
    VDBViewRep* rep = view.get();
    VDBView moved(std::move(view));
    EXPECT_EQ(rep, moved.get());
    EXPECT_FALSE(view);
    EXPECT_EQ(1u, moved->handleCount());
}

TEST(ViewHandle, AssigningToItselfChangesNothing) {
    const auto table = numberedTable(2);
    bool dead = false;
    VDBView view(new Mortal(table.get(), dead));
    const VDBView& itself = view;
    view = itself;
    EXPECT_EQ(1u, view->handleCount());
    EXPECT_FALSE(dead);
    VDBView second(view);
    second = view;
    EXPECT_EQ(2u, view->handleCount());
}

TEST(ViewHandle, AssigningLetsGoOfTheFormerView) {
    const auto table = numberedTable(2);
    bool firstDead = false, secondDead = false;
    VDBView first(new Mortal(table.get(), firstDead));
    VDBView second(new Mortal(table.get(), secondDead));
    first = second;
    EXPECT_TRUE(firstDead);
    EXPECT_FALSE(secondDead);
    EXPECT_EQ(2u, second->handleCount());
}

TEST(ViewHandle, TheViewsAboveAreHoldersToo) {
    const auto table = numberedTable(2);
    bool dead = false;
    VDBView base(new Mortal(table.get(), dead));
    VDBView view(table.get());
    view->baseView(base.get());
    EXPECT_EQ(2u, base->handleCount());
    base = nullptr;
    EXPECT_FALSE(dead);
    EXPECT_EQ(1u, view->base()->handleCount());
    view = nullptr;
    EXPECT_TRUE(dead);
}

TEST(ViewHandle, AViewWithoutHoldersIsDestroyedByWhoeverLetsGo) {
    const auto table = numberedTable(2);
    bool dead = false;
    auto* view = new Mortal(table.get(), dead);
    EXPECT_EQ(0u, view->handleCount());
    view->release();
    EXPECT_TRUE(dead);
}

TEST(ViewHandle, AViewLetGoOfAsOftenAsHeldIsDestroyed) {
    const auto table = numberedTable(2);
    bool dead = false;
    auto* view = new Mortal(table.get(), dead);
    view->retain();
    view->retain();
    view->release();
    EXPECT_FALSE(dead);
    EXPECT_EQ(1u, view->handleCount());
    view->release();
    EXPECT_TRUE(dead);
}
