// Any bytes as a log that may be packed: reading answers, and what was unpacked comes back. The
// checksum at the end is hard to guess, so an input that does not begin as packed is a text
// between the header and the end of a packed one, stored as it is.

#include "log_round_trip.h"
#include "target.h"

namespace {

std::uint32_t checksum(std::string_view text) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (char c : text) {
        sum ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1) ^ (0xEDB88320u & (0 - (sum & 1)));
        }
    }
    return ~sum;
}

std::string bytesOf(std::uint32_t number, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) {
        bytes += static_cast<char>(number >> (8 * i));
    }
    return bytes;
}

std::string stored(std::string_view text) {
    const auto size = static_cast<std::uint32_t>(text.size());
    std::string packed("\x1f\x8b\x08\0\0\0\0\0\0\x03\x01", 11);
    packed += bytesOf(size, 2) + bytesOf(~size, 2) + std::string(text);
    return packed + bytesOf(checksum(text), 4) + bytesOf(size, 4);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const bool isPacked = text.starts_with("\x1f\x8b");
    const bool isShort = text.size() <= 0xFFFF;
    fuzz::require(fuzz::checkLog(isPacked || !isShort ? text : stored(text), {}));
    return 0;
}
