#include "tools/vek/browse/screen.h"

namespace vek::browse {

void showOnScreen(Browser&, bool, const std::function<void(const std::vector<std::string>&)>&) {
    throw Failure{wrongUsage,
                  "browse: this vek was built without ncurses, so there is no browser in it; "
                  "vek show prints a log"};
}

}  // namespace vek::browse
