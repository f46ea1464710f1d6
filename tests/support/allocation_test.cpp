#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/os.h>
#include <vekdb/support/version.h>
#include "testing/failing_allocator.h"

namespace {

using testing_support::CountingAllocator;
using testing_support::FailingAllocator;

/// Writes down what it is asked for and passes it on. What it needs for that it has beforehand.
class NotingAllocator final : public iAllocator {
public:
    NotingAllocator() : previous_(OS()->setAllocator(this)) {}
    ~NotingAllocator() { OS()->setAllocator(previous_); }

    void* allocate(std::size_t size) override {
        asked = size;
        return given = previous_->allocate(size);
    }
    void* reallocate(void* block, std::size_t newSize) override {
        return previous_->reallocate(block, newSize);
    }
    void free(void* block) override {
        freed = block;
        ++frees;
        previous_->free(block);
    }

    std::size_t asked = 12345;
    void* given = nullptr;
    void* freed = this;
    int frees = 0;

private:
    iAllocator* previous_;
};

/// Throws what is no memory exhaustion.
class OddAllocator final : public iAllocator {
public:
    OddAllocator() : previous_(OS()->setAllocator(this)) {}
    ~OddAllocator() { OS()->setAllocator(previous_); }

    void* allocate(std::size_t) override { throw 7; }
    void* reallocate(void*, std::size_t) override { throw 7; }
    void free(void* block) override { previous_->free(block); }

private:
    iAllocator* previous_;
};

struct Form {
    const char* name;
    void* (*allocate)(std::size_t);
    void (*release)(void*);
};

constexpr Form kForms[] = {
    {"Single", [](std::size_t n) { return ::operator new(n); },
     [](void* p) { ::operator delete(p); }},
    {"Array", [](std::size_t n) { return ::operator new[](n); },
     [](void* p) { ::operator delete[](p); }},
    {"NothrowSingle", [](std::size_t n) { return ::operator new(n, std::nothrow); },
     [](void* p) { ::operator delete(p, std::nothrow); }},
    {"NothrowArray", [](std::size_t n) { return ::operator new[](n, std::nothrow); },
     [](void* p) { ::operator delete[](p, std::nothrow); }},
    {"SizedSingle", [](std::size_t n) { return ::operator new(n); },
     [](void* p) { ::operator delete (p, std::size_t{24}); }},
    {"SizedArray", [](std::size_t n) { return ::operator new[](n); },
     [](void* p) { ::operator delete[](p, std::size_t{24}); }},
};

class AllocationOperators : public testing::TestWithParam<Form> {};

}  // namespace

TEST_P(AllocationOperators, TakeTheBlockOfTheHostAndGiveItBack) {
    NotingAllocator noting;
    void* block = GetParam().allocate(24);
    const bool same = block == noting.given && noting.asked == 24;
    GetParam().release(block);
    const bool freed = noting.freed == block && noting.frees == 1;
    EXPECT_TRUE(same);
    EXPECT_TRUE(freed);
}

TEST_P(AllocationOperators, AskForNothingWhenNothingIsWanted) {
    NotingAllocator noting;
    void* block = GetParam().allocate(0);
    const bool same = block == noting.given && noting.asked == 0;
    GetParam().release(block);
    EXPECT_TRUE(same);
}

TEST_P(AllocationOperators, PassANullPointerOnToTheHost) {
    NotingAllocator noting;
    GetParam().release(nullptr);
    const bool passedOn = noting.freed == nullptr && noting.frees == 1;
    EXPECT_TRUE(passedOn);
}

INSTANTIATE_TEST_SUITE_P(AllForms, AllocationOperators, testing::ValuesIn(kForms),
                         [](const auto& form) { return form.param.name; });

TEST(Allocation, PlainFormsThrowWhatTheHostThrows) {
    for (const Form* form : {&kForms[0], &kForms[1]}) {
        bool exhausted = false;
        {
            FailingAllocator failing(1);
            try {
                form->release(form->allocate(8));
            } catch (const Quor::Exception::BadAlloc&) {
                exhausted = true;
            }
        }
        EXPECT_TRUE(exhausted) << form->name;
    }
}

TEST(Allocation, NothrowFormsTurnExhaustionIntoNull) {
    for (const Form* form : {&kForms[2], &kForms[3]}) {
        void* block;
        {
            FailingAllocator failing(1);
            block = form->allocate(8);
        }
        EXPECT_EQ(nullptr, block) << form->name;
        EXPECT_EQ(nullptr, std::current_exception()) << form->name;
    }
}

TEST(Allocation, NothrowFormsTurnAnyExceptionIntoNull) {
    for (const Form* form : {&kForms[2], &kForms[3]}) {
        void* block;
        {
            OddAllocator odd;
            block = form->allocate(8);
        }
        EXPECT_EQ(nullptr, block) << form->name;
    }
}

TEST(Allocation, BlocksGoBackEitherWay) {
    long live;
    {
        CountingAllocator counting;
        OS()->allocator()->free(::operator new(40));
        ::operator delete(OS()->allocator()->allocate(40));
        live = counting.liveBlocks();
    }
    EXPECT_EQ(0, live);
}

TEST(Allocation, ContainersOfTheLanguageUseTheHostToo) {
    long live;
    {
        CountingAllocator counting;
        const auto words = std::make_unique<std::vector<std::string>>(
            3, std::string("longer than fits into a short string"));
        live = counting.liveBlocks();
    }
    EXPECT_EQ(5, live);
}

TEST(Version, IsFourNumbersWithDots) {
    EXPECT_STREQ("1.0.0.0", vekdbDllVersionStr());
    EXPECT_STREQ(kVekdbVersion, vekdbDllVersionStr());
    EXPECT_EQ(vekdbDllVersionStr(), vekdbDllVersionStr());
}
