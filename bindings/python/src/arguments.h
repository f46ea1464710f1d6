#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <type_traits>

/// What callers of Python give. Whatever it is, it ends in an exception that Python has for it.
namespace vekpy {

namespace py = pybind11;

/// The name of a value's type, for messages.
std::string typeName(py::handle value);

/// An index or a step of Python: whatever has __index__. A TypeError for what has not, an
/// IndexError for one that no sequence has.
py::ssize_t indexIn(py::handle value);

/// Whether the value says so; what a truth value is anywhere in Python.
bool truthIn(py::handle value);

/// A whole number from 0 on; a TypeError or ValueError that says what it is for.
std::size_t countIn(py::handle value, const std::string& what);

/// An iterable's dict, or what a mapping has.
py::dict dictIn(py::handle value, const std::string& what);

/// Makes a type whose objects cannot be pickled. Python's own way to find out that they cannot
/// makes an object of pybind11's base, which ends the process.
void neverPickled(py::handle type);

/// The same for a type whose objects come from others alone, too: who calls it is told so.
void neverMadeByHand(py::handle type);

/// Arguments that are held by a pointer: never None, nor what was never made.
template <class Type>
class MadeHolderCaster : public py::detail::copyable_holder_caster<Type, std::shared_ptr<Type>> {
    using Base = py::detail::copyable_holder_caster<Type, std::shared_ptr<Type>>;

public:
    bool load(py::handle from, bool converts) {
        if (!py::isinstance<Type>(from)) return false;
        auto* const instance = reinterpret_cast<py::detail::instance*>(from.ptr());
        if (!instance->get_value_and_holder().holder_constructed()) {
            throw py::type_error("the " + typeName(from) +
                                 " was never made: its __init__ is to "
                                 "call that of the class that it is derived from");
        }
        return Base::load(from, converts);
    }
};

}  // namespace vekpy
