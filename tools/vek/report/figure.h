#pragma once

#include <string>
#include <string_view>

namespace vek::page {

/// A picture with its heading, what is to be said below it, and room to be moved sideways where
/// the window is narrow. The texts are markup.
std::string figure(std::string_view id, std::string_view heading, const std::string& picture,
                   const std::string& below);

/// "12 of 340 reels are shown."
std::string shownOf(std::size_t shown, std::size_t count, const std::string& what);

}  // namespace vek::page
