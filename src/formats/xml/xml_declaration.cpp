#include "formats/xml/xml_declaration.h"

#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"

namespace vek::formats {

std::string_view declaredEncoding(std::string_view document) {
    if (!document.starts_with("<?xml")) return {};
    std::string_view rest = document.substr(0, document.find("?>"));
    constexpr std::string_view name = "encoding";
    const std::size_t at = rest.find(name);
    if (at == rest.npos) return {};
    rest = trimmed(rest.substr(at + name.size()));
    if (!rest.starts_with('=')) return {};
    rest = trimmed(rest.substr(1));
    const bool isQuoted = rest.starts_with('"') || rest.starts_with('\'');
    const std::size_t end = isQuoted ? rest.find(rest.front(), 1) : rest.npos;
    return end == rest.npos ? std::string_view() : rest.substr(1, end - 1);
}

}  // namespace vek::formats
