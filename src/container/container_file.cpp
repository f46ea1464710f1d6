#include <vekdb/container/container_file.h>

#include <climits>

#include <vekdb/host/os.h>
#include <vekdb/host/paths.h>
#include <vekdb/host/text_util.h>
#include "host/posix/replacing/fresh_file.h"

namespace {

constexpr const char* cookieColumnName = "Cookie";
constexpr unsigned char fieldUnchanged = 255;
constexpr unsigned none = 0xFFFFFFFF;

Cookie cookieOfName(const LightweightString<wchar_t>& path) {
    return Cookie(stripPathAndExt(path), false);
}

}  // namespace

LightweightString<char> QuorContainerFile::getNameParamKey() {
    return "Name";
}

LightweightString<char> QuorContainerFile::getPermanentParamKey() {
    return "Permanent";
}

Cookie QuorContainerFile::getCookieFromFilename(const LightweightString<wchar_t>& path) {
    const Cookie cookie = cookieOfName(path);
    if (path.endsWith(L"sg", false)) return convertCookie(cookie, cookieTypeM, fieldUnchanged);
    if (path.endsWith(L"rak", false)) return convertCookie(cookie, cookieTypeB, fieldUnchanged);
    return cookie;
}

using Writer = QuorContainerFile::Writer;

Writer::Writer(DBFieldDesc* schema)
    : vekdb(schema), cookieColumn_(static_cast<int>(get_fieldnum(cookieColumnName))) {}

dbrecord* Writer::addItem(const Cookie& cookie) {
    if (cookie.type == cookieTypeInvalid) return nullptr;
    const LightweightString<char> text = cookie.asString(true);
    const unsigned row = add_records(1);
    dbrecord* record = row == none ? nullptr : get_record(row);
    try {
        if (record != nullptr) record->set_field(cookieColumn_, text.c_str());
    } catch (...) {
        delete_records(row, 1);  // an item without an identity would be saved as one
        throw;
    }
    return record;
}

void Writer::setName(LightweightString<char> name) {
    setAttrib(getNameParamKey(), name);
}

void Writer::setAttrib(LightweightString<char> key, LightweightString<char> value) {
    add_param(key.c_str(), value.c_str());
}

void Writer::setPermanent(bool flag) {
    setAttrib(getPermanentParamKey(), BoolAsString(flag));
}

// That the result of save_text is not looked at is what callers rely on; see the header.
void Writer::save(const LightweightString<wchar_t>& path) {
    if (!fileExists(path)) {
        set_filename(path);
        save_text();
        return;
    }
    const LightweightString<wchar_t> temporary = path + L".tmp";
    set_filename(temporary);
    {
        const FreshFile place(temporary, path);
        save_text();
    }
    OS()->fileService()->deleteFile(path);
    OS()->fileService()->moveFile(temporary, path, false);
}

using Reader = QuorContainerFile::Reader;

Reader::Reader(LightweightString<wchar_t> path, bool headerOnly)
    : vekdb(path, headerOnly ? 0 : INT_MAX, true), cookie_(cookieOfName(path)) {}

bool Reader::valid() const {
    return get_valid() && get_fieldnum(cookieColumnName) != none;
}

LightweightString<char> Reader::getAttrib(LightweightString<char> key) const {
    if (!valid()) return nullptr;
    const unsigned slot = find_param(key.c_str());
    return slot == none ? nullptr : get_param_text(slot);
}

int Reader::getAttrib(LightweightString<char> key, int otherwise) const {
    const LightweightString<char> value = getAttrib(key);
    return value.empty() ? otherwise : parseInt(value.view());
}

double Reader::getAttrib(LightweightString<char> key, double otherwise) const {
    const LightweightString<char> value = getAttrib(key);
    return value.empty() ? otherwise : parseDouble(value.view());
}

LightweightString<char> Reader::getName() const {
    return getAttrib(getNameParamKey());
}

LightweightString<wchar_t> Reader::getNameW() const {
    return fromUTF8(getName());
}

bool Reader::isPermanent() const {
    bool flag = false;
    return BoolFromString(getAttrib(getPermanentParamKey()), flag) && flag;
}

unsigned Reader::getNumItems() const {
    return get_num_records();
}

const char* Reader::cookieText(unsigned row, unsigned column) const {
    const dbrecord* record = get_record(row);
    const char* text =
        record == nullptr ? nullptr : record->get_field(static_cast<unsigned short>(column));
    return text == nullptr ? "" : text;
}

Reader::Item Reader::getItem(unsigned i) const {
    if (!valid() || i >= get_num_records()) return Item();
    const unsigned column = get_fieldnum(cookieColumnName);
    return Item(get_record(i), Cookie(cookieText(i, column), true));
}

int Reader::getItemAttribIndex(const char* name) const {
    return valid() ? static_cast<int>(get_fieldnum(name)) : -1;
}

bool Reader::contains(const Cookie& cookie) const {
    const unsigned column = get_fieldnum(cookieColumnName);
    if (column == none) return false;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        if (Cookie(cookieText(row, column), false).compare(cookie) == 0) return true;
    }
    return false;
}

CookieSet Reader::getContents() const {
    CookieVec cookies;
    if (!valid()) return CookieSet();
    const unsigned column = get_fieldnum(cookieColumnName);
    for (unsigned row = 0; row < get_num_records(); ++row) {
        cookies.add(Cookie(cookieText(row, column), true));
    }
    return CookieSet(cookies);
}

const char* Reader::Item::cell(unsigned column) const {
    return record_ == nullptr ? nullptr : record_->get_field(static_cast<unsigned short>(column));
}

LightweightString<char> Reader::Item::getAttrib(unsigned column) const {
    return cell(column);
}

// An empty cell is there, and reads as 0: only a missing one gives the default.
int Reader::Item::getAttrib(unsigned column, int otherwise) const {
    const char* text = cell(column);
    return text == nullptr ? otherwise : parseInt(text);
}

double Reader::Item::getAttrib(unsigned column, double otherwise) const {
    const char* text = cell(column);
    return text == nullptr ? otherwise : parseDouble(text);
}
