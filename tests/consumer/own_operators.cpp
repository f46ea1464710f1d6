// An application with allocation operators of its own: what it and the library ask `new` for goes
// to them, everything else of the library to the host's allocator, and everything works. Where
// they have no more memory, every operation ends with a bad_alloc, a load with the host's own.

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include <vekdb/host/exceptions.h>
#include "days_work.h"
#include "marked_allocator.h"

namespace {

long asked = 0;
long failAt = 0;  // counted down; 0 for never

}  // namespace

void* operator new(std::size_t size) {
    ++asked;
    if (failAt != 0 && --failAt == 0) throw std::bad_alloc();
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

// Ends the action at each of its requests in turn until it gets through; how often it ended with
// an exception that is `Wanted`, or -1 where another one left it.
template <class Wanted, class Action>
int endings(Action action) {
    for (int n = 1;; ++n) {
        failAt = n;
        try {
            action();
            if (failAt != 0) {
                failAt = 0;
                return n - 1;
            }
        } catch (const Wanted&) {
        } catch (...) {
            return -1;
        }
    }
}

bool endsAsSaid(const char* path) {
    const auto name = fromUTF8(LightweightString<char>(path));
    vekdb loaded;
    loaded.set_filename(name);
    const auto load = [&] { loaded.loadFromFile(1000, true); };
    const auto work = [&] {
        const long due = std::exchange(failAt, 0);
        vekdb log(name, 1000, true);
        failAt = due;
        log.sort(1, 0);
        log.merge_all_matching(&log);
        VDBView view(&log);
        view->displayAllRecords();
        view->tagDuplicates(0);
        view->removeTagged();
        log.delete_records(0, 3);
    };
    return endings<Quor::Exception::BadAlloc>(load) > 10 && endings<std::bad_alloc>(work) > 10;
}

}  // namespace

int main(int count, char** arguments) {
    MarkedAllocator allocator;
    const long before = asked;
    delete new std::string(100, 'x');
    if (count != 2 || asked < before + 2 || allocator.taken != 0) {
        std::puts("the allocation operators are not the application's");
        return 1;
    }
    const long beforeWork = asked;
    if (!daysWork(arguments[1])) return 2;
    if (!endsAsSaid(arguments[1])) return 4;
    return asked > beforeWork && allocator.taken > 0 ? 0 : 3;
}
