#pragma once

#include <algorithm>
#include <string>
#include <vector>

// What is done to the rows through two views, or two proxy models, stacked on each other: the
// same for every participant.
namespace view_work {

inline constexpr char sorted[] = "Description";
inline constexpr char searched[] = "Description";
inline constexpr char wanted[] = "dolly";

/// The rows whose cells are set, spread over all there are.
struct SetCells {
    explicit SetCells(unsigned rows)
        : count(std::min(rows, 100'000u)), step(count > 0 ? rows / count : 0) {}
    unsigned row(unsigned i) const { return i * step; }

    unsigned count;
    unsigned step;
};

inline std::string newText(unsigned i) {
    return "take " + std::to_string(i);
}

/// The columns that are read of each row, so that a million cells are read of 100,000 rows or
/// more.
inline std::vector<const char*> readColumns(unsigned rows) {
    std::vector<const char*> columns = {"Description", "Notes",   "Reel",       "Scene",
                                        "Shot",        "Take",    "Start time", "End time",
                                        "Tag",         "sequence"};
    if (rows >= 1'000'000) columns.resize(1);
    return columns;
}

}  // namespace view_work
