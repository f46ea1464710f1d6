#pragma once

#include <string>
#include <vector>

namespace vek::browse {

/// How a piece of text looks.
enum class Look { plain, title, cell, row, tagged, faint, bar, message, trouble, range };

struct Piece {
    std::size_t x = 0;
    std::string text;  ///< escaped, safe on a terminal
    std::size_t width = 0;
    Look look = Look::plain;
};

/// What stands on a screen, line by line, and where its cursor is.
struct Picture {
    std::vector<std::vector<Piece>> lines;
    std::size_t cursorX = 0;
    std::size_t cursorY = 0;
    bool hasCursor = false;
};

/// The picture as plain text, for whoever has no screen.
std::string textOf(const Picture& picture);

}  // namespace vek::browse
