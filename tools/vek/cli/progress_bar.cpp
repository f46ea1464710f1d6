#include "tools/vek/cli/progress_bar.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "formats/text/width.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace {

constexpr std::chrono::seconds patience{1};
constexpr std::chrono::milliseconds pace{100};
constexpr std::size_t width = 30;

// A bar that cannot be drawn is no reason to stop.
void show(const std::string& text) {
    [[maybe_unused]] const int error = writeTo(Stream::errors, text);
}

std::string bar(std::size_t done, std::size_t total) {
    if (total == 0) return std::to_string(done / 1024) + " KB";
    const std::size_t part = std::min(done, total) * 100 / total;
    std::string drawn(width * part / 100, '=');
    drawn.resize(width, ' ');
    return "[" + drawn + "] " + std::to_string(part) + " %";
}

class ProgressBar : public formats::Watcher {
public:
    void reached(const std::string& what, std::size_t done, std::size_t total) override {
        const Clock::time_point now = Clock::now();
        if (!due_) due_ = now + patience;
        if (now < *due_) return;
        due_ = now + pace;
        isDrawn_ = true;
        show("\r" + formats::escaped(what) + " " + bar(done, total));
    }

    void ended() override {
        if (isDrawn_) show("\r\x1b[K");
        isDrawn_ = false;
        due_.reset();
    }

private:
    using Clock = std::chrono::steady_clock;

    std::optional<Clock::time_point> due_;
    bool isDrawn_ = false;
};

}  // namespace

formats::Watcher* progressBar() {
    static ProgressBar drawn;
    return isTerminal(Stream::errors) ? &drawn : nullptr;
}

}  // namespace vek
