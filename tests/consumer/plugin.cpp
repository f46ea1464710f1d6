// A plug-in with the library inside, and with an allocator that it puts in place.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <vekdb/host/visibility.h>

#include "days_work.h"
#include "marked_allocator.h"

namespace {

// What the library asks `new` for: the record itself, besides the memory of its values.
bool reachesTheAllocator(MarkedAllocator& allocator) {
    vekdb empty;
    const int before = allocator.taken;
    std::unique_ptr<dbrecord> record(empty.make_dummy_record());
    return allocator.taken > before;
}

bool ownObjectsComeAndGo() {
    std::vector<std::string> texts(10, std::string(100, 'x'));
    texts.resize(1000, std::string(200, 'y'));
    return texts[999].size() == 200;
}

}  // namespace

extern "C" VEKDB_PUBLIC int run(const char* path) {
    MarkedAllocator allocator;
    if (!reachesTheAllocator(allocator)) {
        std::puts("what the library asks new for does not reach the host's allocator");
        return 1;
    }
    return ownObjectsComeAndGo() && daysWork(path) ? 0 : 2;
}
