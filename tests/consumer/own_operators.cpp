// An application with allocation operators of its own: what it and the library ask `new` for goes
// to them, everything else of the library to the host's allocator, and everything works.

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "days_work.h"
#include "marked_allocator.h"

namespace {

long asked = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++asked;
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

int main(int count, char** arguments) {
    MarkedAllocator allocator;
    const long before = asked;
    delete new std::string(100, 'x');
    if (count != 2 || asked < before + 2 || allocator.taken != 0) {
        std::puts("the allocation operators are not the application's");
        return 1;
    }
    const long beforeWork = asked;
    if (!daysWork(arguments[1])) return 2;
    return asked > beforeWork && allocator.taken > 0 ? 0 : 3;
}
