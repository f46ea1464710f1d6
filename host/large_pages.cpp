#include "host/large_pages_impl.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace {

[[maybe_unused]] constexpr std::size_t kLargeBlock = std::size_t{4} << 20;

}  // namespace

void expectFilling([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(MADV_HUGEPAGE)
    if (bytes < kLargeBlock) {
        return;
    }
    const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t from = start & ~(pageSize - 1);
    ::madvise(reinterpret_cast<void*>(from), start + bytes - from, MADV_HUGEPAGE);
#endif
}
