#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <vekdb/edit_log.h>
#include <vekdb/host/open_file.h>
#include "formats/log/log.h"

namespace vek::browse {

using namespace formats;

/// By what a file on the disk is known again.
struct FileMark {
    std::uintmax_t size = 0;
    long long time = 0;
    bool operator==(const FileMark&) const = default;
};
/// Nothing where there is no file, as for standard input.
std::optional<FileMark> markOf(const std::string& path);

/// The file beside a log that holds what was edited and not saved: ".NAME.vek-edits", readable by
/// nobody but its owner, and ".NAME.vek-edits-2" and so on where there is one already: each browser
/// of a log has its own, also each sheet of one. It is made by the first change, grows by each, and
/// goes with the last reason for it. A line is a change of the table; what the lines do not hold is
/// the log itself, so they fit the file alone that they were written beside.
class Recovery {
public:
    explicit Recovery(const std::string& logPath) : logPath_(logPath) {}

    /// Where the edits stand; empty while there are none.
    const std::string& path() const { return path_; }
    /// The files beside the log, and whether each belongs to another browser that lives. A lock
    /// says so, which ends with its process, however that ends. What a recovery had set aside that
    /// was killed is put back first.
    struct Other {
        std::string path;
        bool isInUse;
    };
    std::vector<Other> others() const;
    /// Whether edits that stand in a file were made to the log as it is on the disk.
    static bool fits(const std::string& path, const FileMark& mark);
    /// Removes one that nobody uses.
    static void drop(const std::string& path);
    /// Sets a file aside for `Replay`, as what is replayed is written down anew, in its place, and
    /// answers it, open. Fails where it is in use. Nothing was edited before.
    const OpenFile& setAside(const std::string& path);
    /// All of it is written down anew.
    void dropAside();

    /// Makes the edits that stand in a recovery file, as one step.
    class Replay {
    public:
        Replay(const OpenFile& file, EditLog& edits);
        /// The next of them; the bytes that it took, 0 behind the last.
        std::size_t step();
        /// How many there were.
        std::size_t edits() const { return count_; }

    private:
        std::istringstream file_;
        EditLog& edits_;
        EditLog::Step step_;
        std::string line_;
        std::size_t count_ = 0;
    };

    /// From now on edits are made to a file of this mark.
    void begin(const std::optional<FileMark>& mark) { mark_ = mark; }
    void cellChanged(const Log& log, unsigned row, unsigned column);
    void rowsInserted(const Log& log, unsigned first, unsigned count);
    void rowsDeleted(unsigned first, unsigned count);
    void columnsChanged(const Log& log);
    /// All that was told is in the file then.
    void flush();
    /// Removes the file; what is told from now on is written to a new one.
    void remove();
    /// What went wrong with writing it; empty as a rule. Editing goes on without it.
    const std::string& trouble() const { return trouble_; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string nameOf(unsigned number) const;
    bool create(const std::string& path);
    void open();
    void line(const std::vector<std::string_view>& fields);
    void check(bool isWell);

    std::string logPath_;
    std::string path_;
    std::string asidePath_;
    OpenFile aside_;
    std::optional<FileMark> mark_;
    std::unique_ptr<std::FILE, Closer> file_;
    std::string trouble_;
    std::string text_;
};

}  // namespace vek::browse
