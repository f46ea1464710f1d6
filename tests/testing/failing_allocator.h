#pragma once

#include <vekdb/host/exceptions.h>
#include <vekdb/host/os.h>

#include <atomic>
#include <cstddef>
#include <thread>

namespace testing_support {

// While in scope, the n-th allocation (counted from 1) that this thread asks of
// the host allocator fails once, or it and all behind it fail; a reallocation
// counts as one. Other threads and all other requests are served by the allocator
// that was in place. Scopes nest.
class FailingAllocator final : public iAllocator {
public:
    enum class Failing { once, fromThereOn };

    explicit FailingAllocator(unsigned failAt, Failing failing = Failing::once)
        : previous_(OS()->setAllocator(this)), left_(failAt), failing_(failing) {}
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;
    ~FailingAllocator() { OS()->setAllocator(previous_); }

    // False when fewer allocations were asked for: the end of a walk over n.
    bool fired() const { return fired_; }

    void* allocate(std::size_t size) override {
        failIfDue();
        return previous_->allocate(size);
    }
    void* reallocate(void* block, std::size_t newSize) override {
        failIfDue();
        return previous_->reallocate(block, newSize);
    }
    void free(void* block) override { previous_->free(block); }

private:
    void failIfDue() {
        if (std::this_thread::get_id() != thread_ || left_ == 0 || --left_ != 0) {
            return;
        }
        fired_ = true;
        left_ = failing_ == Failing::fromThereOn ? 1 : 0;
        throw Quor::Exception::BadAlloc();
    }

    iAllocator* previous_;
    std::thread::id thread_ = std::this_thread::get_id();
    unsigned left_;
    Failing failing_;
    bool fired_ = false;
};

// While in scope, counts the blocks and allocations of the host allocator. The
// count of live blocks begins at 0: a block freed that was taken before the scope
// counts against it.
class CountingAllocator final : public iAllocator {
public:
    CountingAllocator() : previous_(OS()->setAllocator(this)) {}
    CountingAllocator(const CountingAllocator&) = delete;
    CountingAllocator& operator=(const CountingAllocator&) = delete;
    ~CountingAllocator() { OS()->setAllocator(previous_); }

    long liveBlocks() const { return live_; }
    long allocations() const { return allocations_; }
    std::size_t lastSize() const { return lastSize_; }

    void* allocate(std::size_t size) override {
        void* block = previous_->allocate(size);
        ++live_;
        ++allocations_;
        lastSize_ = size;
        return block;
    }
    void* reallocate(void* block, std::size_t newSize) override {
        void* moved = previous_->reallocate(block, newSize);
        live_ += block == nullptr ? 1 : 0;
        ++allocations_;
        lastSize_ = newSize;
        return moved;
    }
    void free(void* block) override {
        live_ -= block == nullptr ? 0 : 1;
        previous_->free(block);
    }

private:
    iAllocator* previous_;
    std::atomic<long> live_ = 0;
    std::atomic<long> allocations_ = 0;
    std::atomic<std::size_t> lastSize_ = 0;
};

// Runs an action with its first allocation failing, then its second, and so on
// until it gets through, and checks after each failure. Returns how many failures
// there were. The action makes no assertions: the framework allocates as well.
template <class Action, class Check>
unsigned failEachAllocation(Action action, Check check) {
    for (unsigned n = 1;; ++n) {
        bool fired;
        {
            FailingAllocator failing(n);
            try {
                action();
            } catch (const Quor::Exception::BadAlloc&) {
            }
            fired = failing.fired();
        }
        if (!fired) {
            return n - 1;
        }
        check();
    }
}

}  // namespace testing_support
