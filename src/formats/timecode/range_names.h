#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What programs call the columns that begin and end something. Who asks for such a column by its
/// name asks here.
namespace vek::formats {

struct RangeName {
    const char* start;
    const char* end;
};

/// As edit lists and timelines, and log exchange files, call them.
constexpr RangeName sourceOfEvent = {"Source In", "Source Out"};
constexpr RangeName recordOfEvent = {"Record In", "Record Out"};
constexpr RangeName sourceOfExchange = {"Start", "End"};

enum class RangeKind { source, record, keycode };

/// The pairs of a kind. Of several that a log has the first is meant.
std::span<const RangeName> rangeNames(RangeKind kind);

/// What the other column may be called, the likeliest first: "End time" for "Start time", as a pair
/// above or by the words in it, so "Mix out" for "Mix In". None where nothing says it.
std::vector<std::string> endNamesFor(std::string_view start);
std::vector<std::string> startNamesFor(std::string_view end);

}  // namespace vek::formats
