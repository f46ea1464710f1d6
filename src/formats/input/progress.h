#pragma once

#include <cstddef>
#include <string>

namespace vek::formats {

/// Hears how far a job is.
class Watcher {
public:
    virtual ~Watcher() = default;
    /// So much of a job is done; `total` is all there is to do, 0 when it is not known. Called some
    /// thousand times over a whole job or, where that is not known, whenever the job looks.
    virtual void reached(const std::string& what, std::size_t done, std::size_t total) = 0;
    /// No more comes of the job.
    virtual void ended() = 0;
};

/// Tells a watcher of one job; costs next to nothing where there is none.
class Progress {
public:
    /// `what` is done: "reading", for example.
    Progress(Watcher* watcher, const std::string& what, std::size_t total)
        : watcher_(watcher), total_(total), step_(total / looks) {
        if (watcher != nullptr) what_ = what;
    }
    ~Progress() {
        if (isTold_) watcher_->ended();
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// To be called often.
    void reach(std::size_t done) {
        if (watcher_ != nullptr && done >= next_) tell(done);
    }

private:
    static constexpr std::size_t looks = 2000;

    void tell(std::size_t done);

    Watcher* watcher_;
    std::string what_;
    std::size_t total_;
    std::size_t step_;
    std::size_t next_ = 0;
    bool isTold_ = false;
};

}  // namespace vek::formats
