#pragma once

#include <string>
#include <string_view>

/// The style and the script of a page, built into the program.
namespace vek::page {

struct Part {
    std::string_view text;
    std::string_view sha256;  ///< of the text's bytes, 64 hexadecimal digits
};

extern const Part pageStyle;
extern const Part pageScript;

/// What a Content-Security-Policy calls a part: 'sha256-...'.
std::string policySource(const Part& part);

}  // namespace vek::page
