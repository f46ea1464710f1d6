#pragma once

#include <functional>
#include <string>

#include "formats/input/held.h"
#include "formats/writing/output_sink.h"

namespace vek::formats {

/// Where the old contents of a file are kept.
std::string backupOf(const std::string& path);

/// A file that is replaced whole or not at all. A long text goes to a file beside the one that it
/// is to replace while it is made; the file itself is not touched before the end.
class FileSink : public OutputSink {
public:
    /// What is held already, or null. `keepsOld` keeps what a held file is now beside it, as
    /// `backupOf` says, which comes there when the new file takes the old one's place.
    explicit FileSink(const std::string& path, Held held = nullptr, bool keepsOld = false);
    /// What takes hold of the file once there is something to write. Each file that is held is an
    /// open folder, of which many are more than a program may have.
    FileSink(const std::string& path, std::function<Held()> hold, bool keepsOld);
    ~FileSink() override;

    void take(std::string_view piece) override;
    /// Says what the new file does not have of the old one.
    std::vector<std::string> end() override;
    std::size_t pieceSize() const override { return 1 << 20; }

    /// The two halves of `end`: all that takes time or may fail as a rule, and the new file in the
    /// old one's place.
    std::vector<std::string> prepare();
    void commit();

    /// Looks the path up, which the first piece does otherwise. Whether text goes there as it
    /// comes, as to a FIFO that may have no reader: all of it at once then, at the end, as it
    /// cannot be taken back.
    bool isDirect();
    /// Leaves the old file, and nothing beside it.
    void giveUp();

private:
    void send(std::string_view text);

    std::string path_;
    Held file_;
    std::function<Held()> hold_;
    bool keepsOld_;
    bool isOpen_ = false;
    std::string kept_;  // what is not sent yet: all of what goes there directly
};

}  // namespace vek::formats
