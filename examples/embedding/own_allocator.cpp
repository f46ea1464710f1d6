// Counts the memory that a log takes, with an allocator of the application's own.
// usage: own_allocator LOG

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/os.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

namespace {

// Keeps the size of each block in front of it.
class CountingAllocator final : public iAllocator {
public:
    CountingAllocator() { OS()->setAllocator(this); }

    void* allocate(std::size_t size) override { return reallocate(nullptr, size); }

    void* reallocate(void* block, std::size_t size) override {
        const std::size_t before = block != nullptr ? headOf(block)->size : 0;
        void* const moved = std::realloc(block != nullptr ? headOf(block) : nullptr, size + room);
        if (moved == nullptr) throw Quor::Exception::BadAlloc();
        inUse_ += size - before;
        return new (moved) Head{size} + 1;
    }

    void free(void* block) override {
        if (block == nullptr) return;
        inUse_ -= headOf(block)->size;
        std::free(headOf(block));
    }

    std::size_t inUse() const { return inUse_; }

private:
    struct alignas(std::max_align_t) Head {
        std::size_t size;
    };
    static constexpr std::size_t room = sizeof(Head);

    static Head* headOf(void* block) { return static_cast<Head*>(block) - 1; }

    std::size_t inUse_ = 0;
};

// In place before any other object of the program. It has nothing to destroy, so it stays.
[[gnu::init_priority(101)]] CountingAllocator allocator;

std::size_t sizeOf(const char* path) {
    const std::size_t before = allocator.inUse();
    const vekdb log(fromUTF8(path), 1'000'000, true);
    return log.get_valid() ? allocator.inUse() - before : 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const std::size_t first = sizeOf(arguments[1]);
    const std::size_t before = allocator.inUse();
    const std::size_t second = sizeOf(arguments[1]);
    std::printf("the log takes memory: %s\n", first > 0 && second > 0 ? "yes" : "no");
    std::printf("gives back: %s\n", allocator.inUse() == before ? "all" : "not all");
}
