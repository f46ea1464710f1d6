#pragma once

#include <string>

// The oracle of the fuzz targets and the damage tests: what was read, written and read again is
// what was read, apart from the losses that the format is known for.

namespace fuzz {

// A value as it comes back from a file.
std::string afterRoundTrip(const std::string& value);

// Loads the file, with and without a column header asked for, reads all of it, saves what it
// holds beside it and loads that. The text says what differs; "" when all is well.
std::string checkTableFile(const std::string& path);

}  // namespace fuzz
