#include <cstddef>
#include <new>

#include <vekdb/host/os.h>
#include <vekdb/support/version.h>

// Without the sized forms the set is whole: the standard library's call the ones below.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wsized-deallocation"
#endif

// The process takes what it asks `new` for from the host's allocator. The operators add nothing
// of their own, so that blocks can go back either way. They stand in one file, so that no
// program ever gets half of the set; the symbol below is what a linker is asked for.
extern "C" void vekdb_allocation_operators() {}

const char* vekdbDllVersionStr() {
    return kVekdbVersion;
}

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

// The standard library's sized forms call the ones above. The address sanitizer's do not: they
// would give blocks of the host's allocator to the sanitizer's own.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEKDB_SANITIZED_OPERATORS
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VEKDB_SANITIZED_OPERATORS
#endif

#ifdef VEKDB_SANITIZED_OPERATORS
void operator delete(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    ::operator delete(block);
}
#endif
