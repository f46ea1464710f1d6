#pragma once

#include <vector>

#include "exhaustion/world.h"

namespace exhaustion {

/// What an operation leaves that memory ended: all as it was, or part of what it does (a
/// deletion may be complete, and only not reported to all who listen).
enum class After { asItWas, inPart };

/// Whether views that are told nothing may show other records afterwards: rows were inserted or
/// put into another order below them.
enum class Below { stays, moves };

struct Scenario {
    const char* name;
    After after;
    Below below;
    void (*run)(World& world);
};

/// Every public operation that takes memory, or that stands where memory may be wanted. To add
/// one, add a line.
const std::vector<Scenario>& scenarios();

}  // namespace exhaustion
