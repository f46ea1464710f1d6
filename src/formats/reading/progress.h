#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace vek::formats {

/// A bar on the standard error stream while a job goes on: only where the program asked for bars,
/// only on a terminal, only when the job has lasted over a second, and gone when the job is done.
class Progress {
public:
    /// `what` is done ("reading", shown escaped); `total` is all there is to do, 0 when it is not
    /// known.
    Progress(const std::string& what, std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// From now on bars are shown; an application that never asks sees none.
    static void showOnTerminals();

    /// To be called often; looks at the clock now and then only.
    void reach(std::size_t done) {
        if (isWatched_ && done >= nextLook_) look(done);
    }

private:
    using Clock = std::chrono::steady_clock;

    void look(std::size_t done);
    void draw(std::size_t done) const;

    std::string what_;
    std::size_t total_;
    std::size_t step_;
    std::size_t nextLook_ = 0;
    bool isWatched_;
    bool isDrawn_ = false;
    Clock::time_point due_;
};

}  // namespace vek::formats
