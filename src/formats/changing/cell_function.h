#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "formats/choosing/regex.h"

namespace vek::formats {

/// What can be done to a cell's text: "upper", "lower", "trim", or "s/EXPRESSION/TEXT/" with the
/// flags g (each place) and i (case ignored), and any other sign in the place of "/".
class CellFunction {
public:
    /// Takes the function that a text begins with off it. A Failure where it begins with none,
    /// which names those there are.
    static CellFunction take(std::string_view& text);
    /// The whole text is one.
    static CellFunction parse(std::string_view text);
    /// Whether a text begins as a substitution does, so that it is meant to be one.
    static bool isSubstitution(std::string_view text);

    void apply(std::string& text) const;

private:
    enum class Kind { upper, lower, trim, substitute };

    explicit CellFunction(Kind kind) : kind_(kind) {}
    static std::optional<CellFunction> takeNamed(std::string_view& text);
    static CellFunction takeSubstitution(std::string_view& text);

    Kind kind_;
    std::optional<Substitution> substitution_;
};

}  // namespace vek::formats
