#pragma once

#include <string>

/// Why nothing could be written to a path, as far as the rights to the file and to its folder tell;
/// 0 where they are granted. Nothing is made or opened for that.
int errorOfRights(const std::string& path);
