#pragma once

#include <string>
#include <vector>

#include "cli/program.h"

/// A program in a terminal of tmux: keys go in, and what its screen shows comes out. Ends with the
/// object, whatever the program does, and with the process that made it, however that ends.
class Multiplexer {
public:
    Multiplexer(const WorkFolder& folder, const std::string& command, int width, int height,
                const std::string& terminal = "screen-256color");
    ~Multiplexer();
    Multiplexer(const Multiplexer&) = delete;
    Multiplexer& operator=(const Multiplexer&) = delete;

    /// By the names that tmux has for them: "PPage", "C-r", "F2", "x".
    void press(const std::vector<std::string>& keys);
    void type(const std::string& text);
    void resize(int width, int height);
    /// The screen, line by line; `escapes` with its colours.
    std::string screen(bool escapes = false) const;
    /// Waits until the screen shows a text; a failure of the test when it does not. Gives it.
    std::string waitFor(const std::string& text) const;
    void waitForEnd(const std::string& file) const;
    /// The process that runs in it.
    std::string process() const;

private:
    std::string endsWith(int process) const;
    std::string tmux(const std::string& arguments) const;

    const WorkFolder& folder_;
    std::string socket_;
};
