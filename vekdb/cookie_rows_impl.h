#pragma once

#include <unordered_map>

#include "host/cookie.h"

/// The row of each identity, by UUID alone: what else a cookie carries does not matter here.
class CookieRows {
public:
    static constexpr unsigned none = 0xFFFFFFFF;

    bool empty() const { return rows_.empty(); }
    unsigned find(const Quor::UUID& id) const {
        auto found = rows_.find(id);
        return found == rows_.end() ? none : found->second;
    }
    /// Enters a row; one that has the identity already keeps it.
    void enter(const Quor::UUID& id, unsigned row) { rows_.emplace(id, row); }
    void replace(const Quor::UUID& id, unsigned row) { rows_[id] = row; }
    void reserve(unsigned rows) { rows_.reserve(rows); }
    void clear() { rows_.clear(); }

private:
    struct Hash {
        std::size_t operator()(const Quor::UUID& id) const { return id.hashValue(); }
    };

    std::unordered_map<Quor::UUID, unsigned, Hash> rows_;
};
