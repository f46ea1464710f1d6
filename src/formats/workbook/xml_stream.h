#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

/// XML that is told while it arrives, so that no tree of it is held. xml_stream.cpp is the only
/// place that knows the library for it; where the program is built without it, every text is
/// refused.
namespace vek::formats {

/// Of an element; names and values live as long as the call that they are handed to.
class XmlAttributes {
public:
    explicit XmlAttributes(const char** pairs) : pairs_(pairs) {}
    /// By the name without its prefix; "" where there is none.
    std::string_view operator[](std::string_view name) const;

private:
    [[maybe_unused]] const char** pairs_;
};

/// Names come without their prefixes.
class XmlReceiver {
public:
    virtual ~XmlReceiver() = default;
    virtual void begin(std::string_view name, const XmlAttributes& attributes) = 0;
    virtual void end(std::string_view name) = 0;
    /// A piece of the characters of an element.
    virtual void text(std::string_view piece) = 0;
};

class XmlStream {
public:
    /// The receiver outlives this, and may throw. `place` names the text in messages.
    XmlStream(XmlReceiver& receiver, const std::string& place);
    ~XmlStream();
    XmlStream(const XmlStream&) = delete;
    XmlStream& operator=(const XmlStream&) = delete;

    /// A Failure with `unreadable` for what is not well formed, has a document type (and so
    /// perhaps entities), tags of more than 1 MB or more than 64 elements in one another.
    void take(std::string_view piece);
    void finish();

private:
    struct Parts;

    std::unique_ptr<Parts> parts_;
};

}  // namespace vek::formats
