// Touches memory and becomes another program: compare_fresh MEBIBYTES PROGRAM [ARGUMENT]...
//
// A virtual machine may give free memory back to its host, and whoever touches it first pays for
// having it again, which can take longer than the work that is timed. What was touched a moment
// ago is what the program then gets.
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t page = 4096;

void touch(std::size_t bytes) {
    void* block =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) return;
    ::madvise(block, bytes, MADV_HUGEPAGE);
    for (std::size_t at = 0; at < bytes; at += page) static_cast<volatile char*>(block)[at] = 1;
}

// In a process of its own, so that it does not count as the program's memory.
void touchApart(std::size_t bytes) {
    const pid_t child = ::fork();
    if (child == 0) {
        touch(bytes);
        ::_exit(0);
    }
    if (child > 0) ::waitpid(child, nullptr, 0);
}

}  // namespace

int main(int count, char** words) {
    if (count < 3) {
        std::fputs("compare_fresh: expected MEBIBYTES PROGRAM [ARGUMENT]...\n", stderr);
        return 2;
    }
    touchApart(std::strtoull(words[1], nullptr, 10) << 20);
    ::execvp(words[2], words + 2);
    std::perror(words[2]);
    return 127;
}
