#pragma once

#include <cstddef>
#include <vector>

#include <vekdb/record.h>

class FillingBlock;

/// The memory of a table's records, taken in slabs: a row costs its bytes and no more, and rows
/// that were made together stand together. Destroys what is left with itself.
class RecordPool {
public:
    RecordPool() = default;
    ~RecordPool() { releaseSlabs(); }
    RecordPool(const RecordPool&) = delete;
    RecordPool& operator=(const RecordPool&) = delete;

    dbrecord* create(unsigned short count);
    dbrecord* create(const dbrecord& other);
    void destroy(dbrecord* record) noexcept;
    /// Destroys a record whose address is kept elsewhere: no other record comes to stand there
    /// before `reuseRetired`.
    void retire(dbrecord* record) noexcept;
    /// The addresses of the records retired, in ascending order.
    std::vector<const dbrecord*> retired() const;
    void reuseRetired() noexcept;
    /// About so many more records are to come; the next slab holds them, if one can.
    void expect(std::size_t records) noexcept;
    /// Gives the memory back; every record has been destroyed before.
    void releaseSlabs() noexcept;

private:
    union Place;

    static constexpr std::size_t firstSlab = 32;

    void* take();
    void addSlab();
    static void put(void* place, Place*& list) noexcept;
    static Place* next(Place* place) noexcept;

    FillingBlock* slabs_ = nullptr;
    Place* unused_ = nullptr;  // places of destroyed records
    Place* retired_ = nullptr;
    char* fresh_ = nullptr;
    char* end_ = nullptr;
    std::size_t nextSlab_ = firstSlab;  // records; doubles
};
