// The program without the library for XML that arrives.
#include "formats/failure.h"
#include "formats/workbook/xml_stream.h"

namespace vek::formats {

struct XmlStream::Parts {};

std::string_view XmlAttributes::operator[](std::string_view) const {
    return {};
}

XmlStream::XmlStream(XmlReceiver&, const std::string& place) {
    throw Failure{unreadable, place +
                                  ": this vek was built without expat and reads no workbook, "
                                  "save the sheet as CSV"};
}

XmlStream::~XmlStream() = default;

void XmlStream::take(std::string_view) {}

void XmlStream::finish() {}

}  // namespace vek::formats
