#include "formats/edl/short_reels.h"

namespace vek::formats {

namespace {

std::string squeezed(const std::string& reel) {
    std::string out;
    for (char c : reel) {
        if (c > ' ' && c < 0x7F) out += c;
    }
    return out.empty() ? "REEL" : out;
}

}  // namespace

const std::string& ShortReels::of(const std::string& reel) {
    auto known = names_.find(reel);
    if (known != names_.end()) return known->second;
    std::string name = squeezed(reel).substr(0, longest);
    for (int n = 2; !used_.insert(name).second; ++n) {
        std::string number = std::to_string(n);
        name = squeezed(reel).substr(0, longest - number.size()) + number;
    }
    return names_[reel] = name;
}

}  // namespace vek::formats
