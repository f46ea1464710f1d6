#include "tools/vek/report/parts.h"

#include "tools/vek/report/markup.h"

namespace vek::page {

namespace {

unsigned valueOf(char digit) {
    return static_cast<unsigned>(digit <= '9' ? digit - '0' : digit - 'a' + 10);
}

std::string bytesOf(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(valueOf(hex[i]) << 4 | valueOf(hex[i + 1]));
    }
    return bytes;
}

}  // namespace

std::string policySource(const Part& part) {
    return "'sha256-" + base64(bytesOf(part.sha256)) + "'";
}

}  // namespace vek::page
