#pragma once

#include <memory>
#include <string>
#include <vector>

#include <vekdb/host/file_replacement.h>

namespace vek::formats {

/// A file that nobody else who asks changes before it has been replaced; null for none.
using Held = std::shared_ptr<FileReplacement>;

/// Takes hold of a file before it is read. A Failure with `unwritable` when another program has
/// it, or when its path leads through somebody else's link. What else is wrong with a path is
/// said by who reads it. Null for standard input.
Held holdFile(const std::string& path);

/// The same for an output that is one of the inputs, too; null when it is none of them.
Held holdInput(const std::vector<std::string>& inputs, const std::string& output);

/// A Failure with `unwritable` that says why a step of a replacement failed.
[[noreturn]] void refuse(const std::string& name, const FileReplacement& file);
/// The same by the system's number of what went wrong.
[[noreturn]] void refuse(const std::string& name, int error);
/// The same of the place where the old file is to be kept.
[[noreturn]] void refuseBackup(const std::string& name, int error);

}  // namespace vek::formats
