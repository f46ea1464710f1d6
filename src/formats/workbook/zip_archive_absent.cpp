// The program without the library for archives.
#include "formats/failure.h"
#include "formats/workbook/zip_archive.h"

namespace vek::formats {

struct ZipArchive::Parts {};
struct ZipWriter::Parts {};

ZipArchive::ZipArchive(std::string_view, const std::string& name, const Opening&) {
    throw Failure{unreadable, name +
                                  ": a workbook; this vek was built without minizip and reads "
                                  "none, save the sheet as CSV"};
}

ZipArchive::~ZipArchive() = default;

bool ZipArchive::has(const std::string&) const {
    return false;
}

void ZipArchive::read(const std::string&, const Receiver&) {}

ZipWriter::ZipWriter(const std::string& name) {
    throw Failure{unwritable, name +
                                  ": this vek was built without minizip and makes no workbook, "
                                  "write CSV"};
}

ZipWriter::~ZipWriter() = default;

void ZipWriter::begin(const std::string&) {}

void ZipWriter::write(std::string_view) {}

std::string ZipWriter::finish() {
    return {};
}

}  // namespace vek::formats
