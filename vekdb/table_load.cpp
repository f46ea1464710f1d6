#include <ctime>

#include "host/text_arrival_impl.h"
#include "host/text_file.h"
#include "vekdb/plain_csv_impl.h"
#include "vekdb/record_lines_impl.h"
#include "vekdb/record_loader_impl.h"
#include "vekdb/table.h"
#include "vekdb/table_header_impl.h"
#include "vekdb/table_parts_impl.h"

namespace {

constexpr unsigned short headerRoom = 24;

}  // namespace

// A part of a file's rows must not pass for the table, to be saved over all of them.
void vekdb::loadFromFile(int maxRecords, bool requireMagic) {
    free();
    try {
        fillFromFile(maxRecords, requireMagic);
    } catch (...) {
        free();
        throw;
    }
}

void vekdb::fillFromFile(int maxRecords, bool requireMagic) {
    const bool isPlainCsv = parts().fileName.endsWith(L".csv", true);
    if (!isPlainCsv && fillWhileReading(maxRecords, requireMagic)) return;
    TextFile file;
    if (!file.load(parts().fileName, '\n', false)) return;
    if (isPlainCsv) {
        loadPlainCsv(file, *this, parts(), maxRecords);
    } else {
        fillFrom(file, maxRecords, requireMagic);
    }
}

// False, with an empty table, where the file is to be read in the other way. Others' code, which
// would see a file begun twice, is called in the other way only.
bool vekdb::fillWhileReading(int maxRecords, bool requireMagic) {
    TextFile file;
    if (mayBeOverridden() || !file.loadAhead(parts().fileName, '\n')) return false;
    try {
        fillFrom(file, maxRecords, requireMagic);
        return true;
    } catch (const TextArrival::Broken&) {
        free();
        return false;
    }
}

void vekdb::fillFrom(TextFile& file, int maxRecords, bool requireMagic) {
    dbrecord header(headerRoom);
    if (!TableHeader(*this, parts(), file, header).readColumns(requireMagic)) {
        return file.awaitAll();
    }
    post_init();
    // Records that nobody has seen yet are not marked as changed in the first place.
    TextLines lines(file, TextLines::Mark::none);
    const unsigned rows = RecordLoader(*this, parts(), lines, false).load(maxRecords);
    lines.awaitAll();
    parts().loadedWhole = lines.areAll(rows);
    if (lines.hasRead()) parts().modificationTime = std::time(nullptr);
    parts().modified = false;
}

int vekdb::read_params(TextFile& file, dbrecord& header) {
    return static_cast<int>(TableHeader(*this, parts(), file, header).readParameters());
}

unsigned vekdb::add_text(TextFile& file, int skipFirst, int maxRecords) {
    FileLines lines(file);
    return RecordLoader(*this, parts(), lines, skipFirst != 0).load(maxRecords);
}

unsigned vekdb::load_text(int maxRecords) {
    TextFile file;
    if (!file.load(parts().fileName, '\n', false)) return 0;
    TextLines lines(file, TextLines::Mark::asRead);
    return RecordLoader(*this, parts(), lines, true).load(maxRecords);
}
