#include "formats/workbook/zip_archive.h"

#include <minizip/unzip.h>
#include <minizip/zip.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_map>

#include "formats/failure.h"
#include "formats/input/limits.h"

namespace vek::formats {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 18;

// What the library takes for a file: bytes to be read, or a text that grows.
struct MemoryFile {
    std::string_view bytes;
    std::string* made = nullptr;
    std::size_t at = 0;
    bool endsEarly = false;  ///< more was to be read than there is
    bool isOutOfMemory = false;

    std::size_t size() const { return made != nullptr ? made->size() : bytes.size(); }
};

MemoryFile& fileOf(voidpf stream) {
    return *static_cast<MemoryFile*>(stream);
}

voidpf openFile(voidpf opaque, const void*, int) {
    fileOf(opaque).at = 0;
    return opaque;
}

uLong readFile(voidpf, voidpf stream, void* to, uLong size) {
    MemoryFile& file = fileOf(stream);
    const std::size_t count = std::min<std::size_t>(size, file.size() - file.at);
    const char* from = file.made != nullptr ? file.made->data() : file.bytes.data();
    std::memcpy(to, from + file.at, count);
    file.at += count;
    file.endsEarly = file.endsEarly || count < size;
    return count;
}

// No exception may go through the library.
bool makeRoom(MemoryFile& file, std::size_t size) noexcept {
    try {
        if (file.made->size() < size) file.made->resize(size);
        return true;
    } catch (const std::bad_alloc&) {
        file.isOutOfMemory = true;
        return false;
    }
}

// Where memory ends the library goes on as if all were well, and whoever called it is told: it
// leaves behind what it holds when a write fails.
uLong writeFile(voidpf, voidpf stream, const void* from, uLong size) {
    MemoryFile& file = fileOf(stream);
    if (!file.isOutOfMemory && makeRoom(file, file.at + size)) {
        std::memcpy(file.made->data() + file.at, from, size);
    }
    file.at += size;
    return size;
}

ZPOS64_T placeIn(voidpf, voidpf stream) {
    return fileOf(stream).at;
}

long seekIn(voidpf, voidpf stream, ZPOS64_T offset, int origin) {
    MemoryFile& file = fileOf(stream);
    if (file.isOutOfMemory) return 0;
    const std::size_t from = origin == ZLIB_FILEFUNC_SEEK_CUR   ? file.at
                             : origin == ZLIB_FILEFUNC_SEEK_END ? file.size()
                                                                : 0;
    if (offset > file.size() - from) return -1;
    file.at = from + static_cast<std::size_t>(offset);
    return 0;
}

int closeFile(voidpf, voidpf) {
    return 0;
}

int errorOf(voidpf, voidpf stream) {
    return fileOf(stream).endsEarly ? 1 : 0;
}

zlib_filefunc64_def functionsFor(MemoryFile& file) {
    return {openFile, readFile, writeFile, placeIn, seekIn, closeFile, errorOf, &file};
}

// Of all files: midnight of the first day that an archive can tell.
constexpr uLong dosDate = (1u << 21) | (1u << 16);

constexpr uLong isEncrypted = 1;

// Programs differ in the case of names, and a few write the strokes of another system.
std::string asKnown(std::string name) {
    for (char& c : name) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c == '\\') c = '/';
    }
    return name;
}

}  // namespace

struct ZipArchive::Parts {
    MemoryFile file;
    unzFile archive = nullptr;
    std::unordered_map<std::string, unz64_file_pos> entries;

    ~Parts() {
        if (archive != nullptr) ::unzClose(archive);
    }

    /// False for a second entry of a name.
    bool noteEntry() {
        char name[512];
        unz_file_info64 info;
        unz64_file_pos place;
        const bool isKnown = ::unzGetCurrentFileInfo64(archive, &info, name, sizeof name - 1,
                                                       nullptr, 0, nullptr, 0) == UNZ_OK &&
                             ::unzGetFilePos64(archive, &place) == UNZ_OK;
        if (!isKnown || info.size_filename >= sizeof name) return true;
        return entries.emplace(asKnown(std::string(name, info.size_filename)), place).second;
    }
};

ZipArchive::ZipArchive(std::string_view bytes, const std::string& name, const Opening& opening)
    : parts_(std::make_unique<Parts>()),
      name_(name),
      most_(mostUnpacked(bytes.size(), opening.limits)),
      terms_(opening.terms) {
    parts_->file.bytes = bytes;
    zlib_filefunc64_def functions = functionsFor(parts_->file);
    parts_->archive = ::unzOpen2_64("", &functions);
    if (parts_->archive == nullptr) {
        throw Failure{unreadable,
                      name_,
                      {0, "", "the directory of the archive is cut off or damaged",
                       "a whole workbook", "copy the file again"}};
    }
    for (int at = ::unzGoToFirstFile(parts_->archive); at == UNZ_OK;
         at = ::unzGoToNextFile(parts_->archive)) {
        if (parts_->noteEntry()) continue;
        throw Failure{unreadable, name_, {0, "", "two entries of one name", "one of each", ""}};
    }
}

