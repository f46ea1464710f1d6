#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

/// A name with its value.
struct VEKDB_PUBLIC AssocListEntry {
    LightweightString<char> name;   ///< in the case in which it first came
    LightweightString<char> value;  ///< the null string until it is set
};

/// What stands behind an AssocList: entries in the order in which their names
/// first came, at most one a name. Entries stay where they are until the list
/// goes, so a slot may be kept while others are added.
class VEKDB_PUBLIC AssocListRep {
public:
    /// Names that differ only in case are one name when ignoreCase is true.
    explicit AssocListRep(bool ignoreCase) noexcept : ignoreCase_(ignoreCase) {}
    AssocListRep(const AssocListRep& other);
    AssocListRep(AssocListRep&& other) noexcept : AssocListRep(other.ignoreCase_) { swap(other); }
    AssocListRep& operator=(const AssocListRep& other);
    AssocListRep& operator=(AssocListRep&& other) noexcept;
    ~AssocListRep();

    /// Each gets the other's entries and the other's way with case; slots stay valid.
    void swap(AssocListRep& other) noexcept;

    /// The value slot of the name, made (null) when there is none. The name keeps
    /// the case it first came in.
    LightweightString<char>& slot(const LightweightString<char>& name);

    /// Null when there is no such name.
    const LightweightString<char>* find(const LightweightString<char>& name) const;

    /// How many names there are.
    unsigned size() const noexcept { return size_; }

private:
    friend class AssocListIter;

    struct Node {
        AssocListEntry entry;
        Node* next;
    };

    Node* nodeOf(const LightweightString<char>& name) const;
    Node* append(const AssocListEntry& entry);

    Node* first_ = nullptr;
    Node* last_ = nullptr;
    unsigned size_ = 0;
    bool ignoreCase_;
};

/// Parameters by name, in the order of their first entry; the names ignore case.
/// A value: a copy has slots of its own.
class VEKDB_PUBLIC AssocList {
public:
    /// The value slot of the name, made (null) when there is none; it lives as long
    /// as the list.
    LightweightString<char>& operator[](const LightweightString<char>& name) {
        return rep_.slot(name);
    }

    /// Null when there is no such name; never makes an entry.
    const LightweightString<char>* find(const LightweightString<char>& name) const {
        return rep_.find(name);
    }

    /// How many names there are, whether there is none, and taking all away.
    unsigned size() const noexcept { return rep_.size(); }
    bool empty() const noexcept { return size() == 0; }
    void clear() noexcept { rep_ = AssocListRep(true); }

private:
    friend class AssocListIter;

    AssocListRep rep_{true};
};

/// Walks the entries of a list in their order:
///     for (AssocListIter it(list); it; ++it) use((*it).name);
/// An entry added on the way is met; the iterator must not outlive the list.
class VEKDB_PUBLIC AssocListIter {
public:
    /// Stands on the first entry.
    explicit AssocListIter(const AssocList& list) noexcept : node_(list.rep_.first_) {}

    /// Whether it stands on an entry.
    explicit operator bool() const noexcept { return node_ != nullptr; }

    /// Require that the end is not reached.
    const AssocListEntry& operator*() const noexcept { return node_->entry; }
    const AssocListEntry* operator->() const noexcept { return &node_->entry; }

    /// Goes to the next entry. Behind the last one it stays.
    AssocListIter& operator++() noexcept {
        node_ = node_ != nullptr ? node_->next : nullptr;
        return *this;
    }

private:
    const AssocListRep::Node* node_;
};
