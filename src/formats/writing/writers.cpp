#include "formats/writing/writers.h"

#include <algorithm>
#include <numeric>

#include <vekdb/host/text_util.h>
#include "formats/inform.h"
#include "formats/timecode/counting.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

Target targetOf(const Log& log) {
    switch (log.format) {
        case Format::table:
            return Target::table;
        case Format::csv:
            return Target::csv;
        case Format::tsv:
            return Target::tsv;
        case Format::ale:
            return Target::ale;
        case Format::json:
        case Format::jsonl:
            throw Failure{wrongUsage, log.name +
                                          ": JSON is not changed in place, as its numbers "
                                          "would become texts; make a table file of it with vek "
                                          "convert"};
        case Format::edl:
            throw Failure{wrongUsage, log.name +
                                          ": an edit list is not changed in place; make a table "
                                          "file of it with vek convert, and an edit list again"};
        case Format::otio:
        case Format::fcpxml:
            throw Failure{wrongUsage, log.name +
                                          ": a timeline is not changed in place; make a table "
                                          "file of it with vek convert, and a timeline again"};
        default:
            break;
    }
    throw Failure{wrongUsage, log.name + ": " + formatName(log.format) +
                                  " is read, not written; "
                                  "make a table file of it with vek convert"};
}

std::vector<unsigned> allColumns(const Log& log) {
    std::vector<unsigned> columns(log.columnCount());
    std::iota(columns.begin(), columns.end(), 0u);
    return columns;
}

Sheet wholeSheet(const Log& log) {
    return {log, selectRows(log, {}).view, allColumns(log)};
}

void Losses::add(const std::string& what, const std::string& firstPlace) {
    auto kind =
        std::find_if(kinds_.begin(), kinds_.end(), [&](const Kind& k) { return k.what == what; });
    if (kind == kinds_.end())
        kinds_.push_back({what, firstPlace, 1});
    else
        ++kind->count;
}

void Losses::addEach(const std::string& message) {
    messages_.push_back(message);
}

void Losses::tell(const std::string& output) const {
    constexpr std::size_t most = 20;
    for (std::size_t i = 0; i < messages_.size() && i < most; ++i) inform(messages_[i]);
    if (messages_.size() > most) {
        inform(output + ": " + std::to_string(messages_.size() - most) + " more like these");
    }
    for (const Kind& kind : kinds_) {
        inform(output + ": " + kind.what + ": " + std::to_string(kind.count) +
               (kind.firstPlace.empty() ? "" : ", first " + kind.firstPlace));
    }
}

std::size_t Losses::count() const {
    std::size_t sum = messages_.size();
    for (const Kind& kind : kinds_) sum += kind.count;
    return sum;
}

void saveInPlace(const Sheet& sheet, bool backup) {
    const Log& log = sheet.log;
    requireWhole(log);
    Target target = targetOf(log);
    Held held = log.held ? log.held : holdFile(log.path);
    Output out(log.path, held);
    Losses losses;
    WriteStyle style{log.lineEnd, log.beganWithMark};
    style.keepsLengths = true;
    writeSheet(sheet, target, style, out, losses);
    if (backup && held) backUp(log.path, *held);
    out.close();
    losses.tell(out.name());
}

void saveInPlace(const Log& log, const VDBView& view, bool backup) {
    saveInPlace({log, view, allColumns(log)}, backup);
}

void saveInPlace(const Log& log, bool backup) {
    saveInPlace(log, wholeSheet(log).view, backup);
}

}  // namespace vek::formats
