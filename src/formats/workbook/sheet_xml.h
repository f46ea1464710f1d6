#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts in the XML of a sheet.
namespace vek::formats {

/// What a sheet cannot hold of a text.
struct XmlLoss {
    bool hasZeros = false;
    bool hasBrokenBytes = false;

    bool isAny() const { return hasZeros || hasBrokenBytes; }
};

/// Adds a text so that programs for sheets read it as it is: characters that XML cannot hold in
/// the form _x000D_. Zero bytes and bytes that are no UTF-8 become U+FFFD.
XmlLoss addSheetText(std::string& to, std::string_view text);

/// Characters as programs for sheets count them, in units of UTF-16.
std::size_t sheetLength(std::string_view text);

}  // namespace vek::formats
