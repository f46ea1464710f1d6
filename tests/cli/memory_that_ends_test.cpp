#include <gtest/gtest.h>

#include <string>

#include "cli/program.h"

// Sanitizers need more memory than there may be.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

constexpr const char* commands[] = {
    "info FILE",
    "check FILE",
    "show FILE --sort Reel --format html",
    "show FILE --duplicates Reel",
    "stats FILE --fps 25",
    "convert FILE out.vek",
    "convert FILE out.csv",
    "convert FILE out.json",
    "convert FILE out.ale",
    "convert FILE out.edl --fps 25",
    "convert FILE out.otio --fps 25",
    "diff FILE FILE --key Reel",
    "merge FILE FILE --key Reel --yes -o out.csv",
    "append FILE FILE -o out.csv",
    "dedupe FILE --by Reel -o out.csv",
    "sort FILE --by Reel -o out.csv",
    "sample FILE 10% --seed 1 -o out.csv",
    "split FILE --by Reel -o {Reel}.csv --dry-run",
    "set FILE Reel=x --every -o out.csv",
    "set FILE Reel~s/(.)/\\1\\1/ --every",
    "tag FILE --invert",
    "delete FILE --where Reel=x",
    "column add FILE New",
    "timecode shift FILE 12 --fps 25 --dry-run",
    "sql FILE 'SELECT * FROM log ORDER BY Reel, Start'",
    "sql FILE 'UPDATE log SET Reel = Reel || 1' --write",
    "sql FILE 'INSERT INTO log(Reel) SELECT Reel FROM log' --write --backup",
};

std::string manyClips(std::size_t count) {
    std::string text = "Reel,Start,End\n";
    for (std::size_t i = 0; i < count; ++i) {
        text += "A" + std::to_string(i % 400) + ",01:00:00:00,01:00:01:00\n";
    }
    return text;
}

// The program gets that much of addresses, its own code and stack included.
Finish within(const WorkFolder& folder, int megabytes, const std::string& line) {
    Start start;
    start.words = {"/bin/sh", "-c",
                   "ulimit -v " + std::to_string(megabytes * 1024) + "; exec \"$0\" \"$@\"",
                   VEK_PROGRAM};
    for (const std::string& word : shellWords(line)) start.words.push_back(word);
    return run(folder, start);
}

// What the program itself takes.
int leastRoom(const WorkFolder& folder) {
    int megabytes = 4;
    while (megabytes < 100 && within(folder, megabytes, "--version").exitCode != 0) ++megabytes;
    return megabytes;
}

std::string with(std::string line, const std::string& file) {
    for (std::size_t at = line.find("FILE"); at != line.npos; at = line.find("FILE")) {
        line.replace(at, 4, file);
    }
    return line;
}

}  // namespace

TEST(MemoryThatEnds, IsAMessageAndAnExitCodeInEveryCommand) {
    const WorkFolder folder;
    folder.write("log.csv", manyClips(10000));
    for (const char* ending : {"vek", "json", "edl", "otio"}) {
        const std::string made = std::string("log.") + ending;
        ASSERT_EQ(within(folder, 4000, "convert log.csv " + made + " --fps 25 -q").exitCode, 0);
    }
    const int least = leastRoom(folder);
    unsigned ended = 0;
    unsigned turn = 0;
    for (const char* ending : {"csv", "vek", "json", "edl", "otio"}) {
        const std::string file = std::string("log.") + ending;
        const std::string text = folder.read(file);
        for (const char* command : commands) {
            // What it takes to begin, and some of what it takes to go on.
            const int room = least + 1 + static_cast<int>(turn++ % 5) * 2;
            const Finish finish = within(folder, room, with(command, file));
            ASSERT_TRUE(finish.exitCode >= 0 && finish.exitCode <= 4)
                << command << " on " << file << ": " << finish.exitCode << " " << finish.errors;
            if (finish.exitCode >= 3) {
                ++ended;
                EXPECT_TRUE(finish.errors.find("vek: ") != std::string::npos) << command;
                EXPECT_EQ(folder.read(file), text) << command;
            }
            folder.write(file, text);
        }
    }
    EXPECT_GT(ended, 20u);
    for (const std::string& name : folder.names()) {
        EXPECT_TRUE(name.starts_with("log.") || name.starts_with("out.")) << name;
    }
}

#endif
