#pragma once

namespace vek::formats {

struct Log;

/// Of a log that was read to be changed: whether the quotes of its file are part of its cells, as
/// hasTextQuotes has it.
bool cameWithTextQuotes(const Log& log);

}  // namespace vek::formats
