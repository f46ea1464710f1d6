#include "formats/workbook/xml_stream.h"

#include <expat.h>

#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr std::size_t deepest = 64;
constexpr std::size_t longestTag = std::size_t{1} << 20;

std::string_view withoutPrefix(std::string_view name) {
    return name.substr(name.find(':') + 1);
}

}  // namespace

std::string_view XmlAttributes::operator[](std::string_view name) const {
    for (const char** pair = pairs_; *pair != nullptr; pair += 2) {
        if (withoutPrefix(*pair) == name) return pair[1];
    }
    return {};
}

struct XmlStream::Parts {
    XmlReceiver& receiver;
    std::string place;
    XML_Parser parser = nullptr;
    std::size_t depth = 0;
    std::size_t taken = 0;
    std::exception_ptr thrown = nullptr;  // nothing may be thrown through the library

    ~Parts() { ::XML_ParserFree(parser); }

    [[noreturn]] void refuse(const std::string& found, const std::string& expected) const {
        const auto line = static_cast<std::size_t>(::XML_GetCurrentLineNumber(parser));
        throw Failure{unreadable, place, {line, "", found, expected, ""}};
    }

    template <class Do>
    void safely(Do act) {
        if (thrown) return;
        try {
            act();
        } catch (...) {
            thrown = std::current_exception();
            ::XML_StopParser(parser, XML_FALSE);
        }
    }

    static void XMLCALL begin(void* self, const char* name, const char** attributes) {
        auto& parts = *static_cast<Parts*>(self);
        parts.safely([&] {
            if (++parts.depth > deepest) {
                parts.refuse("more than 64 elements in one another", "a sheet");
            }
            parts.receiver.begin(withoutPrefix(name), XmlAttributes(attributes));
        });
    }

    static void XMLCALL end(void* self, const char* name) {
        auto& parts = *static_cast<Parts*>(self);
        parts.safely([&] {
            --parts.depth;
            parts.receiver.end(withoutPrefix(name));
        });
    }

    static void XMLCALL text(void* self, const char* piece, int size) {
        auto& parts = *static_cast<Parts*>(self);
        parts.safely([&] { parts.receiver.text({piece, static_cast<std::size_t>(size)}); });
    }

    static void XMLCALL documentType(void* self, const char*, const char*, const char*, int) {
        auto& parts = *static_cast<Parts*>(self);
        parts.safely([&] { parts.refuse("a document type", "a workbook, which has none"); });
    }

    void parse(std::string_view piece, bool isLast) {
        const auto size = static_cast<int>(piece.size());
        const XML_Status status = ::XML_Parse(parser, piece.data(), size, isLast);
        if (thrown) std::rethrow_exception(thrown);
        if (status != XML_STATUS_OK) {
            refuse(::XML_ErrorString(::XML_GetErrorCode(parser)), "a well-formed document");
        }
        taken += piece.size();
        const XML_Index reached = ::XML_GetCurrentByteIndex(parser);
        if (reached >= 0 && taken > static_cast<std::size_t>(reached) + longestTag) {
            refuse("a tag of more than 1 MB", "a workbook");
        }
    }
};

XmlStream::XmlStream(XmlReceiver& receiver, const std::string& place)
    : parts_(new Parts{receiver, place}) {
    parts_->parser = ::XML_ParserCreate(nullptr);
    if (parts_->parser == nullptr) throw Failure{unreadable, place + ": no memory to read it"};
    ::XML_SetUserData(parts_->parser, parts_.get());
    ::XML_SetElementHandler(parts_->parser, Parts::begin, Parts::end);
    ::XML_SetCharacterDataHandler(parts_->parser, Parts::text);
    ::XML_SetStartDoctypeDeclHandler(parts_->parser, Parts::documentType);
}

XmlStream::~XmlStream() = default;

void XmlStream::take(std::string_view piece) {
    parts_->parse(piece, false);
}

void XmlStream::finish() {
    parts_->parse({}, true);
}

}  // namespace vek::formats
