#include "formats/xml/xml.h"

#include <algorithm>
#include <new>
#include <pugixml.hpp>

namespace vek::formats {

namespace {

// What the library keeps of an element or a text, and of an attribute.
constexpr std::size_t nodeBytes = 64;
constexpr std::size_t attributeBytes = 40;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The first place behind blanks, or the end.
std::size_t behindBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at])) ++at;
    return at;
}

// What the mark at a place costs: a bracket opens an element, an equals sign and a quote make an
// attribute, and behind the end of a tag a text may stand, of blanks only where it stands alone.
std::size_t costOf(std::string_view text, std::size_t at) {
    if (text[at] == '<') return text.substr(at + 1, 1) == "/" ? 0 : nodeBytes;
    const std::size_t next = behindBlanks(text, at + 1);
    if (next == text.size()) return 0;
    if (text[at] == '=') return text[next] == '"' || text[next] == '\'' ? attributeBytes : 0;
    const bool isAlone = next > at + 1 && text.substr(next, 2) == "</";
    return text[next] != '<' || isAlone ? nodeBytes : 0;
}

// Where a document has come to cost more than it may, or npos. Found out before it is made, as the
// library's allocations are those of the whole process.
std::size_t endOfRoom(std::string_view text, std::size_t mostMemory) {
    std::size_t cost = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c != '<' && c != '>' && c != '=') continue;
        cost += costOf(text, at);
        if (cost > mostMemory) return at;
    }
    return text.npos;
}

pugi::xml_node nodeOf(void* node) {
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(node));
}

pugi::xml_node elementFrom(pugi::xml_node node) {
    while (node && node.type() != pugi::node_element) node = node.next_sibling();
    return node;
}

}  // namespace

struct XmlDocument::Parts {
    pugi::xml_document document;
};

std::string_view XmlElement::name() const {
    return nodeOf(node_).name();
}

std::string_view XmlElement::attribute(const char* name) const {
    return nodeOf(node_).attribute(name).value();
}

bool XmlElement::has(const char* name) const {
    return !nodeOf(node_).attribute(name).empty();
}

std::string_view XmlElement::text() const {
    return nodeOf(node_).child_value();
}

XmlElement XmlElement::child(const char* name) const {
    return XmlElement(nodeOf(node_).child(name).internal_object());
}

XmlElement XmlElement::firstChild() const {
    return XmlElement(elementFrom(nodeOf(node_).first_child()).internal_object());
}

XmlElement XmlElement::next() const {
    return XmlElement(elementFrom(nodeOf(node_).next_sibling()).internal_object());
}

std::ptrdiff_t XmlElement::offset() const {
    return nodeOf(node_).offset_debug();
}

XmlDocument::XmlDocument() = default;
XmlDocument::~XmlDocument() = default;

XmlDocument::Fault XmlDocument::parse(char* text, std::size_t size, std::size_t mostMemory) {
    if (const std::size_t end = endOfRoom({text, size}, mostMemory); end != std::string::npos) {
        return {end, "more elements than " + std::to_string(mostMemory >> 20) + " MB hold"};
    }
    parts_ = std::make_unique<Parts>();
    const pugi::xml_parse_result result = parts_->document.load_buffer_inplace(
        text, size, pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
    if (result) return {};
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    return {static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)),
            result.description()};
}

XmlElement XmlDocument::root() const {
    return XmlElement(parts_->document.document_element().internal_object());
}

}  // namespace vek::formats
