#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vek::formats {

/// The heading entry by which a log exchange file says that its timecodes drop frames.
constexpr const char* dropFrameEntry = "DROP_FRAME";

/// What such an entry says; nothing for words that are not known.
std::optional<bool> saysDropFrame(std::string_view value);
/// The same entry, in its own words, for another counting; nothing for words that are not known.
std::optional<std::string> dropFrameValue(std::string_view old, bool drops);

}  // namespace vek::formats
