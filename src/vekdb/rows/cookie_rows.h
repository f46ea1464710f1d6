#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <vekdb/host/cookie.h>

/// The row of each identity, by UUID alone: what else a cookie carries does not matter here.
/// The identities stand in the slots themselves, so that finding one waits for memory once.
class CookieRows {
public:
    static constexpr unsigned none = 0xFFFFFFFF;

    bool empty() const { return count_ == 0; }
    /// The identity's row, or `none`.
    unsigned find(const Quor::UUID& id) const;
    /// Starts to fetch what `find` or `enter` of an identity will read.
    void expect(const Quor::UUID& id) const {
        if (!slots_.empty()) __builtin_prefetch(&slots_[home(id)]);
    }
    /// Enters a row; one that has the identity already keeps it.
    void enter(const Quor::UUID& id, unsigned row);
    void replace(const Quor::UUID& id, unsigned row);
    /// Takes the memory that one more identity needs.
    void expectOneMore() { reserve(count_ + 1); }
    /// Makes room for so many rows, so that entering them moves nothing.
    void reserve(std::size_t rows);
    void clear() { *this = CookieRows(); }

private:
    struct Slot {
        Quor::UUID id;
        unsigned row = none;

        bool taken() const { return row != none; }
    };

    std::size_t home(const Quor::UUID& id) const;
    /// Where the identity stands, or the free slot where it would. There is always a free one.
    std::size_t place(const Quor::UUID& id) const;
    Slot& slotFor(const Quor::UUID& id);
    void moveTo(std::size_t slotCount);

    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};
