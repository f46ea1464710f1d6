#pragma once

#include <cstddef>

#include <vekdb/host/visibility.h>

/// A recursive lock: the thread that holds it may enter again and leaves as
/// often as it entered. Neither copied nor moved; must not be destroyed while
/// held. The library locks nothing but its lists of notice registrations.
class VEKDB_PUBLIC CriticalSection {
public:
    CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;
    ~CriticalSection();

    /// Waits until the lock is held.
    void enter();

    /// True when the lock was free or already this thread's, and is now held.
    bool tryEnter();

    /// Only by the thread that holds it.
    void leave() noexcept;

private:
    // Room for the standard library's lock, so that this header stays light.
    static constexpr std::size_t kRoom = 64;
    alignas(std::max_align_t) unsigned char room_[kRoom];
};

/// Holds a lock for the life of a scope.
class VEKDB_PUBLIC CriticalSectionHold {
public:
    /// Enters, and leaves with the scope. The lock must outlive it.
    explicit CriticalSectionHold(CriticalSection& section) : section_(section) { section_.enter(); }
    CriticalSectionHold(const CriticalSectionHold&) = delete;
    CriticalSectionHold& operator=(const CriticalSectionHold&) = delete;
    ~CriticalSectionHold() { section_.leave(); }

private:
    CriticalSection& section_;
};
