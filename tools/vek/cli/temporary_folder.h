#pragma once

#include <string>

namespace vek {

/// A folder of its own in the person's folder for temporary files, with one link in it. It goes
/// with this, and where Ctrl-C or its kin end the program. One at a time.
class TemporaryFolder {
public:
    /// A link of that name. A Failure with `unreadable` when no folder can be made.
    TemporaryFolder(const std::string& name, const std::string& target);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The link's path.
    std::string path() const;
};

}  // namespace vek
