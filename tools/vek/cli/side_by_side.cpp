#include "tools/vek/cli/side_by_side.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

namespace vek {

namespace {

// What one job needed and let go of the next one needs again: given back to the system each time,
// it would have to be asked for and cleared anew.
void keepFreedMemory() {
#ifdef M_TRIM_THRESHOLD
    constexpr int most = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, most);
    mallopt(M_TRIM_THRESHOLD, 2 * most);
#endif
}

class Jobs {
public:
    Jobs(std::size_t count, const std::function<Worker()>& makeWorker)
        : count_(count), makeWorker_(makeWorker) {}

    void work() noexcept {
        try {
            const Worker worker = makeWorker_();
            for (std::size_t job = next_++; job < count_; job = next_++) worker(job);
        } catch (...) {
            stop(std::current_exception());
        }
    }

    void rethrow() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    void stop(std::exception_ptr failure) {
        next_ = count_;
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!failure_) failure_ = std::move(failure);
    }

    std::size_t count_;
    const std::function<Worker()>& makeWorker_;
    std::atomic<std::size_t> next_{0};
    std::mutex mutex_;
    std::exception_ptr failure_;
};

// Where the system has no more threads those that there are do the work.
void start(std::size_t count, Jobs& jobs, std::vector<std::thread>& threads) {
    threads.reserve(count);
    try {
        while (threads.size() < count) threads.emplace_back([&jobs] { jobs.work(); });
    } catch (const std::system_error&) {
        return;
    }
}

}  // namespace

void giveFreedMemoryBack() {
#ifdef M_TRIM_THRESHOLD
    constexpr int usual = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, usual);
    malloc_trim(0);
#endif
}

void doSideBySide(std::size_t count, std::size_t threads,
                  const std::function<Worker()>& makeWorker) {
    if (count > 1) keepFreedMemory();
    Jobs jobs(count, makeWorker);
    std::vector<std::thread> others;
    const std::size_t wanted = std::min(count, threads);
    if (wanted > 1) start(wanted - 1, jobs, others);
    jobs.work();
    for (std::thread& other : others) other.join();
    if (count > 1) giveFreedMemoryBack();
    jobs.rethrow();
}

std::size_t usualThreads() {
    constexpr unsigned most = 16;
    return std::clamp(std::thread::hardware_concurrency(), 1u, most);
}

}  // namespace vek
