#include <vekdb/host/critical_section.h>

#include <mutex>
#include <new>

namespace {

using Lock = std::recursive_mutex;

Lock& lockIn(unsigned char* room) {
    return *std::launder(reinterpret_cast<Lock*>(room));
}

}  // namespace

CriticalSection::CriticalSection() {
    static_assert(sizeof(Lock) <= kRoom && alignof(Lock) <= alignof(std::max_align_t));
    ::new (static_cast<void*>(room_)) Lock;
}

CriticalSection::~CriticalSection() {
    lockIn(room_).~Lock();
}

void CriticalSection::enter() {
    lockIn(room_).lock();
}

bool CriticalSection::tryEnter() {
    return lockIn(room_).try_lock();
}

void CriticalSection::leave() noexcept {
    lockIn(room_).unlock();
}
