#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <vekdb/field_types.h>
#include <vekdb/record.h>
#include "arrow/metadata.h"

class VDBBase;

struct ArrowColumn {
    std::string name;
    std::string type;  // as saving writes it
};

/// What a table or a view shows, kept: the rows share their texts with the source's where those
/// can be shared.
struct ArrowPicture {
    ArrowPairs parameters;
    std::vector<ArrowColumn> columns;
    std::vector<dbrecord> rows;
    std::vector<std::uint8_t> tags;  // of each row; none where they are not wanted
};

ArrowPicture pictureOf(const VDBBase& source, bool withTags);
