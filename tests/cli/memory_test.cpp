// How much memory reading takes at most, by what the system says of the whole process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "cli/program.h"

namespace {

struct Usage {
    int exitCode = -1;
    std::size_t bytes = 0;
};

Usage peakOf(const WorkFolder& folder, const std::string& name) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nothing, stream);
        if (::chdir(folder.path().c_str()) != 0) ::_exit(127);
        ::execl(VEK_PROGRAM, "vek", "info", name.c_str(), nullptr);
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

// Reads the text as a file of the name; the peak is within so many times its size, and 16 MB.
void expectWithin(double factor, const std::string& name, const std::string& text) {
    if (isUnderSanitizer()) GTEST_SKIP() << "sanitizers take memory of their own";
    WorkFolder folder;
    folder.write(name, text);
    const Usage usage = peakOf(folder, name);
    EXPECT_LE(usage.exitCode, 4) << name;
    const double most = factor * static_cast<double>(text.size()) + fixed;
    EXPECT_LE(static_cast<double>(usage.bytes), most) << name << " of " << text.size() << " bytes";
    std::printf("%s: %zu bytes, %.2f times\n", name.c_str(), text.size(),
                (static_cast<double>(usage.bytes) - fixed) / static_cast<double>(text.size()));
}

const std::string longRow =
    "A001C003_210512_R1AB,12,3,01:00:00:00,01:00:10:00,a note on the take\n";

}  // namespace

// Logs as people have them, of rows of more than 60 bytes.
TEST(MemoryOfReading, OfACsvIsFourTimesItsSizeAtMost) {
    expectWithin(4, "log.csv", "Name,Scene,Take,Start,End,Notes\n" + repeated(longRow, size));
}

TEST(MemoryOfReading, OfATableIsFourTimesItsSizeAtMost) {
    expectWithin(
        4, "log.vek",
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"Name\",\"Notes\"\n" +
            repeated("\"A001C003_210512_R1AB\",\"a note on the take, as they are\"\n", size));
}

TEST(MemoryOfReading, OfAnAleIsFourTimesItsSizeAtMost) {
    expectWithin(4, "log.ale",
                 "Heading\nFPS\t25\n\nColumn\nName\tStart\tNotes\n\nData\n" +
                     repeated("A001C003_210512_R1AB\t01:00:00:00\ta note on the take\n", size));
}

TEST(MemoryOfReading, OfOneLongLineIsFourTimesItsSizeAtMost) {
    expectWithin(4, "line.csv", "Name,Notes\nA," + std::string(size, 'x') + "\n");
}

TEST(MemoryOfReading, OfOneOpenQuoteIsFourTimesItsSizeAtMost) {
    expectWithin(4, "quote.csv", "Name,Notes\nA,\"" + repeated("some text\n", size));
}

TEST(MemoryOfReading, OfDeepNestingIsFourTimesItsSizeAtMost) {
    expectWithin(4, "deep.json", std::string(size, '['));
}

TEST(MemoryOfReading, OfAMillionColumnsIsRefusedWithoutMoreThanFourTimes) {
    expectWithin(4, "columns.csv", repeated("column,", size) + "\n");
}
