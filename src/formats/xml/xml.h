#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// XML texts. xml.cpp is the only place that knows the XML library; where the program is built
/// without it, every text is refused.
namespace vek::formats {

/// An element of a document, or none.
class XmlElement {
public:
    XmlElement() = default;
    explicit operator bool() const { return node_ != nullptr; }

    std::string_view name() const;
    /// "" where there is none of the name.
    std::string_view attribute(const char* name) const;
    bool has(const char* name) const;
    /// The characters that stand in it first.
    std::string_view text() const;
    XmlElement child(const char* name) const;
    XmlElement firstChild() const;
    XmlElement next() const;
    /// Where its name stands in the text that was read, from the first byte on; negative where
    /// nobody knows.
    std::ptrdiff_t offset() const;

private:
    friend class XmlDocument;
    explicit XmlElement(void* node) : node_(node) {}

    void* node_ = nullptr;
};

class XmlDocument {
public:
    XmlDocument();
    ~XmlDocument();

    /// Where a text is not well formed, and what is wrong with it.
    struct Fault {
        std::size_t offset = 0;
        std::string found;
        bool isAny() const { return !found.empty(); }
    };
    /// Changes the text, in which the document stands from then on. Entities are those of XML
    /// itself; others stay as they are written (xml_entities.h replaces them). The document takes
    /// at most `mostMemory` bytes.
    Fault parse(char* text, std::size_t size, std::size_t mostMemory);
    XmlElement root() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace vek::formats
