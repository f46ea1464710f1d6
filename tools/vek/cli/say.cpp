#include "tools/vek/cli/say.h"

#include <set>

#include "formats/text/width.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace {

bool areLeftOut = false;
bool areSaidOnce = false;

// Of very many the first are forgotten with all others.
bool isSaid(const std::string& text) {
    constexpr std::size_t mostKept = 10000;
    static std::set<std::string> said;
    if (said.size() >= mostKept) said.clear();
    return !said.insert(text).second;
}

}  // namespace

void say(const std::string& text) {
    if (areLeftOut || (areSaidOnce && isSaid(text))) return;
    sayFailure(text);
}

void sayEachOnce() {
    areSaidOnce = true;
}

void leaveMessagesOut() {
    areLeftOut = true;
}

void sayFailure(const std::string& text) {
    std::string line = "vek: " + formats::escaped(text) + "\n";
    // Nothing is left to be told when even this stream is gone.
    [[maybe_unused]] const int error = writeTo(Stream::errors, line);
}

}  // namespace vek
