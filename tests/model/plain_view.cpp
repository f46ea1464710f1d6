#include "model/plain_model.h"

#include <strings.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <sstream>

namespace plain {

namespace {

int clamped(int at, int count) {
    return std::max(0, std::min(at, count));
}

int number(const std::string& text) {
    const long value = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<int>(std::max<long>(INT_MIN, std::min<long>(INT_MAX, value)));
}

}  // namespace

View::View(Table* table) {
    internRevision();
    vdb(table);
}

Source* View::source() const {
    return base_ != nullptr ? static_cast<Source*>(base_) : table_;
}

void View::release() {
    const bool last = holders_ < 2;
    holders_ -= holders_ > 0;
    if (last && alive_) {
        vdb(nullptr);
        baseView(nullptr);
        alive_ = false;
    }
}

bool View::showsOnlyRecords() const {
    for (int row = 0; row < count_; ++row) {
        if (get_record(static_cast<unsigned>(row)) == nullptr) {
            return false;
        }
    }
    return true;
}

// --- binding

void View::vdb(Table* table) {
    if (table == table_) {
        return;
    }
    baseView(nullptr);
    clear();
    params_.clear();
    if (table_ != nullptr) {
        table_->leave(onTable_);
    }
    table_ = table;
    if (table == nullptr) {
        return;
    }
    addParamsFrom(table);
    internRevision();
    onTable_ = table->listen("recordsDeleted",
                             [this](const Notice& notice) { recordsDeletedNotify(notice); });
}

void View::baseView(View* base) {
    for (const View* below = base; below != nullptr; below = below->base_) {
        if (below == this) {
            return;
        }
    }
    if (base == base_) {
        return;
    }
    clear();
    params_.clear();
    if (base != nullptr) {
        base->hold();
    }
    if (base_ != nullptr) {
        base_->leave(onBase_);
        base_->release();
    }
    base_ = base;
    if (base == nullptr) {
        return;
    }
    addParamsFrom(base);
    onBase_ = base->listen("recordsDeleted",
                           [this](const Notice& notice) { recordsDeletedNotify(notice); });
}

void View::forgetTable() {
    table_ = nullptr;
    onTable_ = nullptr;
}

void View::setParam(const std::string& name, const std::string& value) {
    for (auto& [known, stored] : params_) {
        if (strcasecmp(known.c_str(), name.c_str()) == 0) {
            stored = value;
            return;
        }
    }
    params_.emplace_back(name, value);
}

std::string View::get_param_val(const char* name) {
    for (const auto& [known, stored] : params_) {
        if (strcasecmp(known.c_str(), name) == 0) {
            return stored;
        }
    }
    params_.emplace_back(name, "");
    return {};
}

void View::internRevision() {
    get_param_val("VEKDB");
}

void View::addParamsFrom(const Table* table) {
    for (unsigned i = 0; i < table->get_num_params(); ++i) {
        setParam(table->get_param_name(i), table->get_param_text(i));
    }
}

void View::addParamsFrom(const View* other) {
    for (const auto& [name, value] : other->params_) {
        setParam(name, value);
    }
}

unsigned View::add_param(const char* name, const char* value) {
    setParam(name, value);
    return 0;
}

// --- the index

void View::clear() {
    slots_.clear();
    count_ = 0;
}

void View::sizeIndexFor(int n) {
    if (n == 0) {
        slots_.clear();
        return;
    }
    const std::size_t wanted = static_cast<std::size_t>(std::max(n, 20));
    const std::size_t capacity = slots_.size();
    if (capacity >= wanted && capacity <= 2 * wanted) {
        return;
    }
    std::vector<Slot> fresh(capacity > 2 * wanted ? capacity / 2 : std::max(wanted, 2 * capacity));
    const auto rows = static_cast<std::size_t>(count_);
    const std::size_t kept = fresh.size() < rows ? wanted : rows;
    std::copy_n(slots_.begin(), std::min(kept, capacity), fresh.begin());
    slots_ = fresh;
}

void View::append(int row) {
    sizeIndexFor(count_ + 1);
    slots_[static_cast<std::size_t>(count_)].row = static_cast<unsigned>(row);
    ++count_;
}

void View::buildIndex() {
    count_ = 0;
    const unsigned rows = source() != nullptr ? source()->get_num_records() : 0;
    for (unsigned row = 0; row < rows; ++row) {
        append(static_cast<int>(row));
    }
}

int View::findViewIndexForBaseRow(unsigned long row) const {
    for (int i = 0; i < count_; ++i) {
        if (slots_[static_cast<std::size_t>(i)].row == row) {
            return i;
        }
    }
    return -1;
}

int View::find(const Record* record) const {
    for (int i = 0; record != nullptr && i < count_; ++i) {
        if (get_record(static_cast<unsigned>(i)) == record) {
            return i;
        }
    }
    return -1;
}

int View::dbFieldIndex(const char* name) const {
    for (unsigned i = 0; source() != nullptr && i < source()->get_num_fields(); ++i) {
        if (source()->get_fieldname(i) == name) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

// --- the record-source interface

void View::insert_records(unsigned at, int n) {
    insertBlankRecords(static_cast<int>(at), n);
}

void View::delete_records(unsigned at, int n) {
    deleteRecords(static_cast<int>(at), n);
}

unsigned View::delete_tagged_records() {
    removeTagged();
    return 0;
}

unsigned View::get_num_fields() const {
    return source() != nullptr ? source()->get_num_fields() : 0;
}

std::string View::get_fieldname(unsigned field) const {
    return source() != nullptr ? source()->get_fieldname(field) : std::string();
}

unsigned View::get_fieldsize(unsigned field) const {
    return source() != nullptr ? source()->get_fieldsize(field) : 0;
}

unsigned View::get_fieldnum(const std::string& name) const {
    return source() != nullptr ? source()->get_fieldnum(name) : 0;
}

Record* View::get_record(unsigned row) const {
    const bool inside = source() != nullptr && has(static_cast<int>(row));
    return inside ? source()->get_record(slots_[row].row) : nullptr;
}

std::string View::getField(unsigned row, unsigned field) const {
    const Record* record = get_record(row);
    return record != nullptr ? record->value(field & 0xFFFF) : std::string();
}

void View::set_sortfield(int field) {
    if (source() != nullptr) {
        source()->set_sortfield(field);
    }
}

void View::set_sortfields(int* fields) {
    if (source() != nullptr) {
        source()->set_sortfields(fields);
    }
}

void View::set_sort_offset(int offset) {
    if (source() != nullptr) {
        source()->set_sort_offset(offset);
    }
}

void View::sortPrepare(int direction, int forceNormal) {
    if (source() != nullptr) {
        source()->sortPrepare(direction, forceNormal);
    }
}

void View::sort(int direction, int forceNormal) {
    if (source() == nullptr) {
        return;
    }
    sortPrepare(direction, forceNormal);
    const View* lowest = this;
    while (lowest->base_ != nullptr) {
        lowest = lowest->base_;
    }
    if (lowest->table_ == nullptr) {
        return;
    }
    const SortOrder& order = lowest->table_->order();
    std::stable_sort(slots_.begin(), slots_.begin() + count_, [&](const Slot& a, const Slot& b) {
        const Record* x = source()->get_record(a.row);
        const Record* y = source()->get_record(b.row);
        if (x == nullptr || y == nullptr) {
            return false;
        }
        return (direction < 0 ? order.descending(*x, *y) : order.ascending(*x, *y)) < 0;
    });
}

void View::set_tag(unsigned row, int value) {
    if (has(static_cast<int>(row)) && !slots_.empty()) {
        slots_[row].tag = value != 0;
    }
}

void View::invert_tag(unsigned row) {
    if (has(static_cast<int>(row)) && !slots_.empty()) {
        slots_[row].tag ^= 1;
    }
}

unsigned View::get_tag(unsigned row) const {
    return has(static_cast<int>(row)) && !slots_.empty() ? slots_[row].tag : 0;
}

void View::set_show_tags_only(unsigned) {
    removeNonTagged();
}

void View::set_query(const std::vector<std::string>& texts) {
    if (source() != nullptr) {
        source()->set_query(texts);
    }
}

unsigned View::tag_matching_records(int) {
    return tagMatches(0);
}

unsigned View::tag_all_different(int field) {
    tagDuplicates(field);
    invertAllTags();
    return get_num_tags();
}

bool View::set_field(unsigned row, const std::string& cookie) {
    const bool inside = source() != nullptr && has(static_cast<int>(row));
    return inside && source()->set_field(slots_[row].row, cookie);
}

bool View::set_field(unsigned row, unsigned field, const char* text) {
    const bool inside = source() != nullptr && has(static_cast<int>(row));
    return inside && source()->set_field(slots_[row].row, field, text);
}

unsigned View::add_records(int n) {
    const auto before = static_cast<unsigned>(count_);
    insertBlankRecords(count_, n);
    return before;
}

unsigned View::findFirst(const char* field, const char* value, int prefixLength) {
    return source() != nullptr ? source()->findFirst(field, value, prefixLength) : 0;
}

unsigned View::match_record(int row) const {
    return source() != nullptr ? source()->match_record(row) : 0;
}

unsigned View::baseIndex(unsigned row) const {
    const bool inside = source() != nullptr && has(static_cast<int>(row));
    return inside ? source()->baseIndex(slots_[row].row) : 0;
}

bool View::get_valid() const {
    return source() != nullptr && source()->get_valid();
}

// --- tags

void View::tagAll(bool value) {
    for (int row = 0; source() != nullptr && row < count_; ++row) {
        slots_[static_cast<std::size_t>(row)].tag = value;
    }
}

void View::invertAllTags() {
    for (int row = 0; source() != nullptr && row < count_; ++row) {
        slots_[static_cast<std::size_t>(row)].tag ^= 1;
    }
}

unsigned View::countTags() const {
    unsigned tags = 0;
    for (int row = 0; source() != nullptr && row < count_; ++row) {
        tags += slots_[static_cast<std::size_t>(row)].tag;
    }
    return tags;
}

unsigned View::tagMatches(int keep) {
    unsigned count = 0;
    for (unsigned row = 0; source() != nullptr && row < get_num_records(); ++row) {
        if (source()->match_record(static_cast<int>(slots_[row].row)) != 0) {
            set_tag(row, 1);
            ++count;
        } else if (keep == 0) {
            set_tag(row, 0);
        }
    }
    return count;
}

unsigned View::tagDuplicatesOrdered(int field) {
    unsigned count = 0;
    const unsigned column = static_cast<unsigned>(field) & 0xFFFF;
    std::string group = getField(0, column);
    for (unsigned row = 1; source() != nullptr && row < get_num_records(); ++row) {
        const std::string text = getField(row, column);
        if (strcasecmp(text.c_str(), group.c_str()) == 0) {
            set_tag(row, 1);
            ++count;
        } else {
            group = text;
        }
    }
    return count;
}

unsigned View::tagDuplicates(int field) {
    View sorted(table_);
    sorted.hold();
    sorted.baseView(this);
    sorted.displayAllRecords();
    sorted.set_sortfield(field);
    sorted.sort(1, 0);
    const unsigned count = sorted.tagDuplicatesOrdered(field);
    sorted.tagBaseFromTags();
    sorted.release();
    return count;
}

void View::tagBaseFromTags() {
    for (unsigned row = 0; source() != nullptr && row < get_num_records(); ++row) {
        source()->set_tag(slots_[row].row, static_cast<int>(slots_[row].tag));
    }
}

// --- display

int View::openGap(int at, int n) {
    sizeIndexFor(count_ + n);
    const int place = clamped(at, count_);
    for (int row = count_ - 1; row >= place; --row) {
        slots_[static_cast<std::size_t>(row + n)] = slots_[static_cast<std::size_t>(row)];
    }
    count_ += n;
    return place;
}

int View::displayRecordsAt(int first, int n, int at) {
    if (source() == nullptr || n < 0) {
        return source() == nullptr ? 0 : n;
    }
    const int place = openGap(at, n);
    for (int i = 0; i < n; ++i) {
        slots_[static_cast<std::size_t>(place + i)].row = static_cast<unsigned>(first + i);
    }
    return n;
}

int View::displayMatchAt(const char* field, const char* value, int at) {
    const int row =
        source() != nullptr ? static_cast<int>(source()->findFirst(field, value, 0)) : -1;
    if (row < 0) {
        return 0;
    }
    displayRecordsAt(row, 1, at);
    return 1;
}

int View::displayRecordsAt(const std::vector<std::string>& cookies, int at) {
    int shown = 0;
    for (const std::string& cookie : cookies) {
        shown += displayMatchAt("Cookie", cookieText(cookie).c_str(), at + shown);
    }
    return shown;
}

void View::displayTaggedRecordsAt(int at) {
    if (source() == nullptr) {
        return;
    }
    const int tagged = static_cast<int>(source()->get_num_tags());
    int place = openGap(at, tagged);
    const int end = place + tagged;
    for (unsigned row = 0; row < source()->get_num_records() && place < end; ++row) {
        if (source()->get_tag(row) != 0) {
            slots_[static_cast<std::size_t>(place++)].row = row;
        }
    }
}

void View::displayAllRecords() {
    if (source() == nullptr) {
        return;
    }
    remove(0, count_);
    displayRecordsAt(0, static_cast<int>(source()->get_num_records()), 0);
}

void View::displayAllRecordsWithBaseTagStatus() {
    displayAllRecords();
    if (source() == nullptr || source()->get_fieldnum("Tag") == nothing) {
        return;
    }
    for (unsigned row = 0; row < get_num_records(); ++row) {
        set_tag(row, static_cast<int>(source()->get_tag(row)));
    }
}

void View::setupViewTagsFromVekdbTagField() {
    displayAllRecords();
    const unsigned column = source() != nullptr ? source()->get_fieldnum("Tag") : nothing;
    for (unsigned row = 0; column != nothing && row < get_num_records(); ++row) {
        set_tag(row, number(source()->getField(row, column)));
    }
}

int View::displayAllFromAt(View* other, int at) {
    if (base_ != nullptr || table_ == nullptr || other->base_ != nullptr ||
        other->table_ != table_) {
        return 0;
    }
    int shown = 0;
    for (unsigned row = 0; row < other->get_num_records(); ++row) {
        if (find(other->get_record(row)) < 0) {
            displayRecordsAt(static_cast<int>(other->baseIndex(row)), 1, at + shown);
            ++shown;
        }
    }
    return shown;
}

// --- editing

void View::insertBlankRecords(int at, int n) {
    if (source() == nullptr || n < 0) {
        return;
    }
    const int place = clamped(at, count_);
    unsigned first = 0;
    if (place < count_) {
        first = slots_[static_cast<std::size_t>(place)].row;
        source()->insert_records(first, n);
    } else {
        first = source()->get_num_records();
        source()->add_records(n);
    }
    openGap(place, n);
    for (int row = place; row < count_; ++row) {
        Slot& slot = slots_[static_cast<std::size_t>(row)];
        const bool fresh = row < place + n;
        slot.row = fresh ? first + static_cast<unsigned>(row - place)
                         : slot.row + static_cast<unsigned>(n);
    }
}

int View::consecutiveFrom(int at, int most) const {
    int length = 1;
    while (length < most && slots_[static_cast<std::size_t>(at + length)].row ==
                                slots_[static_cast<std::size_t>(at + length - 1)].row + 1) {
        ++length;
    }
    return length;
}

void View::deleteRecords(int at, int n) {
    while (at >= 0) {
        const int m = at < count_ ? std::min(n, count_ - at) : 0;
        if (m < 1 || source() == nullptr) {
            return;
        }
        const int length = consecutiveFrom(at, m);
        source()->delete_records(slots_[static_cast<std::size_t>(at)].row, length);
        if (m <= length) {
            return;
        }
        n = m - length;
    }
}

int View::deleteTagged() {
    int total = 0;
    int start = -1;
    int row = 0;
    for (; row < count_; ++row) {
        const bool tagged = get_tag(static_cast<unsigned>(row)) != 0;
        if (tagged && start < 0) {
            start = row;
        } else if (!tagged && start >= 0) {
            deleteRecords(start, row - start);
            total += row - start;
            row = start;
            start = -1;
        }
    }
    if (start >= 0) {
        const int length = row - start;
        deleteRecords(start, length);
        total += length;
    }
    return total;
}

void View::remove(int at, int n) {
    if (!has(at) || n < 0) {
        return;
    }
    const int m = n > count_ - at ? count_ - at : n;
    for (int row = at; row + m < count_; ++row) {
        slots_[static_cast<std::size_t>(row)] = slots_[static_cast<std::size_t>(row + m)];
    }
    sizeIndexFor(count_ - m);
    count_ -= m;
    std::string text;
    for (int row = at; row < at + m; ++row) {
        text += std::to_string(row) + " ";
    }
    issue({"recordsDeleted", text, {}});
}

int View::removeSome(unsigned tag) {
    int total = 0;
    int start = -1;
    for (int row = 0; row < count_; ++row) {
        const bool chosen = get_tag(static_cast<unsigned>(row)) == tag;
        if (chosen && start < 0) {
            start = row;
        } else if (!chosen && start >= 0) {
            removeRecordsFromBaseView(start, row - start);
            total += row - start;
            row = start;
            start = -1;
        }
    }
    if (start >= 0) {
        const int length = count_ - start;
        removeRecordsFromBaseView(start, length);
        total += length;
    }
    return total;
}

void View::removeRecordsFromBaseView(int at, int n) {
    while (at >= 0) {
        const int m = at < count_ ? std::min(n, count_ - at) : 0;
        if (m < 1) {
            return;
        }
        if (base_ == nullptr) {
            if (table_ != nullptr) {
                remove(at, m);
            }
            return;
        }
        const int length = consecutiveFrom(at, m);
        base_->removeRecordsFromBaseView(static_cast<int>(slots_[static_cast<std::size_t>(at)].row),
                                         length);
        if (m <= length) {
            return;
        }
        n = m - length;
    }
}

void View::recordsDeletedNotify(const Notice& notice) {
    std::istringstream tokens(notice.text);
    std::string report;
    unsigned handled = 0;
    int removed = 0;
    for (std::string token; std::getline(tokens, token, ' ');) {
        if (token.empty()) {
            continue;
        }
        const unsigned target = static_cast<unsigned>(number(token)) - handled;
        for (int i = 0; i < count_; ++i) {
            Slot& slot = slots_[static_cast<std::size_t>(i)];
            if (slot.row > target) {
                --slot.row;
            } else if (slot.row == target) {
                remove(i, 1);
                report += std::to_string(static_cast<int>(handled) + i - 1) + " ";
                --i;
                ++removed;
            }
        }
        ++handled;
    }
    if (removed > 0) {
        issue({"recordsDeleted", report, {}});
        issue({"recordsChanged", "", {}});
    }
}

// --- copies

void View::copyInto(View& fresh) {
    if (base_ != nullptr) {
        fresh.baseView(base_);
        fresh.displayAllRecords();
    } else {
        fresh.displayAllFromAt(this, 0);
        fresh.addParamsFrom(table_);
    }
    for (unsigned row = 0; row < get_num_records(); ++row) {
        fresh.set_tag(row, static_cast<int>(get_tag(row)));
    }
}

void View::tagSubviewInto(View& fresh) {
    fresh.baseView(this);
    fresh.displayTaggedRecordsAt(0);
}

void View::copyOverNewTableInto(View& fresh) {
    for (unsigned row = 0; row < get_num_records(); ++row) {
        if (get_record(row) != nullptr) {
            fresh.displayRecordsAt(static_cast<int>(baseIndex(row)), 1, static_cast<int>(row));
        }
    }
    fresh.addParamsFrom(this);
    for (unsigned row = 0; row < get_num_records(); ++row) {
        fresh.set_tag(row, static_cast<int>(get_tag(row)));
    }
}

void View::convertInto(Table& fresh) {
    fresh.add_records(count_);
    for (unsigned row = 0; row < get_num_records(); ++row) {
        fresh.copy_record(row, get_record(row));
    }
}

}  // namespace plain
