#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include <vekdb/host/keyed_hash.h>

namespace vek::formats {

/// Names, each once, in the order in which they came first.
class NameList {
public:
    std::size_t place(std::string_view name) {
        auto known = places_.find(name);
        if (known != places_.end()) return known->second;
        const std::string& added = names_.emplace_back(name);
        places_.emplace(added, names_.size() - 1);
        return names_.size() - 1;
    }
    bool contains(std::string_view name) const { return places_.contains(name); }
    std::size_t size() const { return names_.size(); }
    const std::string& operator[](std::size_t place) const { return names_[place]; }
    auto begin() const { return names_.begin(); }
    auto end() const { return names_.end(); }

private:
    std::deque<std::string> names_;  // stay where they are
    std::unordered_map<std::string_view, std::size_t, Quor::KeyedHash> places_;
};

}  // namespace vek::formats
