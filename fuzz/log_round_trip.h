#pragma once

#include <string>
#include <string_view>

#include <vekdb/formats/log.h>

// The oracle of the targets that read other formats.

namespace fuzz {

// Reads the text as this format, or as what it is taken for, and looks at all of it. What is
// written of it in any format without a word about losses is the same when it is read again.
// The answer says what is wrong; "" when all is well.
std::string checkLog(std::string_view text, std::optional<vek::Format> format);

}  // namespace fuzz
