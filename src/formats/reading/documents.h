#pragma once

#include <string>
#include <string_view>

#include "formats/failure.h"

namespace vek::formats {

struct Log;

/// Refuses a text that begins as a page, a document or a timeline of a kind that is not read, and
/// that would else be taken for cells between marks. `head` is what it begins with.
void refuseDocument(std::string_view head, const Log& log);

}  // namespace vek::formats
