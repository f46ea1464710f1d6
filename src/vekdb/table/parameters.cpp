#include "vekdb/table/parameters.h"

#include <cstring>
#include <new>

#include <vekdb/host/lightweight_string.h>

namespace {

char* copyOf(std::string_view text) {
    char* copy = new (std::nothrow) char[text.size() + 1];
    if (copy == nullptr) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

}  // namespace

const char* Parameters::name(unsigned slot) const {
    return slot < count_ && pairs_[slot].name != nullptr ? pairs_[slot].name : "";
}

const char* Parameters::value(unsigned slot) const {
    return slot < count_ && pairs_[slot].value != nullptr ? pairs_[slot].value : "";
}

unsigned Parameters::find(const char* wanted) const {
    if (wanted == nullptr) return none;
    for (unsigned slot = 0; slot < count_; ++slot) {
        if (LightweightString<char>::icompare(pairs_[slot].name, wanted) == 0) return slot;
    }
    return none;
}

void Parameters::append(std::string_view name, std::string_view value) {
    if (count_ == most) return;
    pairs_[count_] = {copyOf(name), copyOf(value)};
    ++count_;
}

void Parameters::replace(unsigned slot, std::string_view value) {
    char* former = pairs_[slot].value;
    pairs_[slot].value = copyOf(value);
    delete[] former;
}

void Parameters::clear() {
    for (unsigned slot = 0; slot < count_; ++slot) {
        delete[] pairs_[slot].name;
        delete[] pairs_[slot].value;
        pairs_[slot] = {nullptr, nullptr};
    }
    count_ = 0;
}
