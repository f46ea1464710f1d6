#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <vekdb/record.h>

class LineStore;
struct LineSlices;

/// Copies values for records to stand on: many rows share a block of text, and no value gets
/// memory of its own. A block lives as long as the last record that stands on it.
class ValueCopies {
public:
    ValueCopies() = default;
    ~ValueCopies() { letGo(); }
    ValueCopies(const ValueCopies&) = delete;
    ValueCopies& operator=(const ValueCopies&) = delete;

    /// Makes these the record's values, and their count its own. They may be the record's values
    /// of before. Marks nothing changed.
    void give(dbrecord& record, const std::string_view* values, unsigned count);
    /// The same with values of a record that stands on slices, by their numbers there: the record
    /// gets as many as are picked, each at most once, those that are not stored empty. False, and
    /// nothing done, where the other keeps strings or has too long a line.
    bool givePicked(dbrecord& record, const dbrecord& from, const unsigned* picked, unsigned count);

private:
    void giveTogether(dbrecord& record, const std::string_view* values, unsigned count,
                      std::size_t bytes);
    void pick(dbrecord& record, std::string_view line, const LineSlices& slices, unsigned stored,
              const unsigned* picked, unsigned count);
    void open(std::size_t bytes);
    std::size_t slicesFor(std::size_t bytes) const;
    void adopt(LineSlices* slices, unsigned count, dbrecord& record);
    void letGo() noexcept;

    LineStore* lines_ = nullptr;
    std::uint32_t spareReferences_ = 0;
    char* at_ = nullptr;
    char* end_ = nullptr;
    std::size_t nextBlock_ = std::size_t{64} << 10;  // bytes; doubles
    // Of all that were given together: what the slices of a block will come to.
    std::size_t textBytes_ = 0;
    std::size_t sliceBytes_ = 0;
};
