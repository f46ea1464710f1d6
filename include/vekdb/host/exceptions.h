#pragma once

#include <new>

#include <vekdb/host/visibility.h>

namespace Quor::Exception {

/// Root of what the host layer throws. It stands apart from std::exception on
/// purpose: BadAlloc already is one through std::bad_alloc, and a second way
/// there would make `catch (const std::exception&)` ambiguous and miss it.
class VEKDB_PUBLIC Base {
public:
    /// What is thrown is copied without asking for memory.
    Base() noexcept = default;
    Base(const Base&) noexcept = default;
    Base& operator=(const Base&) noexcept = default;
    virtual ~Base() = default;

    /// A constant text; never null, never to be freed.
    virtual const char* message() const noexcept { return "host failure"; }
};

/// Memory is exhausted, or a size is past what a block may have. The only
/// exception that leaves the library, but for what allocation operators of the application's
/// throw, where it has them; the object it left is as it was before.
class VEKDB_PUBLIC BadAlloc : public Base, public std::bad_alloc {
public:
    /// The same constant text, whichever way it was caught.
    const char* message() const noexcept override { return "out of memory"; }
    const char* what() const noexcept override { return message(); }
};

}  // namespace Quor::Exception
