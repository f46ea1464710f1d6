#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/text_util.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <stdlib.h>

namespace testing_support {

// A folder of its own for a test, removed with all that is in it.
class TempDir {
public:
    TempDir() {
        std::string name = (std::filesystem::temp_directory_path() / "vekdb-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + name);
        }
        folder_ = name;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::filesystem::path& path() const { return folder_; }
    std::filesystem::path file(const std::string& name) const { return folder_ / name; }

    // The same, as the library takes it.
    LightweightString<wchar_t> widePath(const std::string& name) const {
        return fromUTF8(LightweightString<char>(std::string_view(file(name).native())));
    }

    void write(const std::string& name, std::string_view bytes) const {
        std::ofstream out(file(name), std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        if (!out) {
            throw std::runtime_error("cannot write " + file(name).string());
        }
    }

    std::string read(const std::string& name) const {
        std::ifstream in(file(name), std::ios::binary);
        if (!in) {
            throw std::runtime_error("cannot read " + file(name).string());
        }
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    bool has(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(file(name)));
    }

    // The names of all that is in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::filesystem::path folder_;
};

}  // namespace testing_support
