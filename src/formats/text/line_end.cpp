#include "formats/text/line_end.h"

namespace vek::formats {

const char* bytesOf(LineEnd end) {
    switch (end) {
        case LineEnd::crlf:
            return "\r\n";
        case LineEnd::cr:
            return "\r";
        default:
            return "\n";
    }
}

}  // namespace vek::formats
