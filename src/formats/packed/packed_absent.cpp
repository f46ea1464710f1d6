// The program without zlib.
#include "formats/failure.h"
#include "formats/packed/packed.h"

namespace vek::formats {

bool isPacked(std::string_view head) {
    return head.starts_with("\x1F\x8B\x08");
}

Quor::Ptr<TextBlock> unpacked(std::string_view, const std::string& name, const Opening&) {
    throw Failure{unreadable,
                  name + ": packed by gzip; this vek was built without zlib, unpack it first"};
}

class Packer::Stream {};

Packer::Packer() {
    throw Failure{unwritable, "this vek was built without zlib and packs nothing"};
}

Packer::~Packer() = default;

void Packer::add(std::string_view, std::string&) {}

void Packer::end(std::string&) {}

std::string packed(std::string_view) {
    Packer none;
    return {};
}

}  // namespace vek::formats
