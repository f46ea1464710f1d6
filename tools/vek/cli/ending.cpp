#include "tools/vek/cli/ending.h"

#include <exception>
#include <new>

#include "formats/failure.h"
#include "tools/vek/cli/exit_code.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/say.h"

namespace vek {

namespace {

int ended(const formats::Failure& failure) {
    if (!failure.text.empty()) sayFailure(failure.text);
    return exitCodeOf(failure.kind);
}

}  // namespace

int endOf(const std::function<int()>& program) {
    try {
        return program();
    } catch (const PipeClosed&) {
        return done;
    } catch (const formats::Failure& failure) {
        return ended(failure);
    } catch (const std::bad_alloc&) {
        return ended({formats::unreadable, "out of memory"});
    } catch (const std::exception& error) {
        return ended({formats::unreadable, std::string("cannot go on: ") + error.what()});
    } catch (...) {
        return ended({formats::unreadable, "cannot go on"});
    }
}

}  // namespace vek
