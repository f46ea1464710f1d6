// Any bytes as a timecode: each form, read again, gives the other one, and no text is lost.

#include <vekdb/host/timecode.h>
#include "target.h"

namespace {

std::string database(const std::string& text) {
    return std::string(time_def(text.c_str(), label_timecode).get_database_str().view());
}

std::string punctuated(const std::string& text) {
    return std::string(time_def(text.c_str(), label_timecode).get_punctuated_str().view());
}

std::string check(const std::string& text) {
    time_def timecode(text.c_str(), label_timecode);
    if (!timecode.isTimecode() && (database(text) != text || punctuated(text) != text)) {
        return "a text that is no timecode was changed";
    }
    if (punctuated(database(text)) != punctuated(text) ||
        database(punctuated(text)) != database(text)) {
        return "the forms do not lead to each other";
    }
    return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(fuzz::textOf(data, size));
    fuzz::require(check(text.substr(0, text.find('\0'))));
    return 0;
}
