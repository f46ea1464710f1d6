#include <vekdb/host/watchdog.h>

#include <atomic>

namespace {

constinit std::atomic<iWatchdog*> theWatchdog{nullptr};
constinit std::atomic<int> openCount{0};

}  // namespace

void SystemWatchdog::beginLifeSupport() noexcept {
    ++openCount;
    if (iWatchdog* watchdog = theWatchdog) {
        watchdog->beginLifeSupport();
    }
}

void SystemWatchdog::endLifeSupport() noexcept {
    --openCount;
    if (iWatchdog* watchdog = theWatchdog) {
        watchdog->endLifeSupport();
    }
}

int SystemWatchdog::openLifeSupports() noexcept {
    return openCount;
}

iWatchdog* SystemWatchdog::setWatchdog(iWatchdog* watchdog) noexcept {
    return theWatchdog.exchange(watchdog);
}
