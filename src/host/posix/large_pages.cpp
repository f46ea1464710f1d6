#include "host/posix/large_pages.h"

#include <vekdb/host/os.h>

#include <cstdint>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;
// A block that does not begin on a large page holds a whole one only from this size on.
constexpr std::size_t kLarge = 2 * kLargePage;

void adviseLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(MADV_HUGEPAGE)
    const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t from = start & ~(pageSize - 1);
    ::madvise(reinterpret_cast<void*>(from), start + bytes - from, MADV_HUGEPAGE);
#endif
}

}  // namespace

void expectFilling(void* block, std::size_t bytes) noexcept {
    if (bytes >= kLarge) {
        adviseLargePages(block, bytes);
    }
}

std::size_t LargePages::slackFor(std::size_t bytes) noexcept {
    return bytes < kLarge ? 0 : kLargePage;
}

char* LargePages::startIn(char* block, std::size_t slack) noexcept {
    if (slack == 0) {
        return block;
    }
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(block) % kLargePage;
    return beyond == 0 ? block : block + (kLargePage - beyond);
}

namespace {

// From half a large page on.
std::size_t wholeLargePages(std::size_t bytes) {
    return bytes < kLargePage / 2 ? bytes : (bytes + kLargePage - 1) / kLargePage * kLargePage;
}

}  // namespace

FillingBlock* FillingBlock::allocate(std::size_t bytes, FillingBlock* next) {
    const std::size_t size = wholeLargePages(sizeof(FillingBlock) + bytes);
    const std::size_t slack = size < kLargePage ? 0 : kLargePage;
    auto* memory = static_cast<char*>(OS()->allocator()->allocate(size + slack));
    char* const start = LargePages::startIn(memory, slack);
    if (size >= kLargePage) {
        adviseLargePages(start, size);
    }
    return new (start) FillingBlock(next, memory, start + size);
}

void FillingBlock::free(FillingBlock* block) noexcept {
    OS()->allocator()->free(block->memory_);
}
