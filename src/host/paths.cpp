#include <vekdb/host/paths.h>

#include <vekdb/host/text_util.h>
#include "host/posix/file_io.h"

bool fileExists(const LightweightString<wchar_t>& path) {
    LightweightString<char> bytes;
    return pathToUTF8(path, bytes) && FileIO::isThere(bytes.c_str());
}

LightweightString<wchar_t> stripPathAndExt(const LightweightString<wchar_t>& path) {
    std::wstring_view name = path.view();
    if (const std::size_t slash = name.find_last_of(L"/\\"); slash != name.npos) {
        name.remove_prefix(slash + 1);
    }
    const std::size_t dot = name.rfind(L'.');
    const bool hasExtension = dot != name.npos && dot != 0;
    return LightweightString<wchar_t>(hasExtension ? name.substr(0, dot) : name);
}
