#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/vek/cli/command.h"

namespace vek {

/// The numbers of "{#}": each row's is a step on from the one before.
class Numbering {
public:
    Numbering(std::int64_t start, std::int64_t step, std::size_t width)
        : number_(start), step_(step), width_(width) {}

    /// The next one, with zeros in front up to the width. A Failure behind the last one that
    /// there is.
    std::string next();

private:
    std::int64_t number_;
    std::int64_t step_;
    std::size_t width_;
    bool isUsedUp_ = false;
};

/// The options --start, --step and --digits, and what they say.
std::vector<Option> numberingOptions();
Numbering numberingFrom(const Args& args);
bool asksForNumbering(const Args& args);

}  // namespace vek
