#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "cli/program.h"

/// A program that somebody sits in front of: it runs in a terminal of its own.
class Terminal {
public:
    Terminal(const WorkFolder& folder, std::vector<std::string> words, int width = 80);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const std::string& keys);
    /// Waits until the text has appeared on the screen since the last call; a failure of the test
    /// when it does not. Gives all that appeared up to it.
    std::string waitFor(const std::string& text);
    /// What appears up to when the screen has been quiet for a time, and something has appeared or
    /// it is plain that nothing will.
    std::string watchUntilQuiet(int milliseconds);
    /// How long the program itself has been at work, by the processor's time.
    std::chrono::milliseconds timeTaken() const;
    void resize(int width);
    /// Waits for the program to end; its exit code, or 1000 and the signal that ended it.
    int finish();

private:
    bool readSome(int milliseconds);

    int terminal_ = -1;
    pid_t child_ = -1;
    std::string screen_;
};

/// Where a program of the path is, "" where it is not installed.
std::string installed(const std::string& program);
