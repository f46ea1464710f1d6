// All memory that a table takes comes from the host's allocator, and where it ends, the host's
// exception says so. What else asks the C library for memory is counted here in the process's own
// malloc, which a sanitizer would not leave to a test.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/os.h>
#include <vekdb/table.h>
#include "testing/table_files.h"
#include "testing/temp_dir.h"

#if defined(__SANITIZE_ADDRESS__)
#define VEKDB_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEKDB_SANITIZED
#endif
#endif

#if !defined(VEKDB_SANITIZED) && defined(__GLIBC__)

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

bool isWatched = false;
int insideHost = 0;
std::size_t stray = 0;     // bytes that did not come from the host's allocator
std::size_t fromHost = 0;  // bytes that did

void count(std::size_t size) {
    if (isWatched && insideHost == 0) stray += size;
}

// Blocks of the host's; that they come from malloc is nobody's business.
class HostAllocator final : public iAllocator {
public:
    HostAllocator() : before_(OS()->setAllocator(this)) {}
    ~HostAllocator() { OS()->setAllocator(before_); }

    void* allocate(std::size_t size) override { return reallocate(nullptr, size); }
    void* reallocate(void* block, std::size_t size) override {
        const Inside inside;
        void* moved = before_->reallocate(block, size);
        fromHost += size;
        return moved;
    }
    void free(void* block) override { before_->free(block); }

private:
    struct Inside {
        Inside() { ++insideHost; }
        ~Inside() { --insideHost; }
    };

    iAllocator* before_;
};

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    count(size);
    return __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size) {
    count(number * size);
    return __libc_calloc(number, size);
}

void* realloc(void* block, std::size_t size) {
    count(size);
    return __libc_realloc(block, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    count(size);
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

}  // extern "C"

namespace {

using testing_support::headerAnd;
using testing_support::joined;
using testing_support::quotedLine;
using testing_support::TempDir;

constexpr int all = 0x7FFFFFFF;

void writeLog(const TempDir& folder, int rows) {
    std::ofstream out(folder.file("log"), std::ios::binary);
    out << joined(headerAnd({"Reel", "Scene", "Description", "Notes"}, {}));
    for (int i = 0; i < rows; ++i) {
        const std::string number = std::to_string(i * 7919 % rows);
        out << quotedLine({"A" + number, number, "a description of take " + number,
                           i % 3 == 0 ? std::string(40, 'n') : ""})
            << '\n';
    }
}

unsigned loadSortAskAndSave(const TempDir& folder) {
    vekdb table(folder.widePath("log"), all, true);
    table.set_sortfield(1);
    table.sort(1, 0);
    dbrecord query(static_cast<unsigned short>(table.get_num_fields()));
    query.setField(2, "take 77");
    table.set_query(&query);
    table.tag_matching_records(0);
    table.set_filename(folder.widePath("saved"));
    return static_cast<unsigned>(table.save_text());
}

TEST(HostMemory, GivesEveryByteOfLoadingSortingAskingAndSaving) {
    const TempDir folder;
    writeLog(folder, 100000);
    const HostAllocator host;
    isWatched = true;
    const unsigned saved = loadSortAskAndSave(folder);
    isWatched = false;
    EXPECT_EQ(100000u, saved);
    EXPECT_GT(fromHost, std::size_t{8} << 20);
    EXPECT_EQ(0u, stray);
}

TEST(HostMemory, IsTheOnlyKindThatIsCounted) {
    isWatched = true;
    void* volatile block = std::malloc(1000);
    std::free(block);
    isWatched = false;
    EXPECT_EQ(1000u, stray);
    stray = 0;
}

struct Size {
    std::size_t whole = 0;
    std::size_t resident = 0;
};

Size sizeOfProcess() {
    Size size;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    const int read = std::fscanf(file, "%zu %zu", &size.whole, &size.resident);
    std::fclose(file);
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return read == 2 ? Size{size.whole * page, size.resident * page} : Size();
}

// What a loaded table makes the process larger.
std::size_t takenByLoading(const TempDir& folder, unsigned rows) {
    ::malloc_trim(0);
    const std::size_t before = sizeOfProcess().resident;
    const vekdb table(folder.widePath("log"), all, true);
    EXPECT_EQ(rows, table.get_num_records());
    return sizeOfProcess().resident - before;
}

// Of a row with so many values, besides its line.
constexpr std::size_t bytesARow(std::size_t values) {
    return 24 + (16 + 2 * values + 7) / 8 * 8 + 8;
}

TEST(HostMemory, OfALoadIsTheFilesAndAFewBytesARow) {
    constexpr std::size_t pagesNotFull = std::size_t{8} << 20;
    const TempDir folder;
    writeLog(folder, 300000);
    EXPECT_LT(takenByLoading(folder, 300000), std::filesystem::file_size(folder.file("log")) +
                                                  300000 * bytesARow(4) + pagesNotFull);
}

TEST(HostMemory, OfALoadOfTinyRowsIsAFewBytesARow) {
    constexpr std::size_t pagesNotFull = std::size_t{8} << 20;
    const TempDir folder;
    std::string rows = joined(headerAnd({"Digit"}, {}));
    for (int i = 0; i < 1000000; ++i) rows += "\"7\"\n";
    std::ofstream(folder.file("log"), std::ios::binary) << rows;
    EXPECT_LT(takenByLoading(folder, 1000000), rows.size() + 1000000 * bytesARow(1) + pagesNotFull);
}

// Whether the table was loaded with so much memory more; else the host's exception left.
bool loadsWithin(const TempDir& folder, rlim_t more) {
    // What earlier blocks left behind would be had for nothing.
    ::malloc_trim(0);
    rlimit before;
    ::getrlimit(RLIMIT_AS, &before);
    rlimit limited = before;
    limited.rlim_cur = sizeOfProcess().whole + more;
    ::setrlimit(RLIMIT_AS, &limited);
    bool isLoaded = false;
    int foreign = 0;
    try {
        const vekdb table(folder.widePath("log"), all, true);
        isLoaded = table.get_loaded_whole();
    } catch (const Quor::Exception::BadAlloc&) {
    } catch (...) {
        ++foreign;
    }
    ::setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(0, foreign) << more;
    return isLoaded;
}

TEST(HostMemory, EndsALoadWithTheHostsExceptionWhereverItEnds) {
    const TempDir folder;
    writeLog(folder, 300000);
    unsigned failed = 0;
    rlim_t more = 0;
    while (!loadsWithin(folder, more) && more < (rlim_t{1} << 30)) {
        more += rlim_t{1} << 20;
        ++failed;
    }
    EXPECT_GT(failed, 20u);
    EXPECT_LT(more, rlim_t{1} << 30);
}

}  // namespace

#endif
