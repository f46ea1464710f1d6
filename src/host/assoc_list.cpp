#include <vekdb/host/assoc_list.h>

#include <utility>

AssocListRep::AssocListRep(const AssocListRep& other) : AssocListRep(other.ignoreCase_) {
    for (const Node* node = other.first_; node != nullptr; node = node->next) {
        append(node->entry);
    }
}

AssocListRep& AssocListRep::operator=(const AssocListRep& other) {
    return *this = AssocListRep(other);
}

AssocListRep& AssocListRep::operator=(AssocListRep&& other) noexcept {
    AssocListRep taken(std::move(other));
    swap(taken);
    return *this;
}

AssocListRep::~AssocListRep() {
    while (first_ != nullptr) {
        delete std::exchange(first_, first_->next);
    }
}

void AssocListRep::swap(AssocListRep& other) noexcept {
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
    std::swap(size_, other.size_);
    std::swap(ignoreCase_, other.ignoreCase_);
}

AssocListRep::Node* AssocListRep::nodeOf(const LightweightString<char>& name) const {
    using Text = LightweightString<char>;
    const auto compare = ignoreCase_ ? Text::icompare : Text::compare;
    Node* node = first_;
    while (node != nullptr && compare(node->entry.name.c_str(), name.c_str()) != 0) {
        node = node->next;
    }
    return node;
}

AssocListRep::Node* AssocListRep::append(const AssocListEntry& entry) {
    Node* node = new Node{entry, nullptr};
    (last_ != nullptr ? last_->next : first_) = node;
    last_ = node;
    ++size_;
    return node;
}

LightweightString<char>& AssocListRep::slot(const LightweightString<char>& name) {
    Node* node = nodeOf(name);
    if (node == nullptr) {
        node = append(AssocListEntry{name, {}});
    }
    return node->entry.value;
}

const LightweightString<char>* AssocListRep::find(const LightweightString<char>& name) const {
    const Node* node = nodeOf(name);
    return node == nullptr ? nullptr : &node->entry.value;
}
