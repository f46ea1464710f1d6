#include "formats/input/text_form.h"

namespace vek::formats {

bool canDelimit(char delimiter) {
    const bool isOfText = delimiter == '"' || delimiter == '\n' || delimiter == '\r';
    return !isOfText && delimiter != '\0' && static_cast<unsigned char>(delimiter) < 0x80;
}

}  // namespace vek::formats
