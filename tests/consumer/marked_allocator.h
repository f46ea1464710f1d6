#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <vekdb/host/os.h>

/// Marks each block it gives, and ends the process when another's block comes back.
class MarkedAllocator final : public iAllocator {
public:
    MarkedAllocator() : previous_(OS()->setAllocator(this)) {}
    ~MarkedAllocator() { OS()->setAllocator(previous_); }

    void* allocate(std::size_t size) override {
        ++taken;
        return marked(std::malloc(size + room));
    }
    void* reallocate(void* block, std::size_t size) override {
        return marked(std::realloc(block != nullptr ? start(block) : nullptr, size + room));
    }
    void free(void* block) override {
        if (block != nullptr) std::free(start(block));
    }

    int taken = 0;

private:
    static constexpr std::size_t room = alignof(std::max_align_t);
    static constexpr char mark[] = "vekdb's";

    static void* marked(void* block) {
        std::memcpy(block, mark, sizeof mark);
        return static_cast<char*>(block) + room;
    }
    static void* start(void* block) {
        char* begin = static_cast<char*>(block) - room;
        if (std::memcmp(begin, mark, sizeof mark) != 0) {
            std::fputs("a block of another allocator came back\n", stderr);
            std::abort();
        }
        std::memset(begin, 0, sizeof mark);
        return begin;
    }

    iAllocator* previous_;
};
