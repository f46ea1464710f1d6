#include "host/posix/chance.h"

#include <chrono>

#include <unistd.h>

// Without a source of chance the clock, the place of things in memory and the process's number
// have to do.
void drawByChance(std::uint64_t* words, std::size_t count) noexcept {
    if (::getentropy(words, count * sizeof *words) == 0) {
        return;
    }
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    const std::uint64_t known[] = {static_cast<std::uint64_t>(now),
                                   reinterpret_cast<std::uintptr_t>(&now),
                                   static_cast<std::uint64_t>(::getpid())};
    for (std::size_t i = 0; i < count; ++i) {
        words[i] = known[i % 3];
    }
}
