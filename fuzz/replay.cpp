// Feeds files, or all files of a folder, to a fuzz target: how the ordinary tests run them.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "target.h"

namespace fs = std::filesystem;

namespace {

void replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    std::printf("%s: %zu bytes\n", path.filename().string().c_str(), bytes.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

int replayAll(const fs::path& path) {
    if (!fs::is_directory(path)) {
        replay(path);
        return 1;
    }
    int count = 0;
    for (const auto& entry : fs::directory_iterator(path)) {
        count += replayAll(entry.path());
    }
    return count;
}

}  // namespace

int main(int, char** arguments) {
    int count = 0;
    while (*++arguments) {
        count += replayAll(*arguments);
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
