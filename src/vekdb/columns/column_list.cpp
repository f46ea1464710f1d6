#include "vekdb/columns/column_list.h"

#include <utility>

#include "vekdb/columns/special_labels.h"

void ColumnList::makePlaces() {
    names_.resize(count_);
    types_.resize(count_);
}

const ColumnList::Name& ColumnList::name(unsigned column) const {
    static const Name nothing;
    return column < names_.size() ? names_[column] : nothing;
}

DBFieldTypes::eType ColumnList::type(unsigned column) const {
    return column < types_.size() ? types_[column] : DBFieldTypes::none;
}

unsigned ColumnList::find(std::string_view name) const {
    if (count_ == 0 || name.empty()) return none;
    if (index_.empty()) return findByScan(name);
    auto found = index_.find(name);
    return found == index_.end() ? none : found->second;
}

unsigned ColumnList::findByScan(std::string_view name) const {
    for (unsigned i = 0; i < names_.size(); ++i) {
        if (NameEqual::same(name, names_[i].view())) return i;
    }
    return none;
}

bool ColumnList::setName(unsigned column, Name name) {
    if (column >= count_ || column >= names_.size()) return false;
    if (!name.empty()) index_[name] = column;
    names_[column] = std::move(name);
    return true;
}

bool ColumnList::setType(unsigned column, DBFieldTypes::eType type) {
    if (column >= count_ || column >= types_.size()) return false;
    types_[column] = type;
    return true;
}

bool ColumnList::isSpecialName(unsigned column) const {
    return specialLabelPair(name(column).view()) != nullptr;
}

void ColumnList::flagSpecialLabels() {
    special_.clear();
    for (unsigned i = 0; i < count_; ++i) {
        special_.push_back(isSpecialName(i));
    }
}

// What may lack memory comes first, so that a column is added wholly or not at all.
void ColumnList::append(const DBFieldDesc& field) {
    const unsigned column = count_;
    names_.resize(column + 1);
    types_.resize(column + 1);
    // A column removed earlier left its flag behind; the new flag goes behind that.
    if (special_.size() < column) special_.resize(column, false);
    special_.reserve(special_.size() + 1);
    if (!field.name.empty()) index_[field.name] = column;

    names_[column] = field.name;
    types_[column] = field.type;
    special_.push_back(isSpecialName(column));
    ++count_;
}

void ColumnList::remove(unsigned column) {
    Index index;
    for (unsigned i = 0; i < names_.size(); ++i) {
        if (i != column) index.emplace(names_[i], i < column ? i : i - 1);
    }
    index_.swap(index);
    if (column < names_.size()) names_.erase(names_.begin() + column);
    if (column < types_.size()) types_.erase(types_.begin() + column);
    --count_;
}

void ColumnList::copyFrom(const ColumnList& other) {
    if (this == &other) return;
    names_ = other.names_;
    types_ = other.types_;
    index_ = other.index_;
    count_ = other.count_;
}

void ColumnList::clear() {
    names_.clear();
    types_.clear();
    index_.clear();
    special_.clear();
    count_ = 0;
}
