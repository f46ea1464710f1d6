#pragma once

#include <pybind11/pybind11.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <vekdb/formats/log.h>
#include <vekdb/table.h>
#include "arguments.h"

/// A log as all its objects in Python share it, and how threads take turns with it.
namespace vekpy {

namespace py = pybind11;

class Hold;

/// The log, which lives as long as one of its rows, columns and views. It is reached through a
/// Hold alone.
class SharedLog {
public:
    explicit SharedLog(vek::Log log) : log_(std::move(log)) {}

private:
    friend class Hold;
    friend class Holds;
    friend bool isClosed(const SharedLog& shared);

    std::mutex turn_;
    std::atomic<std::thread::id> holder_ = {};
    std::optional<vek::Log> log_;  // none once it was closed
    std::atomic<bool> isClosed_ = false;
    std::string name_;   // of the closed one
    py::dict columnOf_;  // by the names that were asked for
    std::size_t rowRemovals_ = 0;
    std::vector<unsigned> removedColumns_;  // the place of each when it went
};

using Shared = std::shared_ptr<SharedLog>;

/// The turn of this thread with a log. Made while the interpreter's lock is held; who has to wait
/// lets go of that lock meanwhile. Raises an InUseError where the thread has the log already, as
/// the function has that is called for each piece of a file; and where it has another log and
/// would have to wait, since two of them might wait for each other. A ClosedError for a log that
/// was closed.
class Hold {
public:
    explicit Hold(SharedLog& shared) : Hold(shared, threadHolds()) {}
    Hold(SharedLog& shared, bool atOnce) : shared_(shared) { take(atOnce); }
    /// For a reading that neither lets go of the interpreter's lock nor runs code of Python, which
    /// might, before it has what it reads: a log that nobody has is nobody's until then, so it is
    /// read without a turn. Whoever has it set `holder_` with that lock.
    enum Glance { glance };
    Hold(SharedLog& shared, Glance) : shared_(shared) {
        isTaken_ =
            shared.holder_.load(std::memory_order_relaxed) != std::thread::id() || !shared.log_;
        if (isTaken_) take(threadHolds());
    }
    ~Hold() {
        if (isTaken_) release();
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    /// Whether this thread has a log.
    static bool threadHolds();

    vek::Log& log() const { return *shared_.log_; }
    vek::Log* operator->() const { return &*shared_.log_; }
    bool shows(unsigned row) const;
    /// A StaleError for a row that was removed.
    void requireRow(unsigned row) const;
    std::string_view cell(unsigned row, unsigned column) const {
        return log().table().get_record(row)->fieldView(column);
    }

    /// The column of a name; a ColumnError where there is none.
    unsigned columnNamed(py::handle name) const;
    vek::Column columnAt(unsigned index) const { return log().columns().at(index); }

    /// How often rows were removed, and the columns that were.
    std::size_t rowRemovals() const { return shared_.rowRemovals_; }
    const std::vector<unsigned>& removedColumns() const { return shared_.removedColumns_; }

    void removeRows(const vek::View& rows) const;
    void removeColumn(unsigned index) const;
    /// To be told after columns were added, renamed or removed.
    void forgetNames() const { shared_.columnOf_.clear(); }
    void close() const;

private:
    void take(bool atOnce);
    void release();
    unsigned lookUp(py::handle name) const;

    SharedLog& shared_;
    bool isTaken_ = true;
};

/// Turns with several logs, taken in an order that all threads keep.
class Holds {
public:
    explicit Holds(std::vector<SharedLog*> logs);

    /// The log of one of them.
    static vek::Log& logOf(SharedLog& shared) { return *shared.log_; }

private:
    std::vector<std::unique_ptr<Hold>> holds_;
};

/// Whether the log was closed; to be asked without its turn.
bool isClosed(const SharedLog& shared);

/// Does the work while other threads of Python run.
template <class Work>
auto unlocked(Work work) {
    const py::gil_scoped_release free;
    return work();
}

}  // namespace vekpy

namespace pybind11::detail {

template <>
class type_caster<vekpy::Shared> : public vekpy::MadeHolderCaster<vekpy::SharedLog> {};

}  // namespace pybind11::detail
