#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>

#include "house/source_tree.h"

using testing::EndsWith;

namespace fs = std::filesystem;

namespace {

// The gate of the tree in a tree of its own, in front of stages that say what a test wants.
class Gate : public testing::Test {
protected:
    Gate() {
        std::string name = (fs::temp_directory_path() / "vekdb-gate-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        fs::create_directories(folder_ / ".ci");
        fs::create_directories(folder_ / "scripts");
        fs::copy_file(sourceRoot() / ".ci/run", folder_ / ".ci/run");
        stage("test-engines", "1 passed, 0 failed\n", 0);
    }
    ~Gate() override { fs::remove_all(folder_); }

    void stage(const char* name, const std::string& says, int code) {
        const fs::path path = folder_ / "scripts" / name;
        std::ofstream(path) << "#!/bin/sh\ncat <<'END'\n" << says << "END\nexit " << code << "\n";
        fs::permissions(path, fs::perms::owner_all);
    }

    bool passes() {
        said_.clear();
        const std::string command = "bash '" + (folder_ / ".ci/run").string() + "' 2>&1";
        std::FILE* pipe = ::popen(command.c_str(), "r");
        char piece[4096];
        while (std::size_t got = std::fread(piece, 1, sizeof piece, pipe)) said_.append(piece, got);
        const int status = ::pclose(pipe);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    const std::string& said() const { return said_; }

private:
    fs::path folder_;
    std::string said_;
};

constexpr const char* whole =
    "100% tests passed, 0 tests failed out of 30\n"
    "100% tests passed, 0 tests failed out of 40\n";
constexpr const char* page = "ok      a page\n5 passed, 0 failed\n";

}  // namespace

TEST_F(Gate, CountsTheTestsOfAllStagesInItsLastLine) {
    stage("test", whole, 0);
    stage("test-browser", page, 0);
    EXPECT_TRUE(passes());
    EXPECT_THAT(said(), EndsWith("\n76 passed, 0 failed\n"));
}

TEST_F(Gate, CountsSkippedTestsAsNeitherPassedNorFailed) {
    stage("test", std::string(" 3/30 Test  #3: A.B ....***Skipped   0.01 sec\n") + whole, 0);
    stage("test-browser", page, 0);
    EXPECT_TRUE(passes());
    EXPECT_THAT(said(), EndsWith("\n1 skipped\n75 passed, 0 failed\n"));
}

TEST_F(Gate, FailsWithATestOfAnyStageAndRunsTheOthersAllTheSame) {
    stage("test", "93% tests passed, 2 tests failed out of 30\n", 8);
    stage("test-browser", page, 0);
    EXPECT_FALSE(passes());
    EXPECT_THAT(said(), EndsWith("\n34 passed, 2 failed\n"));
    stage("test", whole, 0);
    stage("test-browser", "FAILED  a page: gone\n4 passed, 1 failed\n", 1);
    EXPECT_FALSE(passes());
    EXPECT_THAT(said(), EndsWith("\n75 passed, 1 failed\n"));
}

TEST_F(Gate, FailsWithAStageThatEndsBesideItsTests) {
    stage("test", whole, 2);
    stage("test-browser", page, 0);
    EXPECT_FALSE(passes());
    EXPECT_THAT(said(), EndsWith("\n76 passed, 1 failed\n"));
    stage("test", "cannot be built\n", 1);
    EXPECT_FALSE(passes());
    EXPECT_THAT(said(), EndsWith("\n6 passed, 1 failed\n"));
}

TEST_F(Gate, FailsWithAStageThatRunsNoTest) {
    stage("test", whole, 0);
    stage("test-browser", "0 passed, 0 failed\n", 0);
    EXPECT_FALSE(passes());
    EXPECT_THAT(said(), EndsWith("\n71 passed, 1 failed\n"));
}
