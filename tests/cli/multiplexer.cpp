#include "cli/multiplexer.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace {

constexpr std::chrono::seconds longestWait{40};
constexpr std::chrono::milliseconds shortPause{20};

std::string quoted(const std::string& word) {
    std::string out = "'";
    for (char c : word) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string nextSocket() {
    static int count = 0;
    return "vek-test-" + std::to_string(::getpid()) + "-" + std::to_string(++count);
}

}  // namespace

Multiplexer::Multiplexer(const WorkFolder& folder, const std::string& command, int width,
                         int height, const std::string& terminal)
    : folder_(folder), socket_(nextSocket()) {
    folder.write("tmux.conf", "set -g default-terminal " + terminal + "\nset -g status off\n" +
                                  "set -sg escape-time 0\n");
    tmux("new-session -d -x " + std::to_string(width) + " -y " + std::to_string(height) + " " +
         quoted(endsWith(::getpid()) + "LC_ALL=C.UTF-8 " + command +
                "; echo ended $? > ended; exec sleep 1000"));
}

// A test that crashes or is killed takes its terminal with it, too.
std::string Multiplexer::endsWith(int process) const {
    return "(while kill -0 " + std::to_string(process) + " 2>&-; do sleep 0.2; done; tmux -L " +
           socket_ + " kill-server) & ";
}

Multiplexer::~Multiplexer() {
    tmux("kill-server");
}

std::string Multiplexer::tmux(const std::string& arguments) const {
    const std::string command = "cd " + quoted(folder_.path().string()) + " && TMUX= tmux -L " +
                                socket_ + " -f tmux.conf " + arguments + " 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return {};
    std::string out;
    char buffer[4096];
    while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) {
        out.append(buffer, got);
    }
    ::pclose(pipe);
    return out;
}

void Multiplexer::press(const std::vector<std::string>& keys) {
    std::string list;
    for (const std::string& key : keys) list += " " + quoted(key == ";" ? "\\;" : key);
    tmux("send-keys" + list);
}

void Multiplexer::type(const std::string& text) {
    tmux("send-keys -l " + quoted(text));
}

void Multiplexer::resize(int width, int height) {
    tmux("resize-window -x " + std::to_string(width) + " -y " + std::to_string(height));
}

std::string Multiplexer::screen(bool escapes) const {
    return tmux(escapes ? "capture-pane -p -e" : "capture-pane -p");
}

std::string Multiplexer::waitFor(const std::string& text) const {
    const auto limit = std::chrono::steady_clock::now() + longestWait;
    std::string seen;
    while (std::chrono::steady_clock::now() < limit) {
        seen = screen();
        if (seen.find(text) != std::string::npos) return seen;
        std::this_thread::sleep_for(shortPause);
    }
    ADD_FAILURE() << "did not appear: " << text << "\non the screen:\n" << seen;
    return seen;
}

void Multiplexer::waitForEnd(const std::string& file) const {
    const auto limit = std::chrono::steady_clock::now() + longestWait;
    while (!folder_.has(file) && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(shortPause);
    }
    EXPECT_TRUE(folder_.has(file)) << screen();
}

std::string Multiplexer::process() const {
    return tmux("list-panes -F '#{pane_pid}'");
}
