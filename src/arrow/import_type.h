#pragma once

#include <optional>
#include <string_view>

/// How the values of a column stand in its buffers, and what texts they become.
struct ArrowType {
    enum class Kind {
        nulls,
        booleans,
        signedNumbers,
        unsignedNumbers,
        floats,
        texts,       // places and bytes; `bytes` is the width of a place
        views,       // short texts by themselves, others in one of several buffers
        fixedTexts,  // `bytes` each
        decimals,    // `digits` behind the point, which may be negative
        days,
        dayTimes,  // since midnight
        instants,  // since 1970; `isZoned` where that is in UTC
    };

    Kind kind = Kind::nulls;
    unsigned bytes = 0;  // of a value
    int digits = 0;      // of a fraction; for times, what a unit is: 10 to the power of -digits
    bool isZoned = false;
};

/// The type that a format string means; nothing for one that does not become a text.
std::optional<ArrowType> typeOfFormat(std::string_view format);

/// What the buffers of a type are at least.
int fewestBuffers(const ArrowType& type);
