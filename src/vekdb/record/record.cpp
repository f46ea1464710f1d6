#include <vekdb/record.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <vekdb/host/text_util.h>
#include "host/decimal_text.h"
#include "vekdb/bytes/line_bytes.h"
#include "vekdb/record/record_access.h"
#include "vekdb/record/record_strings.h"

namespace {

using String = LightweightString<char>;

constexpr unsigned formatBuffer = 256;

const String& emptyString() {
    static const String empty;
    return empty;
}

std::string_view skipLeadingSpace(std::string_view text) {
    while (!text.empty() && isAsciiSpace(text.front())) text.remove_prefix(1);
    return text;
}

}  // namespace

dbrecord::dbrecord(unsigned short count) : count_(count) {}

dbrecord::dbrecord(const dbrecord& other) : count_(0) {
    share(other);
}

dbrecord::~dbrecord() {
    release();
}

void dbrecord::share(const dbrecord& other) {
    if (other.storage_ == Storage::slices) {
        other.values_.slices->share();
        values_.slices = other.values_.slices;
    } else if (other.values_.strings != nullptr) {
        values_.strings = RecordStrings::copy(*other.values_.strings, other.stored_);
    }
    storage_ = other.storage_;
    count_ = other.count_;
    stored_ = other.stored_;
}

void dbrecord::release() {
    if (storage_ == Storage::slices) {
        values_.slices->store->release();
    } else if (values_.strings != nullptr) {
        RecordStrings::destroy(values_.strings);
    }
    values_.strings = nullptr;
    storage_ = Storage::strings;
    stored_ = 0;
    isKeyed_ = false;
}

dbrecord& dbrecord::operator=(const dbrecord& other) {
    dbrecord source(other);
    resize(0);
    resize(source.count_);
    for (unsigned i = 0; i < count_; ++i) {
        set_field(static_cast<int>(i), source.get_field(static_cast<unsigned short>(i)));
    }
    return *this;
}

void dbrecord::clear() {
    release();
}

void dbrecord::markChanged() {
    changed_ = true;
    if (owner_ != nullptr) owner_->recordChanged();
}

void dbrecord::markRead() {
    changed_ = true;
    if (owner_ != nullptr) owner_->recordRead();
}

// The record's strings with room for `atLeast` values. Room doubles, so that a row which is
// filled from left to right is not copied once a column.
RecordStrings& dbrecord::ownStrings(unsigned atLeast) const {
    if (storage_ == Storage::slices) {
        values_.strings = RecordStrings::over(values_.slices, stored_, atLeast);
        storage_ = Storage::strings;
    } else if (values_.strings == nullptr) {
        values_.strings = RecordStrings::make(std::max(atLeast, std::min<unsigned>(count_, 4)));
    } else if (values_.strings->room < atLeast) {
        unsigned room = std::min(std::max(atLeast, 2u * values_.strings->room), 0xFFFFu);
        values_.strings = RecordStrings::grown(values_.strings, room);
    }
    return *values_.strings;
}

void dbrecord::store(unsigned index, String value) {
    if (index >= stored_ && value.empty()) return;
    isKeyed_ = false;
    RecordStrings& own = ownStrings(index + 1);
    own.set(index, std::move(value));
    if (index >= stored_) stored_ = static_cast<unsigned short>(index + 1);
}

// Where no other record reads it, a value of the same length takes the old one's place in the
// text itself. It must stand there as it would be read: no blank begins it.
bool dbrecord::overwrite(unsigned index, std::string_view value) {
    if (storage_ != Storage::slices || index >= stored_ || values_.slices->isShared()) return false;
    if (values_.slices->view(index).size() != value.size()) return false;
    if (LineBytes::writableRun(value.data(), value.size()) != value.size()) return false;
    if (value.starts_with(' ')) return false;
    isKeyed_ = false;
    values_.slices->overwrite(index, value);
    return true;
}

bool dbrecord::storeText(int index, std::string_view text, bool trim) {
    if (index < 0 || index >= count_) return false;
    if (trim) text = skipLeadingSpace(text);
    const auto at = static_cast<unsigned>(index);
    if (fieldView(at) != text && !overwrite(at, text) && !RecordAccess::patch(*this, at, text)) {
        store(at, String(text));
    }
    markChanged();
    return true;
}

bool dbrecord::set_field(int index, const char* text, bool trim) {
    return storeText(index, text != nullptr ? text : "", trim);
}

// A view of nothing has no place in memory, which copying asks for.
bool dbrecord::set_field(int index, std::string_view text, bool trim) {
    if (text.empty()) text = "";
    return text.find('\0') == text.npos && storeText(index, text, trim);
}

bool dbrecord::set_field(int index, int value) {
    return storeText(index, DecimalText(value).view(), false);
}

bool dbrecord::set_field(int index, unsigned int value) {
    return storeText(index, DecimalText(value).view(), false);
}

bool dbrecord::set_field(int index, long value) {
    return storeText(index, DecimalText(value).view(), false);
}

