#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "formats/input/opening.h"

/// Zip archives in memory. zip_archive.cpp is the only place that knows the library for them;
/// where the program is built without it, every archive is refused.
namespace vek::formats {

/// An archive that is read. Each entry is unpacked on its way, piece by piece.
class ZipArchive {
public:
    /// The bytes outlive this. A Failure with `unreadable` for what is no archive, or holds two
    /// entries of one name.
    ZipArchive(std::string_view bytes, const std::string& name, const Opening& opening);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    bool has(const std::string& entry) const;

    using Receiver = std::function<void(std::string_view piece)>;
    /// A Failure with `unreadable` where the entry is not there, not whole or encrypted, and for
    /// more than mostUnpacked of the archive's bytes in all entries together.
    void read(const std::string& entry, const Receiver& receiver);
    /// Bytes that were unpacked so far.
    std::size_t unpacked() const { return unpacked_; }
    /// How many may be.
    std::size_t most() const { return most_; }

private:
    struct Parts;

    std::unique_ptr<Parts> parts_;
    std::string name_;
    [[maybe_unused]] std::size_t most_ = 0;
    [[maybe_unused]] const Terms* terms_ = &ownTerms;
    std::size_t unpacked_ = 0;
};

/// An archive that is made. The same entries make the same bytes, whenever that is.
class ZipWriter {
public:
    explicit ZipWriter(const std::string& name);
    ~ZipWriter();
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

    /// Ends the entry before it.
    void begin(const std::string& entry);
    void write(std::string_view piece);
    /// The whole archive; nothing can be written any more.
    std::string finish();

private:
    struct Parts;

    std::unique_ptr<Parts> parts_;
};

}  // namespace vek::formats
