#pragma once

#include <cstdio>
#include <memory>
#include <optional>
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
/// nobody but its owner. It is made by the first change, grows by each, and goes with the last
/// reason for it. A line is a change of the table; what the lines do not hold is the log itself, so
/// they fit the file alone that they were written beside.
class Recovery {
public:
    explicit Recovery(const std::string& logPath);

    const std::string& path() const { return path_; }
    /// Whether there is one, of this user's own.
    bool exists() const;
    /// Whether it belongs to another browser that lives. A lock says so, which ends with its
    /// process, however that ends.
    bool isInUse();
    /// Puts back what a recovery had set aside that was killed.
    void restore();
    /// Sets the file aside for `replay`, as what is replayed is written down anew. Fails where it
    /// is in use.
    void setAside();
    /// All of it is written down anew.
    void dropAside();
    /// Whether edits that stand there were made to the log as it is on the disk.
    bool fits(const FileMark& mark) const;
    /// Makes the edits that stand in the file set aside, as one step; how many there were.
    std::size_t replay(EditLog& edits) const;

    /// From now on edits are made to a file of this mark.
    void begin(const std::optional<FileMark>& mark) { mark_ = mark; }
    void cellChanged(const Log& log, unsigned row, unsigned column);
    void rowsInserted(const Log& log, unsigned first, unsigned count);
    void rowsDeleted(unsigned first, unsigned count);
    void columnsChanged(const Log& log);
    /// All that was told is in the file then.
    void flush();
    /// Removes the file, unless it is another browser's, also of one that was killed meanwhile;
    /// what is told from now on is written to a new one.
    void remove();
    /// What went wrong with writing it; empty as a rule. Editing goes on without it.
    const std::string& trouble() const { return trouble_; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void open();
    void line(const std::vector<std::string_view>& fields);
    void check(bool isWell);
    bool isAside() const { return aside_.descriptor() >= 0; }

    std::string path_;
    std::string asidePath_;
    OpenFile aside_;
    bool isAnothers_ = false;  // the file that stands there
    std::optional<FileMark> mark_;
    std::unique_ptr<std::FILE, Closer> file_;
    std::string trouble_;
    std::string text_;
};

}  // namespace vek::browse
