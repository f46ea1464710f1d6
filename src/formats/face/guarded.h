#pragma once

#include <exception>
#include <new>
#include <utility>

#include <vekdb/formats/reason.h>
#include "formats/failure.h"

namespace vek {

/// What cannot go on because memory ended; takes none itself.
inline Reason outOfMemory() noexcept {
    Reason reason;
    reason.kind = Reason::outOfMemory;
    reason.found = "out of memory";
    return reason;
}

inline Reason reasonOf(const std::exception& error) noexcept {
    try {
        return Reason{Reason::unreadable, {}, 0, {}, error.what()};
    } catch (...) {
        return outOfMemory();
    }
}

/// Does the work, and makes a reason of whatever it throws. Nothing leaves the library otherwise.
template <class Work>
auto guarded(Work work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (formats::Failure& failure) {
        return std::move(failure.reason);
    } catch (const std::bad_alloc&) {
        return outOfMemory();
    } catch (const std::exception& error) {
        return reasonOf(error);
    } catch (...) {
        return Reason{Reason::unreadable, {}, 0, {}, {}};
    }
}

}  // namespace vek
