#include <vekdb/host/ptr.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/wrapped_data.h>
#include "testing/failing_allocator.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using Quor::Ptr;

static_assert(sizeof(Ptr<iObject>) == 2 * sizeof(void*));
static_assert(!std::is_convertible_v<iObject*, Ptr<iObject>>);
static_assert(!std::is_convertible_v<Ptr<iObject>, bool>);
static_assert(std::is_base_of_v<Quor::InternalRefCount, iObject>);
static_assert(std::is_base_of_v<iVirtual, iObject>);

namespace {

struct Thing : iObject {
    explicit Thing(int& alive, int value = 0) : alive_(alive), value_(value) { ++alive_; }
    Thing(const Thing& other)
        : Quor::InternalRefCount(other),
          iVirtual(other),
          iObject(other),
          alive_(other.alive_),
          value_(other.value_) {
        ++alive_;
    }
    ~Thing() override { --alive_; }
    int& alive_;
    int value_;
};

struct Special : Thing {
    using Thing::Thing;
    std::string more = "a derived part that leaks unless its destructor runs";
};

struct Plain {
    explicit Plain(int& alive) : alive_(alive) { ++alive_; }
    ~Plain() { --alive_; }
    int& alive_;
};

using Apart = Ptr<Plain, Quor::DtorTraits, Quor::ExternalRefCountTraits>;

}  // namespace

TEST(Ptr, DefaultIsNull) {
    const Ptr<Thing> none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_TRUE(none == nullptr);
    EXPECT_FALSE(Ptr<Thing>(nullptr));
    EXPECT_FALSE(Ptr<Thing>(static_cast<Thing*>(nullptr)));
}

TEST(Ptr, LastHolderDestroysTheObject) {
    int alive = 0;
    {
        const Ptr<Thing> first(new Thing(alive, 7));
        EXPECT_EQ(first->value_, 7);
        EXPECT_EQ((*first).value_, 7);
        {
            const Ptr<Thing> second(first);
            EXPECT_TRUE(first == second);
            EXPECT_FALSE(first.isUnshared());
        }
        EXPECT_EQ(alive, 1);
        EXPECT_TRUE(first.isUnshared());
    }
    EXPECT_EQ(alive, 0);
}

TEST(Ptr, AssignmentHoldsTheNewBeforeItReleasesTheOld) {
    int alive = 0;
    struct Node : Thing {
        using Thing::Thing;
        Ptr<Node> next;
    };
    Ptr<Node> head(new Node(alive, 1));
    head->next = Ptr<Node>(new Node(alive, 2));
    head = head->next;
    EXPECT_EQ(head->value_, 2);
    EXPECT_EQ(alive, 1);
}

TEST(Ptr, SelfAssignmentKeepsTheObject) {
    int alive = 0;
    Ptr<Thing> thing(new Thing(alive));
    const Ptr<Thing>& alias = thing;
    thing = alias;
    EXPECT_EQ(alive, 1);
    EXPECT_TRUE(thing.isUnshared());
}

TEST(Ptr, MoveTakesTheShareAlong) {
    int alive = 0;
    Ptr<Thing> from(new Thing(alive));
    Ptr<Thing> to(std::move(from));
    EXPECT_FALSE(from);
    EXPECT_TRUE(to.isUnshared());
    Ptr<Thing> other(new Thing(alive));
    other = std::move(to);
    EXPECT_EQ(alive, 1);
    EXPECT_TRUE(other.isUnshared());
}

TEST(Ptr, ResetReleasesAndTakesAnother) {
    int alive = 0;
    Ptr<Thing> thing(new Thing(alive, 1));
    thing.reset(new Thing(alive, 2));
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(thing->value_, 2);
    thing.reset();
    EXPECT_EQ(alive, 0);
    EXPECT_FALSE(thing);
}

TEST(Ptr, BasePointerDeletesTheWholeObject) {
    int alive = 0;
    Ptr<iObject> base;
    {
        const Ptr<Special> special(new Special(alive));
        base = special;
        EXPECT_TRUE(base == special);
    }
    EXPECT_EQ(alive, 1);
    base.reset();
    EXPECT_EQ(alive, 0);
}

TEST(Ptr, IncRefAndDecRefCountHoldersOutside) {
    int alive = 0;
    Ptr<Thing> thing(new Thing(alive));
    thing.incRef();
    thing.decRef();
    EXPECT_EQ(alive, 1);
    EXPECT_TRUE(thing);
    thing.decRef();
    EXPECT_EQ(alive, 0);
    EXPECT_FALSE(thing);
    thing.decRef();
    thing.incRef();
}

TEST(Ptr, CountIsNeverCopiedWithTheObject) {
    int alive = 0;
    const Ptr<Thing> original(new Thing(alive, 3));
    const Ptr<Thing> share(original);
    const Ptr<Thing> copy(new Thing(*original));
    EXPECT_TRUE(copy.isUnshared());
    EXPECT_EQ(copy->value_, 3);

    struct Value : Quor::InternalRefCount {};
    const Ptr<Value> a(new Value);
    const Ptr<Value> b(a);
    const Ptr<Value> c(new Value);
    *c = *a;
    EXPECT_TRUE(c.isUnshared());
    EXPECT_FALSE(a.isUnshared());
}

TEST(Ptr, ExternalCountSharesAnyObject) {
    int alive = 0;
    {
        Apart first(new Plain(alive));
        Apart second;
        second = first;
        first.reset();
        EXPECT_EQ(alive, 1);
        EXPECT_TRUE(second.isUnshared());
    }
    EXPECT_EQ(alive, 0);
}

namespace {

// Fails as a count word does for which there is no memory.
struct NoCount {
    template <class T>
    static std::uint32_t* countFor(T*) {
        throw Quor::Exception::BadAlloc();
    }
    static void dispose(std::uint32_t*) noexcept {}
};

}  // namespace

TEST(Ptr, ObjectGoesWhenItsCountCannotBeHad) {
    int alive = 0;
    using Hopeless = Ptr<Plain, Quor::DtorTraits, NoCount>;
    EXPECT_THROW(Hopeless(new Plain(alive)), Quor::Exception::BadAlloc);
    EXPECT_EQ(alive, 0);
}

TEST(Ptr, DestructorThatComesBackFindsThePtrNull) {
    struct Curious : iObject {
        explicit Curious(Ptr<Curious>& holder, bool& sawNull)
            : holder_(holder), sawNull_(sawNull) {}
        ~Curious() override { sawNull_ = !holder_; }
        Ptr<Curious>& holder_;
        bool& sawNull_;
    };
    bool sawNull = false;
    Ptr<Curious> holder;
    holder.reset(new Curious(holder, sawNull));
    holder.decRef();
    EXPECT_TRUE(sawNull);
}

TEST(Ptr, SharesAreCountedSafelyAcrossThreads) {
    int alive = 0;
    {
        const Ptr<Thing> shared(new Thing(alive));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([own = shared] {
                for (int i = 0; i < 20000; ++i) {
                    const Ptr<Thing> copy(own);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_TRUE(shared.isUnshared());
    }
    EXPECT_EQ(alive, 0);
}

TEST(WrappedData, IsFoundAgainFromItsBase) {
    const Ptr<iObject> object(new WrappedData<std::string>("payload"));
    const auto* wrapped = dynamic_cast<WrappedData<std::string>*>(object.get());
    ASSERT_NE(wrapped, nullptr);
    EXPECT_EQ(wrapped->data(), "payload");
    EXPECT_EQ(dynamic_cast<WrappedData<int>*>(object.get()), nullptr);
}
