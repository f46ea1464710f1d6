#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/writers.h"

namespace vek::formats {

/// A Failure where the sheet has no columns, of which engines make nothing.
void requireColumns(const Sheet& sheet, const std::string& output);

/// The names of the columns as engines take them: each is some text, UTF-8, and another one than
/// all others, also where capitals are not told from other letters. What is changed for that is
/// told.
std::vector<std::string> namesForEngines(const Sheet& sheet, Losses& losses);

/// The text with U+FFFD for what is no UTF-8.
std::string withoutBrokenBytes(std::string_view text);

}  // namespace vek::formats
