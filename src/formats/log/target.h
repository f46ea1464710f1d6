#pragma once

#include "formats/log/log.h"

namespace vek::formats {

/// The format in which a log is written back; a Failure for formats that are only read.
Format targetOf(const Log& log);
/// A Failure for formats whose files are not changed in place.
void requireWrittenBack(const Log& log);

}  // namespace vek::formats
