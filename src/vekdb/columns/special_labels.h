#pragma once

#include <string_view>

/// The pairs of columns that hold the start and the end of a range: a query on either column
/// of a pair asks for the rows whose range holds the text.
struct SpecialLabelPair {
    const char* start;
    const char* end;
};

/// The pair that a column name belongs to, or null. Names compare exactly.
const SpecialLabelPair* specialLabelPair(std::string_view name);
