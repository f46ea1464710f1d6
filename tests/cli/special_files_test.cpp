// Inputs that are no plain files, or are files that nobody wrote.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/program.h"

namespace fs = std::filesystem;

namespace {

void expectRefused(const Finish& finish, const std::string& about) {
    EXPECT_EQ(finish.exitCode, 3) << finish.errors;
    EXPECT_EQ(finish.output, "");
    EXPECT_NE(finish.errors.find(about), std::string::npos) << finish.errors;
}

// A container is not made behind a link that somebody else put into a folder for everybody.
TEST(SpecialFiles, ALinkOfSomebodyElseIsNotFollowedByANewContainer) {
    const WorkFolder folder;
    const fs::path shared = folder.path() / "shared";
    fs::create_directory(shared);
    fs::create_symlink("../bin.vek", shared / "bin.vek");
    const bool isGiven = ::lchown((shared / "bin.vek").c_str(), 1234, 1234) == 0;
    ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
    const Finish finish = runVekLine(folder, "container create shared/bin.vek");
    const bool isTold = finish.errors.find("leads through a link that somebody else put there") !=
                        std::string::npos;
    EXPECT_EQ(isTold, isGiven) << finish.errors;
    EXPECT_EQ(finish.exitCode, isGiven ? 4 : 0);
    EXPECT_EQ(folder.has("bin.vek"), !isGiven);
}

TEST(SpecialFiles, ADeviceWithoutEndIsGivenUp) {
    const WorkFolder folder;
    expectRefused(shell(folder, "\"$0\" info /dev/zero"), "/dev/zero: gives more than 64 MB");
    expectRefused(shell(folder, "\"$0\" info - </dev/zero"),
                  "standard input: gives more than 64 MB");
}

// Sanitizers need more room for addresses than any limit that would tell.
#if defined(__SANITIZE_ADDRESS__)
constexpr const char* limited = "";
#else
constexpr const char* limited = "ulimit -v 200000; ";
#endif

TEST(SpecialFiles, APipeIsNotChangedInPlaceAndNobodyIsWaitedFor) {
    WorkFolder folder;
    ASSERT_EQ(::mkfifo((folder.path() / "f").c_str(), 0600), 0);
    for (const char* line : {"set f A=1 --every", "sort f --by A", "delete f --where A=1 -n",
                             "tag f --where A=1", "sql f 'UPDATE log SET A=1' --write"}) {
        const Finish finish = shell(folder, std::string("timeout 5 \"$0\" ") + line);
        EXPECT_EQ(finish.exitCode, 2) << line;
        EXPECT_NE(finish.errors.find("f: is a pipe or a device and not changed in place"),
                  std::string::npos)
            << line << ": " << finish.errors;
    }
}

TEST(SpecialFiles, AFileOfEmptySpaceIsNotReadForItsFirstLine) {
    const WorkFolder folder;
    for (const char* name : {"empty.csv", "empty.json", "empty.ale"}) {
        expectRefused(shell(folder, std::string(limited) + "truncate -s 3G " + name +
                                        " && \"$0\" info " + name),
                      std::string(name) + ":1: a zero byte, expected text");
    }
    expectRefused(shell(folder, "truncate -s 3G empty.vek && \"$0\" info empty.vek"),
                  "empty.vek:1: ");
}

TEST(SpecialFiles, AGapThatWasNeverWrittenEndsTheReadingAtOnce) {
    const WorkFolder folder;
    std::string text = "a,b\n";
    for (int i = 0; i < 3000; ++i) text += "1,2\n";
    folder.write("log.csv", text);
    for (const char* name : {"samples/docs.vek", "log.csv"}) {
        expectRefused(shell(folder, std::string(limited) + "cp " + name +
                                        " gap.log; truncate -s 3G gap.log && \"$0\" info gap.log"),
                      "gap.log: from byte ");
    }
}

TEST(SpecialFiles, AFileLargerThanTheMemoryIsRefused) {
    const WorkFolder folder;
    for (const char* name : {"large.vek", "large.csv"}) {
        expectRefused(shell(folder, std::string("cp samples/docs.vek ") + name +
                                        "; truncate -s 8T " + name + " && \"$0\" info " + name),
                      std::string(name) + ": File too large");
    }
}

TEST(SpecialFiles, AReadingThatWaitsIsLeftBySignals) {
    const WorkFolder folder;
    const std::string silent = "mkfifo f; sleep 3 >f 2>/dev/null & ";
    for (const std::string& start : {silent, std::string("mkfifo f; ")}) {
        for (const auto& [signal, status] : {std::pair("INT", 130), std::pair("TERM", 143)}) {
            const Finish finish =
                shell(folder, "rm -f f; " + start + "timeout --preserve-status -s " + signal +
                                  " 0.5 \"$0\" info f");
            EXPECT_EQ(finish.exitCode, status) << start;
            EXPECT_EQ(finish.output + finish.errors, "");
        }
    }
}

// The program needs no shared library, so it runs where there is nothing else.
#if !defined(__SANITIZE_ADDRESS__)
TEST(SpecialFiles, TablesAreReadWhereTheSystemShowsNoProcesses) {
    // Only root may change the root folder, be it of a user's own namespace.
    const std::string there = std::string(::geteuid() == 0 ? "" : "/usr/bin/unshare -r ") +
                              "/usr/sbin/chroot . /vek show ";
    const WorkFolder folder;
    const Finish plain = shell(folder, "cp samples/docs.vek log.vek; \"$0\" show log.vek");
    const Finish bare = shell(folder, "cp \"$0\" vek && " + there + "log.vek");
    EXPECT_EQ(bare.exitCode, 0) << bare.errors;
    EXPECT_EQ(bare.output, plain.output);
    EXPECT_NE(bare.output, "");
    const Finish piped = shell(folder, there + "- <log.vek");
    EXPECT_EQ(piped.output, plain.output);
}
#endif

}  // namespace
