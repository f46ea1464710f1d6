// How much memory reading takes at most, by what the system says of the whole process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cli/program.h"

namespace {

struct Usage {
    int exitCode = -1;
    std::size_t bytes = 0;
};

Usage peakOf(const WorkFolder& folder, std::vector<std::string> words) {
    words.insert(words.begin(), "vek");
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nothing, stream);
        if (::chdir(folder.path().c_str()) != 0) ::_exit(127);
        ::execv(VEK_PROGRAM, arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage usage = {};
    ::wait4(child, &status, 0, &usage);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000,
            static_cast<std::size_t>(usage.ru_maxrss) << 10};
}

std::string repeated(const std::string& text, std::size_t bytes) {
    std::string out;
    while (out.size() < bytes) out += text;
    return out;
}

constexpr std::size_t size = std::size_t{8} << 20;
constexpr std::size_t fixed = std::size_t{16} << 20;

bool isUnderSanitizer() {
#if defined(__SANITIZE_ADDRESS__)
    return true;
#else
    return false;
#endif
}

// Reads the text as a file of the name; the peak is within four times its size, 16 MB, and what
// is allowed beyond.
void expectWithin(const std::string& name, const std::string& text, std::size_t beyond = 0) {
    WorkFolder folder;
    folder.write(name, text);
    const Usage usage = peakOf(folder, {"check", name});
    EXPECT_LE(usage.exitCode, 4) << name;
    if (isUnderSanitizer()) return;  // which takes memory of its own
    EXPECT_LE(usage.bytes, 4 * text.size() + fixed + beyond)
        << name << " of " << text.size() << " bytes";
    std::printf("%s of %zu bytes: %zu bytes\n", name.c_str(), text.size(), usage.bytes);
}

const std::string longRow =
    "A001C003_210512_R1AB,12,3,01:00:00:00,01:00:10:00,a note on the take\n";

}  // namespace

// Logs as people have them, of rows of more than 60 bytes.
TEST(MemoryOfReading, OfACsvIsFourTimesItsSizeAtMost) {
    expectWithin("log.csv", "Name,Scene,Take,Start,End,Notes\n" + repeated(longRow, size));
}

TEST(MemoryOfReading, OfATableIsFourTimesItsSizeAtMost) {
    expectWithin(
        "log.vek",
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"Name\",\"Notes\"\n" +
            repeated("\"A001C003_210512_R1AB\",\"a note on the take, as they are\"\n", size));
}

TEST(MemoryOfReading, OfAnAleIsFourTimesItsSizeAtMost) {
    expectWithin("log.ale",
                 "Heading\nFPS\t25\n\nColumn\nName\tStart\tNotes\n\nData\n" +
                     repeated("A001C003_210512_R1AB\t01:00:00:00\ta note on the take\n", size));
}

TEST(MemoryOfReading, OfOneLongLineIsFourTimesItsSizeAtMost) {
    expectWithin("line.csv", "Name,Notes\nA," + std::string(size, 'x') + "\n");
}

TEST(MemoryOfReading, OfOneOpenQuoteIsFourTimesItsSizeAtMost) {
    expectWithin("quote.csv", "Name,Notes\nA,\"" + repeated("some text\n", size));
}

TEST(MemoryOfReading, OfDeepNestingIsFourTimesItsSizeAtMost) {
    expectWithin("deep.json", std::string(size, '['));
}

TEST(MemoryOfReading, OfAMillionColumnsIsRefusedWithoutMoreThanFourTimes) {
    expectWithin("columns.csv", repeated("column,", size) + "\n");
}

// A row costs as much as it does however short it is.
TEST(MemoryOfReading, OfAMillionEmptyRowsIsFortyBytesARowBeyond) {
    expectWithin("rows.csv", "Name\n" + std::string(1000000, '\n'), 40 * 1000000);
}

// What is refused needs no memory for all that it would unpack to.
TEST(MemoryOfReading, OfAPackedFileThatUnpacksToTooMuchIsThatOfAnHonestOne) {
    WorkFolder folder;
    Start start;
    start.words = {"/bin/sh", "-c", "head -c 100000000 /dev/zero | gzip > a.csv.gz"};
    ASSERT_EQ(run(folder, start).exitCode, 0);
    const Usage usage = peakOf(folder, {"check", "a.csv.gz"});
    EXPECT_EQ(usage.exitCode, 3);
    if (isUnderSanitizer()) return;  // which takes memory of its own
    EXPECT_LE(usage.bytes, std::size_t{40} << 20);
}

namespace {

// Six files of which all rows are found, printed as the words say: the rows are held once.
void expectFoundRowsOnce(std::vector<std::string> words) {
    WorkFolder folder;
    words.insert(words.begin(), {"find", "--every", "--jobs", "1"});
    const std::string text =
        "Name,Notes\n" + repeated("A001," + std::string(1000, 'x') + "\n", size);
    for (const char* name : {"a.csv", "b.csv", "c.csv", "d.csv", "e.csv", "f.csv"}) {
        folder.write(name, text);
        words.emplace_back(name);
    }
    const Usage usage = peakOf(folder, words);
    EXPECT_EQ(usage.exitCode, 0);
    if (isUnderSanitizer()) return;  // which takes memory of its own
    EXPECT_LE(usage.bytes, 9 * text.size() + fixed);
    std::printf("%zu bytes\n", usage.bytes);
}

}  // namespace

TEST(MemoryOfFinding, HoldsTheRowsOfManyFilesOnce) {
    expectFoundRowsOnce({});
}

TEST(MemoryOfFinding, DropsTheRowsOfEachFileOnceTheyStandInTheLogThatIsWritten) {
    expectFoundRowsOnce({"-f", "csv"});
}
