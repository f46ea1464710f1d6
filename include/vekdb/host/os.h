#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include <vekdb/host/visibility.h>

template <class C>
class LightweightString;

// The services of the operating system that the library leans on, each one
// replaceable by the embedding application. A replacement is owned by whoever
// made it and must outlive every block, file call and shared object it served;
// the safe moment to put it in place is before anything of the library exists.

/// Memory. Every block of the library, strings included, is taken here.
class VEKDB_PUBLIC iAllocator {
public:
    /// Never null: throws Quor::Exception::BadAlloc instead. A request of 0
    /// bytes gives a block of its own.
    virtual void* allocate(std::size_t size) = 0;

    /// The block, moved where it had to be. reallocate(nullptr, n) is
    /// allocate(n). On BadAlloc the old block stands as it was.
    virtual void* reallocate(void* block, std::size_t newSize) = 0;

    /// Accepts null.
    virtual void free(void* block) = 0;

protected:
    ~iAllocator() = default;
};

/// Files, by wide (UTF-32) path. Every operation answers true when done; on
/// false nothing was changed.
class VEKDB_PUBLIC iFileService {
public:
    /// Removes a file's name. A folder is never removed, be it empty.
    virtual bool deleteFile(const LightweightString<wchar_t>& path) = 0;

    /// Renames a regular file; anything else is refused. An existing target is
    /// replaced when `replace` is true and refused when it is false.
    virtual bool moveFile(const LightweightString<wchar_t>& from,
                          const LightweightString<wchar_t>& to, bool replace) = 0;

protected:
    ~iFileService() = default;
};

/// Reference counts. Objects and strings are shared between threads only on the
/// strength of this service, so both directions must be atomic.
class VEKDB_PUBLIC iRefCountService {
public:
    /// Adds one.
    virtual void increment(std::uint32_t& count) noexcept = 0;

    /// Returns what remains; at 0 the caller destroys the counted object.
    virtual std::uint32_t decrement(std::uint32_t& count) noexcept = 0;

    /// Adds n counts at once.
    virtual void increaseBy(std::uint32_t& count, std::uint32_t n) noexcept {
        for (; n > 0; --n) {
            increment(count);
        }
    }

protected:
    ~iRefCountService() = default;
};

/// The process-wide set of services. Setters take null for the built-in service
/// and return the service that was in place before.
class VEKDB_PUBLIC iHostServices {
public:
    /// The library makes the only one that counts, which `OS` answers.
    constexpr iHostServices(iAllocator& allocator, iFileService& files,
                            iRefCountService& counts) noexcept
        : allocator_(&allocator), fileService_(&files), refCounts_(&counts) {}
    iHostServices(const iHostServices&) = delete;
    iHostServices& operator=(const iHostServices&) = delete;

    /// The services in place, never null: the application's, or the built-in ones.
    iAllocator* allocator() const noexcept { return allocator_; }
    iFileService* fileService() const noexcept { return fileService_; }
    iRefCountService* refCounts() const noexcept { return refCounts_; }

    /// To be called before anything of the process has taken memory, not only of the library:
    /// with the global operators replaced, a block that was taken before would come back to an
    /// allocator that did not give it.
    iAllocator* setAllocator(iAllocator* allocator) noexcept;
    /// The same for files and for counts, which have nothing to give back.
    iFileService* setFileService(iFileService* service) noexcept;
    iRefCountService* setRefCounts(iRefCountService* service) noexcept;

    /// Whether a large file is read ahead while its lines are taken apart. That is faster where a
    /// processor is free and the disk slow, but the C library serves it with threads in this
    /// process, which stay for some seconds. Off unless set; a load that has begun goes on as it
    /// did. The setter answers what was set before.
    bool readsAhead() const noexcept { return readsAhead_; }
    bool setReadsAhead(bool ahead) noexcept { return std::exchange(readsAhead_, ahead); }

private:
    iAllocator* allocator_;
    iFileService* fileService_;
    iRefCountService* refCounts_;
    bool readsAhead_ = false;
};

/// Never null, from before the first static constructor until the process ends:
/// the services are constants of the program image and are never destroyed.
VEKDB_PUBLIC iHostServices* OS() noexcept;
