#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// What the fuzz targets share.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// A file of this name in a folder of the process's own, holding the text.
std::string fileWith(const char* name, std::string_view text);

// Ends the process with the message, unless that is empty.
void require(const std::string& wrong);

}  // namespace fuzz
