#pragma once

#include <string_view>

namespace vek::formats {

/// The encoding that the first line of an XML document names; "" where it names none.
std::string_view declaredEncoding(std::string_view document);

}  // namespace vek::formats
