#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vek::formats {

/// Of `candidates` the one that `word` was most likely meant to be, or "".
std::string nearest(std::string_view word, const std::vector<std::string>& candidates);
/// "; did you mean X?", or "" when nothing is near.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace vek::formats
