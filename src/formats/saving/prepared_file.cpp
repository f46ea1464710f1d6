#include "formats/saving/prepared_file.h"

#include "formats/saving/file_sink.h"

namespace vek::formats {

class LateFile : public FileSink {
public:
    using FileSink::FileSink;
    std::vector<std::string> end() override { return prepare(); }
};

namespace {

InPlace rowsOf(const Log& log, std::vector<unsigned> rows) {
    InPlace now(log);
    now.rows = std::move(rows);
    return now;
}

}  // namespace

PreparedFile::PreparedFile(const Log& log, std::vector<unsigned> rows, bool keepsOld)
    : PreparedFile(log, std::move(rows), std::make_unique<LateFile>(log.path, log.held, keepsOld)) {
}

PreparedFile::PreparedFile(const Log& log, std::vector<unsigned> rows,
                           std::unique_ptr<LateFile> file)
    : file_(file.get()),
      out_(log.path, std::move(file)),
      isChanged_(writeInPlace(rowsOf(log, std::move(rows)), true, out_, losses_)) {
    if (isChanged_) notes_ = out_.close();
}

PreparedFile::~PreparedFile() = default;

void PreparedFile::commit() {
    if (isChanged_) file_->commit();
}

}  // namespace vek::formats
