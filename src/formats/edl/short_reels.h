#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>

namespace vek::formats {

/// Names of at most eight characters, one for each reel, as programs know them that read no longer
/// ones.
class ShortReels {
public:
    static constexpr std::size_t longest = 8;

    /// Of printable characters alone, and of no other reel.
    const std::string& of(const std::string& reel);

private:
    std::map<std::string, std::string> names_;
    std::set<std::string> used_;
};

}  // namespace vek::formats