ZipArchive::~ZipArchive() = default;

bool ZipArchive::has(const std::string& entry) const {
    return parts_->entries.contains(asKnown(entry));
}

void ZipArchive::read(const std::string& entry, const Receiver& receiver) {
    const auto refuse = [&](const std::string& found, const char* expected, const char* advice) {
        throw Failure{unreadable, name_, {0, "", found, expected, advice}};
    };
    const auto found = parts_->entries.find(asKnown(entry));
    if (found == parts_->entries.end()) {
        refuse("no entry " + inQuotes(entry), "a workbook", "");
    }
    unzFile const archive = parts_->archive;
    unz_file_info64 info = {};
    const bool isThere =
        ::unzGoToFilePos64(archive, &found->second) == UNZ_OK &&
        ::unzGetCurrentFileInfo64(archive, &info, nullptr, 0, nullptr, 0, nullptr, 0) == UNZ_OK;
    if ((info.flag & isEncrypted) != 0) {
        refuse("entries with a password", "a workbook without one",
               "save it without in a spreadsheet program");
    }
    if (!isThere || ::unzOpenCurrentFile(archive) != UNZ_OK) {
        refuse("the entry " + inQuotes(entry) + " is damaged", "a whole workbook", "");
    }
    std::string piece(pieceSize, '\0');
    int count = 0;
    while ((count = ::unzReadCurrentFile(archive, piece.data(), pieceSize)) > 0) {
        unpacked_ += static_cast<std::size_t>(count);
        if (unpacked_ > most_) {
            throw Failure{unreadable,
                          name_,
                          {0, "", "unpacks to more than " + std::to_string(most_) + " bytes",
                           "no more", concat(terms_->maxBytes, " allows more")}};
        }
        receiver(std::string_view(piece).substr(0, static_cast<std::size_t>(count)));
    }
    if (::unzCloseCurrentFile(archive) != UNZ_OK || count < 0) {
        refuse("the entry " + inQuotes(entry) + " is cut off or damaged", "a whole workbook",
               "copy the file again");
    }
}

struct ZipWriter::Parts {
    std::string name;
    std::string made;
    MemoryFile file;
    zipFile archive = nullptr;
    bool isOpen = false;

    void require(bool isWell) const {
        if (file.isOutOfMemory) throw std::bad_alloc();
        if (!isWell) throw Failure{unwritable, name + ": no memory to pack a workbook"};
    }

    void endEntry() {
        if (isOpen) require(::zipCloseFileInZip(archive) == ZIP_OK);
        isOpen = false;
    }

    ~Parts() {
        if (archive != nullptr) ::zipClose(archive, nullptr);
    }
};

ZipWriter::ZipWriter(const std::string& name) : parts_(std::make_unique<Parts>()) {
    parts_->name = name;
    parts_->file.made = &parts_->made;
    zlib_filefunc64_def functions = functionsFor(parts_->file);
    parts_->archive = ::zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
    parts_->require(parts_->archive != nullptr);
}

ZipWriter::~ZipWriter() = default;

void ZipWriter::begin(const std::string& entry) {
    parts_->endEntry();
    zip_fileinfo info = {};
    info.dosDate = dosDate;
    const int result =
        ::zipOpenNewFileInZip64(parts_->archive, entry.c_str(), &info, nullptr, 0, nullptr, 0,
                                nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION, 0);
    parts_->isOpen = result == ZIP_OK;
    parts_->require(parts_->isOpen);
}

void ZipWriter::write(std::string_view piece) {
    constexpr std::size_t mostAtOnce = std::size_t{1} << 30;
    while (!piece.empty()) {
        const std::string_view part = piece.substr(0, mostAtOnce);
        const auto size = static_cast<unsigned>(part.size());
        parts_->require(::zipWriteInFileInZip(parts_->archive, part.data(), size) == ZIP_OK);
        piece.remove_prefix(part.size());
    }
}

std::string ZipWriter::finish() {
    parts_->endEntry();
    zipFile const archive = std::exchange(parts_->archive, nullptr);
    parts_->require(::zipClose(archive, nullptr) == ZIP_OK);
    return std::move(parts_->made);
}

}  // namespace vek::formats
