#pragma once

#include <vekdb/host/visibility.h>

/// What an embedding application puts in place to learn of long operations. It
/// is owned by the application and must outlive its time in place.
class VEKDB_PUBLIC iWatchdog {
public:
    /// A long operation begins, and ends; from whichever thread it runs on.
    virtual void beginLifeSupport() noexcept = 0;
    virtual void endLifeSupport() noexcept = 0;

protected:
    ~iWatchdog() = default;
};

/// The host's watch over hung applications. A long operation (sorting a view,
/// displaying records) stands between a begin and an end, so that it is not
/// taken for a hang. Every begin has exactly one end on every path: use
/// LifeSupport rather than the two calls.
class VEKDB_PUBLIC SystemWatchdog {
public:
    /// Tells the watchdog that is in place, where there is one.
    static void beginLifeSupport() noexcept;
    static void endLifeSupport() noexcept;

    /// How many begins are open in the process.
    static int openLifeSupports() noexcept;

    /// Puts a watchdog in place; null for none. Returns the one before. Not to
    /// be changed while a life support is open.
    static iWatchdog* setWatchdog(iWatchdog* watchdog) noexcept;
};

/// Life support for the length of a scope, also when an exception leaves it.
class VEKDB_PUBLIC LifeSupport {
public:
    LifeSupport() noexcept { SystemWatchdog::beginLifeSupport(); }
    LifeSupport(const LifeSupport&) = delete;
    LifeSupport& operator=(const LifeSupport&) = delete;
    ~LifeSupport() { SystemWatchdog::endLifeSupport(); }
};
