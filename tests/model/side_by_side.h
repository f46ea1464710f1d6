#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "model/script.h"

namespace script {

/// The first step after which library and model differ, and what each of them gave.
struct Difference {
    std::size_t step;
    std::string library;
    std::string model;
};

/// Runs a script against both; nothing where they do the same. Where `reading`, the accounts are
/// spelled out for a person.
std::optional<Difference> runBoth(const Script& script, bool reading = false);

}  // namespace script
