#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// A kind of file by which a stranger may want to keep a program busy.
struct HostileShape {
    const char* name;
    const char* column;                ///< one that it has, or nearly has
    std::string (*make)(std::size_t);  ///< about so many bytes
};

const std::vector<HostileShape>& hostileShapes();
