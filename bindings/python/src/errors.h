#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <utility>

#include <vekdb/formats/reason.h>

/// What could not be done, as an exception of the module.
namespace vekpy {

/// Raises the exception that stands for a reason: where the name of a column finds none, one that
/// is also a KeyError.
[[noreturn]] void raise(const vek::Reason& reason);
/// The same for a file that was to be read: also a FileNotFoundError where it is not there.
[[noreturn]] void raiseReading(const vek::Reason& reason, const std::string& path);
/// Raises one of the module's exceptions by its name.
[[noreturn]] void raiseNamed(const char* name, const vek::Reason& reason);

template <class T>
T valueOf(vek::Result<T> result) {
    if (!result) raise(result.reason());
    return *std::move(result);
}

inline void requireDone(const vek::Result<void>& result) {
    if (!result) raise(result.reason());
}

}  // namespace vekpy
