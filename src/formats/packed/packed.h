#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include <vekdb/host/text_block.h>
#include "formats/input/opening.h"
#include "formats/text/text_lines.h"

/// Texts packed by gzip. packed.cpp is the only place that knows zlib; where the program is built
/// without it, every packed text is refused.
namespace vek::formats {

bool isPacked(std::string_view head);
/// Whether a file is called as packed ones are: "day.csv.gz".
inline bool isPackedName(std::string_view path) {
    return path.size() > 3 && sameText(path.substr(path.size() - 3), ".gz");
}
/// What such a file is called when it is unpacked: "day.csv".
inline std::string_view withoutPackedEnding(std::string_view path) {
    return isPackedName(path) ? path.substr(0, path.size() - 3) : path;
}

/// What was packed. A Failure with `unreadable` for what was not packed whole, and for more than
/// mostUnpacked of its bytes.
Quor::Ptr<TextBlock> unpacked(std::string_view text, const std::string& name,
                              const Opening& opening);
std::string packed(std::string_view text);

/// Packs a text piece by piece.
class Packer {
public:
    /// A Failure with `unwritable` where nothing can be packed.
    Packer();
    ~Packer();

    /// Appends what is known of the packed text by then.
    void add(std::string_view text, std::string& to);
    /// Nothing comes behind that.
    void end(std::string& to);

private:
    class Stream;
    std::unique_ptr<Stream> stream_;
};

}  // namespace vek::formats
