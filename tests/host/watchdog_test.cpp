#include <vekdb/host/watchdog.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

class RecordingWatchdog final : public iWatchdog {
public:
    RecordingWatchdog() : before_(SystemWatchdog::setWatchdog(this)) {}
    ~RecordingWatchdog() { SystemWatchdog::setWatchdog(before_); }
    void beginLifeSupport() noexcept override { calls += '('; }
    void endLifeSupport() noexcept override { calls += ')'; }

    std::string calls;

private:
    iWatchdog* before_;
};

TEST(SystemWatchdog, WithoutAWatchdogTheCallsOnlyCount) {
    EXPECT_EQ(SystemWatchdog::openLifeSupports(), 0);
    SystemWatchdog::beginLifeSupport();
    EXPECT_EQ(SystemWatchdog::openLifeSupports(), 1);
    SystemWatchdog::endLifeSupport();
    EXPECT_EQ(SystemWatchdog::openLifeSupports(), 0);
}

TEST(SystemWatchdog, TellsTheWatchdogInPlace) {
    RecordingWatchdog watchdog;
    {
        const LifeSupport outer;
        const LifeSupport inner;
        EXPECT_EQ(SystemWatchdog::openLifeSupports(), 2);
    }
    EXPECT_EQ(watchdog.calls, "(())");
}

TEST(SystemWatchdog, ScopeEndsOnceWhenAnExceptionPasses) {
    RecordingWatchdog watchdog;
    try {
        const LifeSupport alive;
        throw std::runtime_error("through the scope");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(watchdog.calls, "()");
    EXPECT_EQ(SystemWatchdog::openLifeSupports(), 0);
}

TEST(SystemWatchdog, SetterReturnsTheOneBefore) {
    RecordingWatchdog first;
    {
        RecordingWatchdog second;
        EXPECT_EQ(SystemWatchdog::setWatchdog(&second), &second);
    }
    const LifeSupport alive;
    EXPECT_EQ(first.calls, "(");
}

}  // namespace
