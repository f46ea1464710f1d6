#include <climits>
#include <ctime>
#include <new>
#include <optional>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/text_file.h>
#include <vekdb/table.h>
#include "host/text_arrival.h"
#include "host/text_in_pieces.h"
#include "vekdb/lines/record_lines.h"
#include "vekdb/lines/table_header.h"
#include "vekdb/table/loaded_header.h"
#include "vekdb/table/loaded_rows.h"
#include "vekdb/table/plain_csv.h"
#include "vekdb/table/row_sieve.h"
#include "vekdb/table/table_parts.h"

namespace {

constexpr unsigned short headerRoom = 24;

}  // namespace

// What a load is asked for. Without a choice every row is taken.
struct vekdb::Load {
    std::optional<int> descriptor;  // none: the file is opened by its name
    int maxRecords;
    bool requireMagic;
    RowChoice* choice;
};

void vekdb::loadFromFile(int maxRecords, bool requireMagic) {
    load({std::nullopt, maxRecords, requireMagic, nullptr});
}

void vekdb::loadFromFile(RowChoice& choice, bool requireMagic) {
    load({std::nullopt, INT_MAX, requireMagic, &choice});
}

void vekdb::loadFromDescriptor(int descriptor, int maxRecords, bool requireMagic) {
    load({descriptor, maxRecords, requireMagic, nullptr});
}

void vekdb::loadFromDescriptor(int descriptor, RowChoice& choice, bool requireMagic) {
    load({descriptor, INT_MAX, requireMagic, &choice});
}

// A part of a file's rows must not pass for the table, to be saved over all of them. Where the
// program has allocation operators of its own, these throw what is theirs.
void vekdb::load(const Load& load) {
    free();
    try {
        fillFromFile(load);
    } catch (const Quor::Exception::BadAlloc&) {
        free();
        throw;
    } catch (const std::bad_alloc&) {
        free();
        throw Quor::Exception::BadAlloc();
    } catch (...) {
        free();
        throw;
    }
}

void vekdb::fillFromFile(const Load& load) {
    const bool isPlainCsv = parts().fileName.endsWith(L".csv", true);
    if (!isPlainCsv && fillWhileReading(load)) return;
    TextFile file;
    const bool isRead = load.descriptor ? file.load(*load.descriptor, '\n')
                                        : file.load(parts().fileName, '\n', false);
    parts().readError = file.error();
    if (!isRead) return;
    if (isPlainCsv) {
        loadPlainCsv(file, *this, parts(), load.maxRecords, load.choice);
    } else {
        fillFrom(file, load);
    }
}

// False, with an empty table, where the file is to be read in the other way. A derived class's
// code, which would see a file begun twice, is called in the other way only.
bool vekdb::fillWhileReading(const Load& load) {
    if (mayBeOverridden()) return false;
    TextFile file;
    const bool isArriving = load.descriptor ? TextInPieces::beginLoad(file, *load.descriptor, '\n')
                                            : TextInPieces::beginLoad(file, parts().fileName, '\n');
    if (!isArriving) return false;
    try {
        fillFrom(file, load);
        return true;
    } catch (const TextArrival::Broken&) {
        free();
        return false;
    }
}

void vekdb::fillFrom(TextFile& file, const Load& load) {
    dbrecord line(headerRoom);
    LoadedHeader header(*this, parts());
    TableHeader reader(file, line, header);
    if (!reader.mayBegin()) return;
    if (!reader.readColumns(load.requireMagic)) return TextInPieces::awaitAll(file);
    post_init();
    const RowSieve sieve(load.choice, *this, parts());
    // Records that nobody has seen yet are not marked as changed in the first place.
    TextLines lines(file, TextLines::Mark::none);
    const unsigned rows = LoadedRows(*this, parts(), sieve).readFrom(lines, false, load.maxRecords);
    lines.awaitAll();
    parts().loadedWhole = lines.areAll(rows);
    if (lines.hasRead()) parts().modificationTime = std::time(nullptr);
    parts().modified = false;
}

int vekdb::read_params(TextFile& file, dbrecord& header) {
    LoadedHeader receiver(*this, parts());
    return static_cast<int>(TableHeader(file, header, receiver).readParameters());
}

unsigned vekdb::add_text(TextFile& file, int skipFirst, int maxRecords) {
    FileLines lines(file);
    const RowSieve all;
    return LoadedRows(*this, parts(), all).readFrom(lines, skipFirst != 0, maxRecords);
}

unsigned vekdb::load_text(int maxRecords) {
    TextFile file;
    if (!file.load(parts().fileName, '\n', false)) return 0;
    TextLines lines(file, TextLines::Mark::asRead);
    const RowSieve all;
    return LoadedRows(*this, parts(), all).readFrom(lines, true, maxRecords);
}
