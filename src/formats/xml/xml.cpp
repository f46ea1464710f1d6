#include "formats/xml/xml.h"

#include <cstdlib>
#include <pugixml.hpp>

namespace vek::formats {

namespace {

// What documents of this thread may still take.
thread_local std::size_t roomLeft = 0;

constexpr std::size_t headSize = alignof(std::max_align_t);

void* take(std::size_t size) {
    if (size > roomLeft) return nullptr;
    auto* block = static_cast<char*>(std::malloc(size + headSize));
    if (block == nullptr) return nullptr;
    *reinterpret_cast<std::size_t*>(block) = size;
    roomLeft -= size;
    return block + headSize;
}

void giveBack(void* memory) {
    if (memory == nullptr) return;
    char* const block = static_cast<char*>(memory) - headSize;
    roomLeft += *reinterpret_cast<std::size_t*>(block);
    std::free(block);
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
    pugi::set_memory_management_functions(take, giveBack);
    roomLeft = mostMemory;
    parts_ = std::make_unique<Parts>();
    const pugi::xml_parse_result result = parts_->document.load_buffer_inplace(
        text, size, pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
    if (result) return {};
    const auto offset = static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0));
    if (result.status != pugi::status_out_of_memory) return {offset, result.description()};
    return {offset, "more elements than " + std::to_string(mostMemory >> 20) + " MB hold"};
}

XmlElement XmlDocument::root() const {
    return XmlElement(parts_->document.document_element().internal_object());
}

}  // namespace vek::formats
