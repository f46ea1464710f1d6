#include <cstddef>
#include <new>

#include <vekdb/host/os.h>

// The process takes what it asks `new` for from the host's allocator. The operators add nothing
// of their own, so that blocks can go back either way. They stand in one file, so that no
// program ever gets half of the set; the symbol below is what a linker is asked for.
extern "C" void vekdb_allocation_operators() {}

void* operator new(std::size_t size) {
    return OS()->allocator()->allocate(size);
}

void* operator new[](std::size_t size) {
    return OS()->allocator()->allocate(size);
}

void operator delete(void* block) noexcept {
    OS()->allocator()->free(block);
}

void operator delete[](void* block) noexcept {
    ::operator delete(block);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return OS()->allocator()->allocate(size);
    } catch (...) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return ::operator new(size, tag);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    ::operator delete(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    ::operator delete(block);
}

// The standard library's sized forms call the ones above only where they are seen by it: not in
// a plug-in that hides them, and not under a sanitizer, which has sized forms of its own.
void operator delete(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    ::operator delete(block);
}
