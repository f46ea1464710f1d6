// Any bytes as a container: it answers for each of its items, and what is written of it comes back.

#include <vekdb/container/container_file.h>
#include <vekdb/host/grow_string.h>
#include <vekdb/host/text_util.h>
#include "target.h"

namespace {

using Reader = QuorContainerFile::Reader;

LightweightString<wchar_t> wide(const std::string& path) {
    return fromUTF8(LightweightString<char>(path.c_str()));
}

std::string contentsOf(const Reader& reader) {
    GrowString text;
    reader.getContents().printOn(text);
    return static_cast<const char*>(text);
}

std::string checkItems(const Reader& reader) {
    const CookieSet contents = reader.getContents();
    for (unsigned i = 0; reader.valid() && i < reader.getNumItems(); ++i) {
        const Cookie cookie = reader.getItem(i).getCookie();
        if (cookie.type != cookieTypeInvalid && !reader.contains(cookie)) {
            return "an item that it does not contain";
        }
    }
    return reader.valid() || contents.size() == 0 ? "" : "contents of what is not valid";
}

std::string writeAndCompare(const Reader& reader, const std::string& path) {
    DBFieldDesc schema[] = {{"Cookie", DBFieldTypes::text}, {"", DBFieldTypes::none}};
    QuorContainerFile::Writer writer(schema);
    writer.setName("Bin");
    writer.setPermanent(reader.isPermanent());
    const CookieSet contents = reader.getContents();
    for (int i = 0; i < static_cast<int>(contents.size()); ++i) {
        writer.addItem(contents[i]);
    }
    writer.save(wide(path));
    const Reader again(wide(path), false);
    if (!again.valid() || again.isPermanent() != reader.isPermanent()) return "another container";
    return contentsOf(again) == contentsOf(reader) || reader.contains(Cookie()) ? ""
                                                                                : "other contents";
}

std::string check(const std::string& path) {
    const Reader reader(wide(path), false);
    const Reader header(wide(path), true);
    if (header.getNumItems() > 0) return "items of a header";
    const std::string wrong = checkItems(reader);
    return wrong.empty() && reader.valid() ? writeAndCompare(reader, path + ".saved") : wrong;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::require(check(
        fuzz::fileWith("0123456789abcdef0123456789abcdef000042.rak", fuzz::textOf(data, size))));
    return 0;
}
