#include "shared_log.h"

#include <algorithm>

#include "errors.h"
#include "texts.h"

namespace vekpy {

namespace {

thread_local unsigned holdsOfThread = 0;

constexpr py::size_t mostNamesKept = 10'000;

[[noreturn]] void raiseInUse() {
    vek::Reason reason;
    reason.found = "the log is in use by an operation that is not done";
    reason.advice = "wait for its end";
    raiseNamed("InUseError", reason);
}

[[noreturn]] void raiseClosed(const std::string& name) {
    vek::Reason reason;
    reason.file = name;
    reason.found = "the log was closed";
    raiseNamed("ClosedError", reason);
}

}  // namespace

bool Hold::threadHolds() {
    return holdsOfThread != 0;
}

void Hold::take(bool atOnce) {
    SharedLog& shared = shared_;
    if (shared.holder_ == std::this_thread::get_id()) raiseInUse();
    if (!shared.turn_.try_lock()) {
        if (atOnce) raiseInUse();
        const py::gil_scoped_release free;
        shared.turn_.lock();
    }
    shared.holder_ = std::this_thread::get_id();
    ++holdsOfThread;
    if (shared.log_) return;
    release();
    raiseClosed(shared.name_);
}

void Hold::release() {
    --holdsOfThread;
    shared_.holder_ = std::thread::id();
    shared_.turn_.unlock();
}

bool Hold::shows(unsigned row) const {
    return log().placeOf(log().row(row)).has_value();
}

void Hold::requireRow(unsigned row) const {
    if (shows(row)) return;
    vek::Reason reason;
    reason.file = log().name();
    reason.found = "the row was removed from the log";
    raiseNamed("StaleError", reason);
}

// Names that are asked for again and again are looked up once.
unsigned Hold::columnNamed(py::handle name) const {
    if (!PyUnicode_CheckExact(name.ptr())) return lookUp(name);
    PyObject* known = PyDict_GetItemWithError(shared_.columnOf_.ptr(), name.ptr());
    if (known != nullptr) return static_cast<unsigned>(PyLong_AsUnsignedLong(known));
    if (PyErr_Occurred() != nullptr) throw py::error_already_set();
    const unsigned column = lookUp(name);
    if (shared_.columnOf_.size() >= mostNamesKept) shared_.columnOf_.clear();
    shared_.columnOf_[name] = column;
    return column;
}

unsigned Hold::lookUp(py::handle name) const {
    const auto column = log().column(Text(name, "the name of a column").view());
    if (!column) raise(column.reason());
    return column->index();
}

void Hold::removeRows(const vek::View& rows) const {
    requireDone(log().removeRows(rows));
    ++shared_.rowRemovals_;
}

void Hold::removeColumn(unsigned index) const {
    requireDone(log().removeColumn(columnAt(index)));
    shared_.removedColumns_.push_back(index);
    forgetNames();
}

void Hold::close() const {
    shared_.name_ = log().name();
    log().letGo();
    shared_.log_.reset();
    shared_.isClosed_ = true;
    shared_.columnOf_.clear();
}

bool isClosed(const SharedLog& shared) {
    return shared.isClosed_;
}

Holds::Holds(std::vector<SharedLog*> logs) {
    std::sort(logs.begin(), logs.end());
    logs.erase(std::unique(logs.begin(), logs.end()), logs.end());
    const bool atOnce = Hold::threadHolds();
    for (SharedLog* log : logs) holds_.push_back(std::make_unique<Hold>(*log, atOnce));
}

}  // namespace vekpy
