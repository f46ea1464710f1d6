#pragma once

#include "rows.h"
#include "slots.h"

namespace vekpy {

/// Makes the rows that a walk hands out. One that nobody kept is handed out again for another row;
/// whoever walks still has the last one when he asks for the next, so there are two.
class RowMaker {
public:
    py::object row(const Shared& log, unsigned index) {
        py::object& kept = made_[turn_];
        turn_ = 1 - turn_;
        if (kept && isKeptHereAlone(kept)) {
            valueIn<Row>(kept.ptr()).index = index;
            return kept;
        }
        // The end of the one before may call code of Python, which may walk on.
        py::object made = newRow({log, index});
        kept = made;
        return made;
    }

private:
    static bool isKeptHereAlone(const py::object& made) {
        return Py_REFCNT(made.ptr()) == 1 &&
               reinterpret_cast<py::detail::instance*>(made.ptr())->weakrefs == nullptr;
    }

    py::object made_[2];
    unsigned turn_ = 0;
};

}  // namespace vekpy
