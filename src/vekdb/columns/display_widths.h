#pragma once

#include <cstdint>

/// The narrowest width at which a column of this name is shown.
std::int32_t minimumDisplayWidth(const char* name);
