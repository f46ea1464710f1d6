#pragma once

#include "formats/input/progress.h"

namespace vek {

/// Draws a bar on the standard error stream while a job goes on: only on a terminal, only when the
/// job has lasted over a second, and gone when it is done. Null where there is no terminal.
formats::Watcher* progressBar();

}  // namespace vek
