#include "formats/reading/progress.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <string_view>

#include "formats/text/width.h"

namespace vek::formats {

namespace {

constexpr std::chrono::seconds patience{1};
constexpr std::chrono::milliseconds pace{100};
constexpr std::size_t width = 30;
constexpr std::size_t looks = 2000;  // at the clock, over the whole job

// A bar that cannot be drawn is no reason to stop.
void show(std::string_view text) {
    [[maybe_unused]] ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

std::atomic<bool> areShown = false;

}  // namespace

void Progress::showOnTerminals() {
    areShown = true;
}

Progress::Progress(const std::string& what, std::size_t total)
    : what_(escaped(what)),
      total_(total),
      step_(total / looks),
      isWatched_(areShown && ::isatty(STDERR_FILENO) == 1),
      due_(Clock::now() + patience) {}

Progress::~Progress() {
    if (isDrawn_) show("\r\x1b[K");
}

void Progress::look(std::size_t done) {
    nextLook_ = done + step_;
    Clock::time_point now = Clock::now();
    if (now < due_) return;
    due_ = now + pace;
    isDrawn_ = true;
    draw(done);
}

void Progress::draw(std::size_t done) const {
    if (total_ == 0) {
        show("\r" + what_ + " " + std::to_string(done / 1024) + " KB");
        return;
    }
    std::size_t part = std::min(done, total_) * 100 / total_;
    std::string bar(width * part / 100, '=');
    bar.resize(width, ' ');
    show("\r" + what_ + " [" + bar + "] " + std::to_string(part) + " %");
}

}  // namespace vek::formats
