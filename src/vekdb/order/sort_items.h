#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

/// Decides between rows, by their indices, whose short keys are the same.
class iTieBreak {
public:
    virtual int decide(std::size_t a, std::size_t b) const = 0;

protected:
    ~iTieBreak() = default;
};

/// What a sort moves about in place of rows: a short key above, the row's index in the lowest
/// bits.
using SortItem = std::uint64_t;

/// The items of a sort, made in the order of their indices.
class SortItems {
public:
    static constexpr unsigned bits = 64;

    explicit SortItems(std::size_t n);

    /// The bits that the indices leave for keys.
    unsigned keyRoom() const { return bits - indexBits_; }
    void set(std::size_t index, SortItem key) { items_[index] = key << indexBits_ | index; }
    /// The index that has come to the place.
    std::size_t operator[](std::size_t place) const { return items_[place] & indices(); }

    /// Sorts by keys of so many bits. Where they are the same the ties are decided; without
    /// `ties` the indices decide.
    void sort(unsigned keyBits, const iTieBreak* ties);

private:
    using Items = std::unique_ptr<SortItem[]>;

    SortItem indices() const { return (SortItem{1} << indexBits_) - 1; }
    void deal(Items& spare, unsigned shift, unsigned digitBits);
    void sortTies(Items& spare, const iTieBreak& ties);

    std::size_t n_;
    unsigned indexBits_;
    Items items_;
};
