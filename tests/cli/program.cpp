#include "cli/program.h"
#include "cli/failing_reads.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

constexpr int longestRun = 60;  // seconds, under the sanitizers and on a busy machine
constexpr uid_t nobody = 65534;

// A descriptor that is closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    void set(int number) {
        close();
        number_ = number;
    }
    void close() {
        if (number_ >= 0) ::close(number_);
        number_ = -1;
    }

private:
    int number_;
};

struct Pipe {
    Descriptor reading;
    Descriptor writing;

    void open() {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        reading.set(ends[0]);
        writing.set(ends[1]);
    }
};

// What the child's streams are connected to.
struct Streams {
    Descriptor input;
    Pipe output;
    Pipe errors;

    void open(const WorkFolder& folder, const Start& start) {
        openInput(folder, start.input);
        if (start.errorsToTerminal)
            openTerminal(errors, 80);
        else
            errors.open();
        if (start.terminalWidth != 0)
            openTerminal(output, start.terminalWidth);
        else if (start.output.empty())
            output.open();
        else
            output.writing.set(::open(start.output.c_str(), O_WRONLY | O_CLOEXEC));
        ASSERT_TRUE(output.writing.isOpen()) << start.output;
    }

    void openInput(const WorkFolder& folder, const std::string& text) {
        std::string path = folder.path() / ".input";
        std::ofstream(path, std::ios::binary) << text;
        input.set(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        ::unlink(path.c_str());
        ASSERT_TRUE(input.isOpen());
    }

    static void openTerminal(Pipe& pipe, int width) {
        int controlling = -1;
        int controlled = -1;
        winsize size = {};
        size.ws_row = 24;
        size.ws_col = static_cast<unsigned short>(width);
        ASSERT_EQ(::openpty(&controlling, &controlled, nullptr, nullptr, &size), 0);
        ::fcntl(controlling, F_SETFD, FD_CLOEXEC);
        ::fcntl(controlled, F_SETFD, FD_CLOEXEC);
        pipe.reading.set(controlling);
        pipe.writing.set(controlled);
    }
};

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> out;
    for (std::string& word : words) out.push_back(word.data());
    out.push_back(nullptr);
    return out;
}

// Settings of the machine that the program looks at are not the test's.
std::vector<std::string> environmentFor(const Start& start) {
    std::vector<std::string> out = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8"};
    if (const char* options = std::getenv("ASAN_OPTIONS")) {
        out.push_back(std::string("ASAN_OPTIONS=") + options);
    }
    out.insert(out.end(), start.environment.begin(), start.environment.end());
    return out;
}

[[noreturn]] void becomeProgram(const WorkFolder& folder, const Start& start, Streams& streams) {
    ::dup2(streams.input.get(), STDIN_FILENO);
    ::dup2(streams.output.writing.get(), STDOUT_FILENO);
    ::dup2(streams.errors.writing.get(), STDERR_FILENO);
    std::vector<std::string> words = start.words;
    std::string program = words[0] == "vek" ? VEK_PROGRAM : words[0];
    std::vector<std::string> environment = environmentFor(start);
    // Opened first: without root's rights the folder of the build may be out of reach.
    int file = ::open(program.c_str(), O_RDONLY);
    bool ready = ::chdir(folder.path().c_str()) == 0 && file >= 0;
    if (start.asNobody && ::geteuid() == 0) {
        ready =
            ready && ::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0;
    }
    if (start.failsToRead) {
        ready = ready && failReads(std::size_t{2} << 20, std::size_t{4} << 20);
    }
    if (ready) ::fexecve(file, pointers(words).data(), pointers(environment).data());
    ::_exit(127);
}

// Takes what there is to read; false at the end of the stream.
bool readSome(Descriptor& from, std::string& into) {
    char buffer[1 << 16];
    ssize_t got = ::read(from.get(), buffer, sizeof buffer);
    if (got > 0) into.append(buffer, static_cast<std::size_t>(got));
    return got > 0;
}

void collect(pid_t child, const Start& start, Streams& streams, Finish& finish) {
    auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(longestRun);
    Descriptor& output = streams.output.reading;
    Descriptor& errors = streams.errors.reading;
    while (output.isOpen() || errors.isOpen()) {
        pollfd wanted[] = {{output.get(), POLLIN, 0}, {errors.get(), POLLIN, 0}};
        ::poll(wanted, 2, 1000);
        if (wanted[0].revents != 0 && !readSome(output, finish.output)) output.close();
        if (wanted[1].revents != 0 && !readSome(errors, finish.errors)) errors.close();
        if (finish.output.size() >= start.readAtMost) output.close();
        if (std::chrono::steady_clock::now() < limit) continue;
        ::kill(child, SIGKILL);
        ADD_FAILURE() << start.words[0] << " took longer than " << longestRun << " s";
        return;
    }
}

int exitCodeOf(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
}

// A terminal ends its lines with a carriage return, too.
std::string withoutReturns(std::string text) {
    std::size_t at = 0;
    while ((at = text.find("\r\n", at)) != std::string::npos) text.erase(at, 1);
    return text;
}

}  // namespace

WorkFolder::WorkFolder() {
    std::string pattern = fs::temp_directory_path() / "vek-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no folder " << pattern;
    path_ = pattern;
    fs::permissions(path_, fs::perms::all);
    fs::create_directory_symlink(fs::path(VEKDB_SOURCE_DIR) / "samples", path_ / "samples");
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void WorkFolder::write(const std::string& name, std::string_view text) const {
    fs::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << text;
}

std::string WorkFolder::read(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

bool WorkFolder::has(const std::string& name) const {
    return fs::exists(fs::symlink_status(path_ / name));
}

std::vector<std::string> WorkFolder::names() const {
    std::vector<std::string> out;
    for (const auto& entry : fs::directory_iterator(path_)) {
        std::string name = entry.path().filename();
        if (name != "samples") out.push_back(name);
    }
    std::sort(out.begin(), out.end());
    return out;
}

Finish run(const WorkFolder& folder, const Start& start) {
    Finish finish;
    Streams streams;
    streams.open(folder, start);
    if (testing::Test::HasFatalFailure()) return finish;
    if (start.readAtMost == 0) streams.output.reading.close();
    pid_t child = ::fork();
    if (child == 0) becomeProgram(folder, start, streams);
    streams.input.close();
    streams.output.writing.close();
    streams.errors.writing.close();
    collect(child, start, streams, finish);
    finish.exitCode = exitCodeOf(child);
    if (start.terminalWidth != 0) finish.output = withoutReturns(finish.output);
    return finish;
}

Finish runVek(const WorkFolder& folder, std::vector<std::string> words) {
    words.insert(words.begin(), "vek");
    Start start;
    start.words = std::move(words);
    return run(folder, start);
}

Finish runVekLine(const WorkFolder& folder, const std::string& line) {
    return runVek(folder, shellWords(line));
}

Finish shell(const WorkFolder& folder, const std::string& line) {
    Start start;
    start.words = {"/bin/sh", "-c", line, VEK_PROGRAM};
    return run(folder, start);
}

std::vector<std::string> shellWords(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool isOpen = false;
    char quote = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (quote != 0 && c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == '\'' || c == '"')) {
            quote = c;
            isOpen = true;
        } else if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
            word += line[++i];
            isOpen = true;
        } else if (quote == 0 && c == ' ') {
            if (isOpen) words.push_back(word);
            word.clear();
            isOpen = false;
        } else {
            word += c;
            isOpen = true;
        }
    }
    if (isOpen) words.push_back(word);
    return words;
}
