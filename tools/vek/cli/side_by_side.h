#pragma once

#include <cstddef>
#include <functional>

namespace vek {

/// One who works through jobs; called with the number of each that falls to it.
using Worker = std::function<void(std::size_t job)>;

/// Does jobs 0 to `count` - 1, several at a time: `makeWorker` makes one for each thread, in which
/// it lives and works. Jobs are begun in their order. What a worker throws ends all of them and is
/// thrown here. Of one thread the work is done where this is called.
void doSideBySide(std::size_t count, std::size_t threads,
                  const std::function<Worker()>& makeWorker);

/// As many as the machine can do at a time.
std::size_t usualThreads();

/// What was let go of, by the jobs or behind them, is not in the way of what comes next.
void giveFreedMemoryBack();

}  // namespace vek
