#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/log.h>
#include <vekdb/host/file_look.h>

namespace vek::formats {
class PreparedFile;
}

/// Where a table of SQL comes by its log, and how it is given back.
namespace vek::sql {

/// A log that a table reads, perhaps again and again, and writes back.
class LogSource {
public:
    virtual ~LogSource() = default;

    /// The file as it was named.
    virtual const std::string& path() const = 0;
    /// The frame rate that somebody says the log has, "" for none.
    virtual const std::string& rate() const = 0;
    /// Where the old contents are kept when new ones take their place, "" where they are not.
    virtual std::string backup() const { return {}; }
    /// What the file is now; of a source that is read once it never changes.
    virtual FileLook stamp() const = 0;
    /// These throw a Refusal where it cannot be read.
    virtual Log read() = 0;
    virtual Log readToChange() = 0;
    /// Writes these rows of the table of `readToChange` out, ready to take the file's place. A
    /// Refusal where that cannot be.
    virtual void prepare(const Log& log, std::vector<unsigned> rows) = 0;
    /// A Refusal where what was prepared cannot take the file's place any more.
    virtual void requireReady() const = 0;
    /// What was prepared takes the file's place. A Refusal where that cannot be, the file as it
    /// was.
    virtual void commit() = 0;
    /// Leaves the file as it is.
    virtual void giveUp() noexcept = 0;
};

/// What can be said of a file that is read, by the names that SQL gives it.
struct FileWishes {
    std::string path = {};
    OpenOptions options = {};
    std::string rate = {};
    bool keepsOld = false;
    bool isReadOnly = false;

    /// Takes a wish; a Refusal where there is none of the name or it has no such value.
    void take(std::string_view name, const std::string& value);
};

/// A regular file, read by each who asks.
class FileSource : public LogSource {
public:
    explicit FileSource(FileWishes wishes);
    ~FileSource() override;

    const std::string& path() const override { return wishes_.path; }
    const std::string& rate() const override { return wishes_.rate; }
    std::string backup() const override;
    FileLook stamp() const override;
    Log read() override;
    Log readToChange() override;
    void prepare(const Log& log, std::vector<unsigned> rows) override;
    void requireReady() const override;
    void commit() override;
    void giveUp() noexcept override;

private:
    void requireFile() const;

    FileWishes wishes_;
    FileLook held_;  // of the file that is to be changed
    std::unique_ptr<formats::PreparedFile> prepared_;
};

/// What stands between the brackets of a CREATE VIRTUAL TABLE, argument by argument:
/// 'dailies.csv', delimiter=';'. A Refusal for what is not understood.
FileWishes wishesOf(const std::vector<std::string_view>& arguments);

}  // namespace vek::sql
