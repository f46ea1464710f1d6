#include <vekdb/host/critical_section.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace {

bool otherThreadCanEnter(CriticalSection& section) {
    bool entered = false;
    std::thread([&] {
        entered = section.tryEnter();
        if (entered) {
            section.leave();
        }
    }).join();
    return entered;
}

TEST(CriticalSection, KeepsOtherThreadsOut) {
    CriticalSection section;
    section.enter();
    EXPECT_FALSE(otherThreadCanEnter(section));
    section.leave();
    EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CriticalSection, HolderEntersAgainAndLeavesAsOften) {
    CriticalSection section;
    section.enter();
    section.enter();
    EXPECT_TRUE(section.tryEnter());
    section.leave();
    section.leave();
    EXPECT_FALSE(otherThreadCanEnter(section));
    section.leave();
    EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CriticalSection, HoldLeavesWhenAnExceptionPasses) {
    CriticalSection section;
    try {
        const CriticalSectionHold hold(section);
        EXPECT_FALSE(otherThreadCanEnter(section));
        throw std::runtime_error("through the hold");
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(otherThreadCanEnter(section));
}

TEST(CriticalSection, ThreadsTakeTurns) {
    CriticalSection section;
    int count = 0;
    const auto work = [&] {
        for (int i = 0; i < 2000; ++i) {
            const CriticalSectionHold hold(section);
            ++count;
        }
    };
    std::thread one(work);
    std::thread two(work);
    one.join();
    two.join();
    EXPECT_EQ(count, 4000);
}

}  // namespace
