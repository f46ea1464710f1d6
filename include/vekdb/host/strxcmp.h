#pragma once

#include <string_view>

#include <vekdb/host/visibility.h>

/// The order of values as people read them: case ignored, and a run of digits
/// counts by its value, so "2" < "10" < "10A" < "10B". Texts that this rule finds
/// alike are told apart by their characters, case ignored, so 0 is answered
/// exactly for texts that differ in nothing but case. A strict weak order, the
/// same under every locale. Answers -1, 0 or 1; null is the empty text.
VEKDB_PUBLIC int strxcmp(const char* a, const char* b) noexcept;
VEKDB_PUBLIC int strxcmp(std::string_view a, std::string_view b) noexcept;

/// The same order without what tells texts apart that are read alike: -1, 0 or 1, and 0 also for
/// "1" and "01". Sort by `strxcmp`, ask whether a value is greater by this.
VEKDB_PUBLIC int compareAsRead(std::string_view a, std::string_view b) noexcept;
