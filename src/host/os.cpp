#include <vekdb/host/os.h>

#include <vekdb/host/exceptions.h>
#include "host/posix/file_service.h"

#include <atomic>
#include <cstdlib>

namespace {

// malloc may answer null to a request of 0 bytes, which would read as failure.
std::size_t atLeastOne(std::size_t size) {
    return size == 0 ? 1 : size;
}

void* orThrow(void* block) {
    if (block == nullptr) {
        throw Quor::Exception::BadAlloc();
    }
    return block;
}

// malloc, not new: the global operators may themselves be built on this.
class MallocAllocator final : public iAllocator {
public:
    void* allocate(std::size_t size) override { return orThrow(std::malloc(atLeastOne(size))); }

    void* reallocate(void* block, std::size_t newSize) override {
        return orThrow(std::realloc(block, atLeastOne(newSize)));
    }

    void free(void* block) override { std::free(block); }
};

class AtomicRefCounts final : public iRefCountService {
public:
    void increment(std::uint32_t& count) noexcept override { increaseBy(count, 1); }

    // What other holders wrote to the object must be seen by the one that
    // destroys it, hence the acquire side.
    std::uint32_t decrement(std::uint32_t& count) noexcept override {
        return std::atomic_ref(count).fetch_sub(1, std::memory_order_acq_rel) - 1;
    }

    void increaseBy(std::uint32_t& count, std::uint32_t n) noexcept override {
        std::atomic_ref(count).fetch_add(n, std::memory_order_relaxed);
    }
};

constinit MallocAllocator builtInAllocator;
constinit PosixFileService builtInFiles;
constinit AtomicRefCounts builtInCounts;
constinit iHostServices services(builtInAllocator, builtInFiles, builtInCounts);

template <class Service>
Service* replace(Service*& place, Service* replacement, Service& builtIn) {
    Service* previous = place;
    place = replacement == nullptr ? &builtIn : replacement;
    return previous;
}

}  // namespace

iAllocator* iHostServices::setAllocator(iAllocator* allocator) noexcept {
    return replace<iAllocator>(allocator_, allocator, builtInAllocator);
}

iFileService* iHostServices::setFileService(iFileService* service) noexcept {
    return replace<iFileService>(fileService_, service, builtInFiles);
}

iRefCountService* iHostServices::setRefCounts(iRefCountService* service) noexcept {
    return replace<iRefCountService>(refCounts_, service, builtInCounts);
}

iHostServices* OS() noexcept {
    return &services;
}
