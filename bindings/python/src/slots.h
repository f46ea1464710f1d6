#pragma once

#include <pybind11/pybind11.h>

#include <new>

#include "arguments.h"

/// Calls that are made for each row stand in the slots of the types themselves: to find a function,
/// its arguments and its object by pybind11 takes longer than such a call.
namespace vekpy {

namespace py = pybind11;

/// The object behind an instance of a class that is not derived from another one of C++.
template <class Value>
Value& valueIn(PyObject* self) {
    auto* const instance = reinterpret_cast<py::detail::instance*>(self);
    void* const value = instance->get_value_and_holder().value_ptr();
    if (value == nullptr) throw py::type_error("the object was never made");
    return *static_cast<Value*>(value);
}

/// The holder of such an object.
template <class Holder>
const Holder& holderIn(PyObject* self) {
    valueIn<typename Holder::element_type>(self);
    auto* const instance = reinterpret_cast<py::detail::instance*>(self);
    return instance->get_value_and_holder().template holder<Holder>();
}

/// What the work gives, as a slot hands it on; what it throws becomes an exception of Python.
template <class Work>
PyObject* inSlot(Work work) noexcept {
    try {
        return work().release().ptr();
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (const py::cast_error& error) {
        PyErr_SetString(PyExc_TypeError, error.what());
    } catch (const py::builtin_exception& error) {
        error.set_error();
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    }
    return nullptr;
}

inline PyTypeObject* typeObject(py::handle made) {
    return reinterpret_cast<PyTypeObject*>(made.ptr());
}

/// `get(holder, key)` is what an object gives for a key in brackets; "__getitem__" says the same to
/// whoever asks for that.
template <class Holder>
void bindSubscript(py::handle type, py::object (*get)(const Holder& self, const py::object& key)) {
    static const auto getter = get;
    typeObject(type)->tp_as_mapping->mp_subscript = [](PyObject* self, PyObject* key) {
        return inSlot([&] {
            return getter(holderIn<Holder>(self), py::reinterpret_borrow<py::object>(key));
        });
    };
}

/// A type that walks: `take` gives the next, and no object at the end.
template <class Walk>
void bindWalk(py::module_& module, const char* name) {
    py::class_<Walk> walk(module, name);
    neverMadeByHand(walk);
    walk.def("__iter__", [](py::object self) { return self; });
    walk.def("__next__", [](Walk& self) {
        py::object next = self.take();
        if (!next) throw py::stop_iteration();
        return next;
    });
    typeObject(walk)->tp_iter = PyObject_SelfIter;
    typeObject(walk)->tp_iternext = [](PyObject* self) {
        return inSlot([&] { return valueIn<Walk>(self).take(); });
    };
}

}  // namespace vekpy
