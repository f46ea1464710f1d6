#include "tools/vek/cli/say.h"

#include "formats/text/width.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace {

bool areLeftOut = false;

}  // namespace

void say(const std::string& text) {
    if (!areLeftOut) sayFailure(text);
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
