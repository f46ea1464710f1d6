#include <vekdb/host/ptr.h>

#include <atomic>

// The acquire side pairs with a count given back on another thread: who sees
// itself alone also sees what the former holder did.
std::uint32_t Quor::currentCount(std::uint32_t& count) noexcept {
    return std::atomic_ref(count).load(std::memory_order_acquire);
}
