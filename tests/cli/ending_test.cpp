#include "tools/vek/cli/ending.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "cli/program.h"
#include "formats/failure.h"
#include "formats/saving/file_sink.h"
#include "formats/writing/output.h"
#include "tools/vek/cli/terminal.h"

using testing::ExitedWithCode;
using vek::endOf;

namespace {

template <class Thrown>
int throwing(Thrown thrown) {
    return endOf([&]() -> int { throw thrown; });
}

}  // namespace

TEST(Ending, IsTheCodeOfTheCommand) {
    EXPECT_EQ(endOf([] { return 1; }), 1);
}

TEST(Ending, OfWhateverIsThrownIsAMessageAndACode) {
    EXPECT_EXIT(std::exit(throwing(7)), ExitedWithCode(3), "^vek: cannot go on\n$");
    EXPECT_EXIT(std::exit(throwing(std::length_error("too long"))), ExitedWithCode(3),
                "^vek: cannot go on: too long\n$");
    EXPECT_EXIT(std::exit(throwing(std::bad_alloc())), ExitedWithCode(3), "^vek: out of memory\n$");
    EXPECT_EXIT(std::exit(throwing(vek::formats::Failure(vek::formats::unwritable, "full"))),
                ExitedWithCode(4), "^vek: full\n$");
}

TEST(Ending, WaitsForTheLastOfSeveralFiles) {
    EXPECT_EXIT(
        {
            auto first = std::make_unique<vek::Undisturbed>();
            auto second = std::make_unique<vek::Undisturbed>();
            std::raise(SIGTERM);
            EXPECT_TRUE(second->isAwaited());
            first.reset();
            std::fputs("the second goes on\n", stderr);
            second.reset();
            std::fputs("still here\n", stderr);
        },
        testing::KilledBySignal(SIGTERM), "^the second goes on\n$");
}

TEST(Ending, ComesAtOnceWhereNoFileIsLeft) {
    EXPECT_EXIT(
        {
            for (int i = 0; i < 2; ++i) {
                auto first = std::make_unique<vek::Undisturbed>();
                auto second = std::make_unique<vek::Undisturbed>();
                first.reset();
            }
            std::raise(SIGINT);
        },
        testing::KilledBySignal(SIGINT), "^$");
}

TEST(Ending, IsThatOfTheFailureWhereNobodyReadsWhatIsToldOfIt) {
    WorkFolder folder;
    Start start;
    start.words = {"/bin/sh", "-c",
                   std::string("{ sleep 0.2; ") + VEK_PROGRAM +
                       " info missing.csv --format json; echo $? >&2; } | true"};
    const Finish finish = run(folder, start);
    EXPECT_TRUE(finish.errors.starts_with("vek: missing.csv: ")) << finish.errors;
    EXPECT_TRUE(finish.errors.ends_with("\n3\n")) << finish.errors;
}

TEST(Ending, LeavesNothingOfAFileThatWasBegun) {
    const WorkFolder folder;
    folder.write("log.csv", "Name\nA\n");
    const std::string path = folder.path() / "log.csv";
    const auto write = [&]() -> int {
        vek::formats::Output out(path, std::make_unique<vek::formats::FileSink>(path));
        for (int i = 0; i < 40; ++i) out.write(std::string(1 << 20, 'x'));
        EXPECT_GT(folder.names().size(), 1u) << "nothing was written beside the file";
        throw 7;
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(endOf(write), 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vek: cannot go on\n");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"log.csv"});
    EXPECT_EQ(folder.read("log.csv"), "Name\nA\n");
}
