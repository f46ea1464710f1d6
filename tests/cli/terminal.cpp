#include "cli/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

namespace fs = std::filesystem;

namespace {

// Far more than a shell takes to answer a key, however busy the machine is.
constexpr std::chrono::seconds longestSilence{5};
constexpr int longestWait = 60;  // seconds, under the sanitizers and on a busy machine

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> out;
    for (std::string& word : words) out.push_back(word.data());
    out.push_back(nullptr);
    return out;
}

[[noreturn]] void becomeProgram(const fs::path& folder, std::vector<std::string> words) {
    const std::string program = words[0] == "vek" ? VEK_PROGRAM : words[0];
    std::vector<std::string> environment = {"PATH=" + folder.string() + "/bin:/usr/bin:/bin",
                                            "HOME=" + folder.string(), "TERM=xterm",
                                            "LC_ALL=C.UTF-8"};
    if (const char* options = std::getenv("ASAN_OPTIONS")) {
        environment.push_back(std::string("ASAN_OPTIONS=") + options);
    }
    if (::chdir(folder.c_str()) == 0) {
        ::execve(program.c_str(), pointers(words).data(), pointers(environment).data());
    }
    ::_exit(127);
}

}  // namespace

Terminal::Terminal(const WorkFolder& folder, std::vector<std::string> words, int width) {
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = static_cast<unsigned short>(width);
    child_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
    if (child_ == 0) becomeProgram(folder.path(), std::move(words));
    EXPECT_GE(child_, 0);
}

Terminal::~Terminal() {
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    if (terminal_ >= 0) ::close(terminal_);
}

void Terminal::type(const std::string& keys) {
    EXPECT_EQ(::write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

bool Terminal::readSome(int milliseconds) {
    pollfd wanted = {terminal_, POLLIN, 0};
    if (::poll(&wanted, 1, milliseconds) <= 0) return true;
    char buffer[1 << 14];
    const ssize_t got = ::read(terminal_, buffer, sizeof buffer);
    if (got <= 0) return false;
    screen_.append(buffer, static_cast<std::size_t>(got));
    return true;
}

std::string Terminal::waitFor(const std::string& text) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(longestWait);
    bool isOpen = true;
    for (;;) {
        const std::size_t at = screen_.find(text);
        if (at != std::string::npos) {
            const std::string seen = screen_.substr(0, at + text.size());
            screen_.erase(0, at + text.size());
            return seen;
        }
        if (!isOpen || std::chrono::steady_clock::now() > limit) break;
        isOpen = readSome(200);
    }
    ADD_FAILURE() << "did not appear: " << text << "\non the screen: " << screen_;
    return {};
}

std::string Terminal::watchUntilQuiet(int milliseconds) {
    using Clock = std::chrono::steady_clock;
    auto end = Clock::now() + longestSilence;
    for (std::size_t seen = screen_.size(); Clock::now() < end && readSome(20);) {
        if (screen_.size() == seen) continue;
        seen = screen_.size();
        end = Clock::now() + std::chrono::milliseconds(milliseconds);
    }
    return std::exchange(screen_, {});
}

std::chrono::milliseconds Terminal::timeTaken() const {
    std::ifstream file("/proc/" + std::to_string(child_) + "/stat");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    std::istringstream behindName(text.substr(text.rfind(')') + 1));
    std::vector<std::string> fields{std::istream_iterator<std::string>(behindName), {}};
    EXPECT_GT(fields.size(), 12u);
    const long ticks = std::stol(fields.at(11)) + std::stol(fields.at(12));
    return std::chrono::milliseconds(ticks * 1000 / ::sysconf(_SC_CLK_TCK));
}

void Terminal::resize(int width) {
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = static_cast<unsigned short>(width);
    EXPECT_EQ(::ioctl(terminal_, TIOCSWINSZ, &size), 0);
}

int Terminal::finish() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(longestWait);
    int status = 0;
    while (::waitpid(child_, &status, WNOHANG) == 0) {
        readSome(20);
        if (std::chrono::steady_clock::now() < limit) continue;
        ADD_FAILURE() << "does not end";
        return -1;
    }
    child_ = -1;
    return WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
}

std::string installed(const std::string& program) {
    for (const char* folder : {"/usr/bin/", "/bin/", "/usr/local/bin/"}) {
        const std::string path = folder + program;
        if (::access(path.c_str(), X_OK) == 0) return path;
    }
    return {};
}
