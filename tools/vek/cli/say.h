#pragma once

#include <string>

namespace vek {

/// One message on the standard error stream, "vek: " before it and a line end behind. Control
/// characters are shown escaped, so that a file's content never reaches the terminal raw.
void say(const std::string& text);

/// The same for what went wrong, which is said also where messages are left out.
void sayFailure(const std::string& text);

/// From now on a message that was said is not said again: what is wrong with a log that is read
/// again and again.
void sayEachOnce();

/// From now on messages are left out, failures are not.
void leaveMessagesOut();

}  // namespace vek
