#include <vekdb/views/field_map.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <vekdb/host/text_util.h>
#include <vekdb/views/view_rep.h>

namespace {

constexpr unsigned longestEntry = 3;

// Reads as a "%d" does: blanks, a sign, digits. False when there is no number.
bool readNumber(std::string_view text, int& number) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == text.npos) {
        return false;
    }
    const std::size_t digits = start + (text[start] == '-' || text[start] == '+');
    number = parseInt(text.substr(start));
    return digits < text.size() && isAsciiDigit(text[digits]);
}

std::size_t behindEntry(std::string_view text, std::size_t position) {
    while (position < text.size() && (text[position] == '-' || isAsciiDigit(text[position]))) {
        ++position;
    }
    return position + (position < text.size() && text[position] == ' ');
}

}  // namespace

FieldMap::FieldMap(const VDBView& view) {
    setSourceDb(view);
}

FieldMap::FieldMap(vekdb& table) {
    setSourceDb(VDBView(&table));
}

FieldMap& FieldMap::operator=(const FieldMap& other) {
    FieldMap copy(other);
    *this = std::move(copy);
    return *this;
}

// Bound apart from what is there, which stays where memory ends.
void FieldMap::setSourceDb(const VDBView& view) {
    FieldMap bound(*this);
    bound.source_ = view;
    if (view) {
        bound.readFrom(view->get_param_val("V5_FIELD_MAP"));
        if (bound.names_.empty()) {
            bound.appendAllColumns();
        }
    }
    *this = std::move(bound);
}

// A sign or white space that the number reader takes and the step does not would be read for
// ever; whatever follows it can only be what was read already.
void FieldMap::readFrom(const LightweightString<char>& text) {
    const std::string_view whole = text.view();
    int number = 0;
    for (std::size_t at = 0; at < whole.size();) {
        if (!readNumber(whole.substr(at, longestEntry), number)) {
            return;
        }
        appendColumn(number);
        const std::size_t next = behindEntry(whole, at);
        if (next == at) {
            return;
        }
        at = next;
    }
}

void FieldMap::appendColumn(int number) {
    if (number != 0) {
        append(source_->get_fieldname(static_cast<unsigned>(std::abs(number) - 1)), number > 0);
    }
}

void FieldMap::appendAllColumns() {
    for (unsigned i = 0; i < source_->get_num_fields(); ++i) {
        append(source_->get_fieldname(i), true);
    }
}

bool FieldMap::has(int i) const {
    return i >= 0 && static_cast<std::size_t>(i) < names_.size();
}

int FieldMap::getFieldIdx(const LightweightString<char>& name) const {
    const auto found = std::find_if(names_.begin(), names_.end(), [&](const auto& known) {
        return LightweightString<char>::icompare(known.c_str(), name.c_str()) == 0;
    });
    return found != names_.end() ? static_cast<int>(found - names_.begin()) : -1;
}

bool FieldMap::containsField(const LightweightString<char>& name) const {
    return getFieldIdx(name) != -1;
}

bool FieldMap::isVisible(const LightweightString<char>& name) const {
    return isVisible(getFieldIdx(name));
}

bool FieldMap::isVisible(int i) const {
    return has(i) && visible_[static_cast<std::size_t>(i)];
}

LightweightString<char> FieldMap::getName(int i) const {
    return has(i) ? names_[static_cast<std::size_t>(i)] : LightweightString<char>();
}

void FieldMap::append(const LightweightString<char>& name, bool visible) {
    if (containsField(name)) {
        return;
    }
    visible_.push_back(visible);
    try {
        names_.push_back(name);
    } catch (...) {
        visible_.pop_back();
        throw;
    }
}

void FieldMap::set(int i, const LightweightString<char>& name, bool visible) {
    setName(i, name);
    setVisible(i, visible);
}

void FieldMap::setName(int i, const LightweightString<char>& name) {
    if (has(i)) {
        names_[static_cast<std::size_t>(i)] = name;
    }
}

void FieldMap::setVisible(int i, bool visible) {
    if (has(i)) {
        visible_[static_cast<std::size_t>(i)] = visible;
    }
}

void FieldMap::invertVisible(int i) {
    setVisible(i, !isVisible(i));
}

void FieldMap::swap(int i, int j) {
    if (!has(i) || !has(j)) {
        return;
    }
    const bool visible = isVisible(i);
    setVisible(i, isVisible(j));
    setVisible(j, visible);
    names_[static_cast<std::size_t>(i)].swap(names_[static_cast<std::size_t>(j)]);
}

bool FieldMap::remove(const LightweightString<char>& name) {
    const int i = getFieldIdx(name);
    if (i < 0) {
        return false;
    }
    names_.erase(names_.begin() + i);
    visible_.erase(visible_.begin() + i);
    return true;
}

void FieldMap::clear() {
    names_.clear();
    visible_.clear();
}

unsigned FieldMap::numVisible() const {
    return static_cast<unsigned>(std::count(visible_.begin(), visible_.end(), true));
}

int FieldMap::getVisibleFieldIndex(int n) const {
    for (unsigned i = 0; source_ && n >= 0 && i < size(); ++i) {
        if (visible_[i] && n-- == 0) {
            return static_cast<int>(columnOf(i));
        }
    }
    return -1;
}

unsigned FieldMap::columnOf(unsigned i) const {
    return source_ ? source_->get_fieldnum(names_[i]) : i;
}

LightweightString<char> FieldMap::asString() const {
    LightweightString<char> text;
    for (unsigned i = 0; i < size(); ++i) {
        text += i > 0 ? " " : "";
        text += visible_[i] ? "" : "-";
        text += columnOf(i) + 1;
    }
    return text;
}
