#include "target.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <vekdb/host/diagnostics.h>
#include "host/disk_flush.h"

#include <stdlib.h>

namespace fuzz {

namespace {

// Millions of damaged files would otherwise be reported line by line, and each be flushed.
class Quiet final : public iDiagnosticSink {
public:
    void debug(const char*) noexcept override {}
    void log(const char*) noexcept override {}
    void splat(const char*) noexcept override {}
};

class Folder {
public:
    Folder() {
        static Quiet quiet;
        setDiagnosticSink(&quiet);
        DiskFlush::isOn = false;
        path_ = (std::filesystem::temp_directory_path() / "vekdb-fuzz-XXXXXX").string();
        if (!::mkdtemp(path_.data())) {
            std::abort();
        }
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string file(const char* name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

}  // namespace

std::string fileWith(const char* name, std::string_view text) {
    static const Folder folder;
    std::string path = folder.file(name);
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    return path;
}

void require(const std::string& wrong) {
    if (!wrong.empty()) {
        std::fprintf(stderr, "%s\n", wrong.c_str());
        std::abort();
    }
}

}  // namespace fuzz
