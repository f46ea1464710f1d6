// The program without the XML library.
#include "formats/failure.h"
#include "formats/xml/xml.h"

namespace vek::formats {

struct XmlDocument::Parts {};

XmlDocument::XmlDocument() = default;
XmlDocument::~XmlDocument() = default;

XmlDocument::Fault XmlDocument::parse(char*, std::size_t, std::size_t) {
    throw Failure{unreadable, "this vek was built without pugixml and reads no XML"};
}

XmlElement XmlDocument::root() const {
    return {};
}

std::string_view XmlElement::name() const {
    return {};
}

std::string_view XmlElement::attribute(const char*) const {
    return {};
}

bool XmlElement::has(const char*) const {
    return false;
}

std::string_view XmlElement::text() const {
    return {};
}

XmlElement XmlElement::child(const char*) const {
    return {};
}

XmlElement XmlElement::firstChild() const {
    return {};
}

XmlElement XmlElement::next() const {
    return {};
}

std::ptrdiff_t XmlElement::offset() const {
    return -1;
}

}  // namespace vek::formats
