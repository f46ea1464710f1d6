#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include <vekdb/field_types.h>
#include <vekdb/host/lightweight_string.h>
#include "host/names.h"

/// The columns of a table: names, types, the index of names and the special-label flags.
///
/// The count stands beside the lists on purpose: after a damaged header it says how many
/// columns the file announced, though none of them has a name or type. Names stay in the index
/// when a column is renamed; only removing a column rebuilds it.
class ColumnList {
public:
    using Name = LightweightString<char>;
    static constexpr unsigned none = 0xFFFFFFFF;
    static constexpr unsigned most = 0xFFFF;

    unsigned count() const { return count_; }
    void setCount(unsigned count) { count_ = count; }
    /// Gives every column counted a place for its name and type.
    void makePlaces();

    /// The name, null when the column has none or is out of range.
    const Name& name(unsigned column) const;
    DBFieldTypes::eType type(unsigned column) const;
    bool isSpecial(unsigned column) const { return column < special_.size() && special_[column]; }

    unsigned find(std::string_view name) const;

    /// False when the column is out of range. A null name leaves the index alone.
    bool setName(unsigned column, Name name);
    bool setType(unsigned column, DBFieldTypes::eType type);
    /// Works the special-label flag of every column out anew.
    void flagSpecialLabels();
    bool isSpecialName(unsigned column) const;
    /// Appends a column as it is described.
    void append(const DBFieldDesc& field);
    void remove(unsigned column);

    /// Names, types and the index of another table; its count too.
    void copyFrom(const ColumnList& other);
    void clear();

private:
    using Index = std::unordered_map<Name, unsigned, NameHash, NameEqual>;

    unsigned findByScan(std::string_view name) const;

    unsigned count_ = 0;
    std::vector<Name> names_;
    std::vector<DBFieldTypes::eType> types_;
    Index index_;
    std::vector<bool> special_;
};