bool dbrecord::set_field(int index, unsigned long value) {
    return storeText(index, DecimalText(value).view(), false);
}

bool dbrecord::set_field(int index, long long value) {
    return storeText(index, DecimalText(value).view(), false);
}

bool dbrecord::set_field(int index, unsigned long long value) {
    return storeText(index, DecimalText(value).view(), false);
}

bool dbrecord::set_field(int index, double value) {
    return set_field(index, StringFromDouble(value).substr(0, formatBuffer - 1).c_str());
}

bool dbrecord::set_field(int index, bool value) {
    return set_field(index, value ? "t" : "f");
}

bool dbrecord::setField(unsigned short index, String value) {
    if (index >= count_) return false;
    if (fieldView(index) == value.view()) return true;
    store(index, std::move(value));
    markChanged();
    return true;
}

std::string_view dbrecord::fieldView(unsigned index) const {
    return RecordAccess::view(*this, index);
}

void dbrecord::fieldViews(std::string_view* values, unsigned count) const {
    const unsigned stored = std::min<unsigned>(count, stored_);
    if (storage_ == Storage::slices) {
        values_.slices->views(values, stored);
    } else {
        for (unsigned i = 0; i < stored; ++i) values[i] = values_.strings->view(i);
    }
    std::fill(values + stored, values + count, std::string_view("", 0));
}

const char* dbrecord::get_field(unsigned short index) const {
    if (index >= count_) return nullptr;
    std::string_view value = fieldView(index);
    return value.empty() ? "" : value.data();
}

const String& dbrecord::getField(unsigned short index) const {
    if (index >= stored_ || fieldView(index).empty()) return emptyString();
    return ownStrings(stored_).string(index);
}

bool dbrecord::in_field(int index, char* destination, int length) const {
    if (index < 0 || index >= count_ || destination == nullptr || length < 0) return false;
    std::string_view value = fieldView(static_cast<unsigned>(index));
    if (value.empty()) {
        destination[0] = '\0';
        return true;
    }
    std::strncpy(destination, value.data(), static_cast<std::size_t>(length));
    destination[length] = '\0';
    return true;
}

bool dbrecord::is_blank() const {
    for (unsigned i = 0; i < stored_; ++i) {
        if (!fieldView(i).empty()) return false;
    }
    return true;
}

void dbrecord::resize(unsigned count) {
    isKeyed_ = false;
    if (count == 0) release();
    if (count < stored_) {
        if (storage_ == Storage::strings) values_.strings->cut(count);
        stored_ = static_cast<unsigned short>(count);
    }
    count_ = static_cast<unsigned short>(count);
}

void dbrecord::removeField(unsigned short index) {
    if (index >= count_) return;
    isKeyed_ = false;
    if (index + 1 == stored_) {
        unsigned count = count_ - 1u;
        resize(index);
        count_ = static_cast<unsigned short>(count);
        return;
    }
    if (index < stored_) {
        prepareRemoval(index);
        values_.strings->erase(index, stored_);
        --stored_;
    }
    --count_;
}

// Takes the memory that removing a value needs; the removal itself cannot fail afterwards.
void dbrecord::prepareRemoval(unsigned index) {
    if (index + 1 >= stored_) return;
    if (storage_ == Storage::slices) {
        values_.strings = RecordStrings::standing(values_.slices, stored_);
        storage_ = Storage::strings;
    }
    if (!values_.strings->mayLeaveOut()) ownStrings(stored_).makeStrings(index + 1, stored_);
}

void dbrecord::resizeRecord(int count, const int* widths, bool) {
    if (count < 0 || count > 0xFFFF || widths == nullptr) return;
    resize(static_cast<unsigned>(count));
}

void dbrecord::resizeField(int, int) {}

void RecordAccess::exchange(dbrecord& a, dbrecord& b) noexcept {
    std::swap(a.values_, b.values_);
    std::swap(a.storage_, b.storage_);
    std::swap(a.count_, b.count_);
    std::swap(a.stored_, b.stored_);
    a.isKeyed_ = b.isKeyed_ = false;
}

bool RecordAccess::patch(dbrecord& record, unsigned index, std::string_view value) {
    if (index >= record.stored_ || value.size() > RecordStrings::longestPatch) return false;
    if (record.storage_ == dbrecord::Storage::strings) {
        if (!record.values_.strings->patch(index, value)) return false;
    } else {
        record.values_.strings =
            RecordStrings::patched(record.values_.slices, record.stored_, index, value);
        record.storage_ = dbrecord::Storage::strings;
    }
    record.isKeyed_ = false;
    return true;
}

void RecordAccess::append(dbrecord& record, std::string_view value) {
    if (record.count_ == 0xFFFF) return;
    ++record.count_;
    record.store(record.count_ - 1u, String(value));
}

void RecordAccess::place(dbrecord& record, unsigned index, String value) {
    record.store(index, std::move(value));
}
