#pragma once

#include <string>
#include <string_view>

#include "formats/log.h"

namespace vek {

/// What a text is taken for that begins so, in a file of that name.
Format recognised(const std::string& path, std::string_view head);

}  // namespace vek
