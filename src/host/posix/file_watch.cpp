#include <vekdb/host/file_watch.h>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <utility>

#include "host/posix/file_stamp.h"

namespace {

constexpr int second = 1000;
constexpr int pollingInterval = 250;
constexpr int restTime = 40;
constexpr int mostRests = 10;  // a file that grows all the time is looked at all the same

void sleepFor(int milliseconds) {
    const timespec time = {0, milliseconds * 1000000L};
    ::nanosleep(&time, nullptr);
}

std::optional<FileStamp> stampOf(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return FileStamp(status);
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

struct FileWatch::State {
    explicit State(const char* watched)
        : path(watched),
          stamp(stampOf(watched)),
          events(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        watchFolders();
    }
    ~State() {
        if (events >= 0) ::close(events);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // A file that another one replaces is told by its folder; behind a link that is another one.
    void watchFolders() const {
        watchFolderOf(path);
        if (char* real = ::realpath(path.c_str(), nullptr)) {
            watchFolderOf(real);
            std::free(real);
        }
    }

    void watchFolderOf(const std::string& file) const {
        constexpr unsigned changes = IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_CREATE |
                                     IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
        if (events >= 0) ::inotify_add_watch(events, folderOf(file).c_str(), changes);
    }

    // What the events say is of no interest: the file itself tells whether it changed.
    void drain() const {
        char read[4096];
        while (::read(events, read, sizeof read) > 0) {
        }
        sleepFor(restTime / 2);
    }

    void settle() {
        for (int rests = 0; rests < mostRests; ++rests) {
            sleepFor(restTime);
            const std::optional<FileStamp> before = std::exchange(stamp, stampOf(path));
            if (before == stamp) return;
        }
    }

    std::string path;
    std::optional<FileStamp> stamp;
    int events;  // -1 where the system cannot tell of changes
};

FileWatch::FileWatch(const char* path) : state_(std::make_unique<State>(path)) {}

FileWatch::~FileWatch() = default;

bool FileWatch::isThere() const {
    return state_->stamp.has_value();
}

FileWatch::Event FileWatch::wait(int output) {
    const int interval = state_->events >= 0 ? second : pollingInterval;
    for (int waited = 0; waited < second; waited += interval) {
        // Without asking for anything a stream tells that its other end is closed.
        pollfd streams[] = {{state_->events, POLLIN, 0}, {output, 0, 0}};
        ::poll(streams, 2, interval);
        if ((streams[1].revents & (POLLERR | POLLHUP)) != 0) return eClosed;
        if ((streams[0].revents & POLLIN) != 0) state_->drain();
        const std::optional<FileStamp> now = stampOf(state_->path);
        if (now == state_->stamp) continue;
        state_->stamp = now;
        state_->settle();
        return eChanged;
    }
    return eNothing;
}
