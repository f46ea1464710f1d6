#pragma once

#include <memory>
#include <string>
#include <vector>

#include "formats/saving/save_in_place.h"

namespace vek::formats {

class LateFile;

/// A log on its way back into the file that it is held for: whole beside it, on the disk, and not
/// in its place before `commit`. What goes without that leaves the old file, and nothing beside it.
class PreparedFile {
public:
    /// Writes these rows of the log's table. `keepsOld` as with FileSink. A Failure where it cannot
    /// be written.
    PreparedFile(const Log& log, std::vector<unsigned> rows, bool keepsOld);
    ~PreparedFile();
    PreparedFile(const PreparedFile&) = delete;
    PreparedFile& operator=(const PreparedFile&) = delete;

    const Losses& losses() const { return losses_; }
    /// What the new file does not have of the old one.
    const std::vector<std::string>& notes() const { return notes_; }
    /// A Failure where the file is not as it was when it was held, or its folder takes no new one.
    void commit();

private:
    PreparedFile(const Log& log, std::vector<unsigned> rows, std::unique_ptr<LateFile> file);

    LateFile* file_;  // the output's
    Output out_;
    Losses losses_;
    std::vector<std::string> notes_;
    bool isChanged_;
};

}  // namespace vek::formats
