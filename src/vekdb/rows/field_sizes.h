#pragma once

#include <vector>

class Rows;

/// The longest value of each of `fields` columns in bytes, over all rows, in one pass.
std::vector<unsigned> longestValues(const Rows& rows, unsigned fields);
/// The same of one column.
unsigned longestValue(const Rows& rows, unsigned field);
