#pragma once

#include "host/posix/replacing/held_file.h"
#include "host/posix/replacing/place.h"
#include "host/posix/replacing/trouble.h"

#include <string>

/// Writes the contents of one open file over those of the one in a place, which stays the same
/// file. Its old bytes stand in a file beside it meanwhile, and are put back where writing fails;
/// where that fails too, `beside` is the name of that file.
FileTrouble writeInPlace(const Place& place, const HeldFile& old, int contents,
                         std::string& beside);
