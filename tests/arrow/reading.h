#pragma once

#include <string>
#include <utility>
#include <vector>

#include <vekdb/arrow/arrow.h>

// Streams of Arrow read by the format's own text, knowing nothing of how they were made.

namespace arrow_testing {

using Pairs = std::vector<std::pair<std::string, std::string>>;

struct Field {
    std::string name;
    std::string format;
    Pairs metadata;
};

/// What a stream handed over.
struct Contents {
    std::vector<Field> fields;
    Pairs metadata;
    std::vector<std::vector<std::string>> rows;  // booleans as "true" and "false"
    std::vector<std::size_t> batches;            // their rows
    std::vector<std::string> faults;             // what the format does not allow
    int error = 0;
    std::string errorText;

    std::vector<std::string> column(std::size_t i) const;
};

/// Reads a stream to its end, and releases it and all that it gave.
Contents contentsOf(ArrowArrayStream& stream);

Pairs decodedMetadata(const char* metadata);

}  // namespace arrow_testing
