#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "house/source_tree.h"

using testing::ContainerEq;
using testing::IsEmpty;

namespace {

using Paths = std::set<std::string>;

bool standsAlone(const std::string& path) {
    return path.starts_with("tests/consumer/") || path.starts_with("tests/gdb/") ||
           path.starts_with("tests/house/misuse/");
}

Paths testsOnDisk() {
    Paths paths;
    for (const SourceFile* file : sourcesOf("tests")) {
        if (!file->isHeader() && !standsAlone(file->path)) {
            paths.insert(file->path);
        }
    }
    return paths;
}

// Written by the build: one line for every source of a test program.
Paths testsBuilt() {
    std::istringstream list(readFile(VEKDB_BINARY_DIR "/test_sources.txt"));
    Paths paths;
    for (std::string line; std::getline(list, line);) {
        paths.insert(line);
    }
    return paths;
}

bool holdsTests(const SourceFile& file) {
    std::string code = codeOnly(file.text);
    return code.find("TEST(") != code.npos || code.find("TEST_F(") != code.npos ||
           code.find("TEST_P(") != code.npos;
}

}  // namespace

TEST(TestList, EveryTestSourceIsBuilt) {
    EXPECT_THAT(testsBuilt(), ContainerEq(testsOnDisk()));
}

TEST(TestList, FilesWithTestsAreNamedAsSuch) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("tests")) {
        if (holdsTests(*file) != file->path.ends_with("_test.cpp")) {
            wrong.push_back(file->path);
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(TestList, EveryFloorWithCodeHasTests) {
    auto isCode = [](const SourceFile* file) { return !file->isHeader(); };
    std::set<std::string> tested;
    for (const SourceFile* file : sourcesOf("tests")) {
        tested.insert(file->path.substr(6, file->path.find('/', 6) - 6));
    }
    for (const std::string& floor : floors()) {
        auto sources = sourcesOf(floor);
        bool hasCode = std::any_of(sources.begin(), sources.end(), isCode);
        EXPECT_TRUE(!hasCode || tested.contains(floor)) << floor;
    }
}
