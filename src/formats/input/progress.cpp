#include "formats/input/progress.h"

namespace vek::formats {

void Progress::tell(std::size_t done) {
    next_ = done + step_;
    isTold_ = true;
    watcher_->reached(what_, done, total_);
}

}  // namespace vek::formats
