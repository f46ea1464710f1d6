#include "formats/writers.h"

#include <algorithm>
#include <numeric>

#include <vekdb/host/text_util.h>
#include "formats/counting.h"
#include "formats/inform.h"
#include "formats/readers.h"
#include "formats/write_formats.h"

namespace vek {

namespace {

struct TargetEntry {
    Target target;
    const char* name;
    const char* endings;
};

constexpr TargetEntry targets[] = {
    {Target::table, "vekdb", "|.vek|.vdb|.vekdb|"},
    {Target::csv, "csv", "|.csv|"},
    {Target::tsv, "tsv", "|.tsv|.tab|"},
    {Target::json, "json", "|.json|"},
    {Target::jsonl, "jsonl", "|.jsonl|.ndjson|"},
    {Target::ale, "ale", "|.ale|"},
    {Target::edl, "edl", "|.edl|"},
    {Target::markdown, "markdown", "|.md|"},
    {Target::html, "html", "|.html|.htm|"},
};

const TargetEntry* entryOfPath(const std::string& path) {
    std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return nullptr;
    LightweightString<char> ending = cellText(concat("|", path.substr(dot), "|"));
    toLower(ending);
    for (const TargetEntry& entry : targets) {
        if (std::string_view(entry.endings).find(ending.view()) != std::string_view::npos) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace

const char* targetName(Target target) {
    return targets[static_cast<std::size_t>(target)].name;
}

Target targetNamed(const std::string& name) {
    for (const TargetEntry& entry : targets) {
        if (name == entry.name) return entry.target;
    }
    throw Failure{wrongUsage, "there is no format " + inQuotes(name)};
}

bool hasTargetEnding(const std::string& path) {
    return entryOfPath(path) != nullptr;
}

Target targetOfPath(const std::string& path) {
    if (const TargetEntry* entry = entryOfPath(path)) return entry->target;
    throw Failure{wrongUsage,
                  path +
                      ": the ending names no format, expected .vek, .csv, .tsv, "
                      ".json, .jsonl, .ale, .edl, .md or .html, or the format with --to"};
}

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

void writeSheet(const Sheet& sheet, Target target, const WriteStyle& style, Output& out,
                Losses& losses) {
    switch (target) {
        case Target::table:
            return writeTable(sheet, out, losses);
        case Target::csv:
            return writeDelimited(sheet, ',', style, out, losses);
        case Target::tsv:
            return writeDelimited(sheet, '\t', style, out, losses);
        case Target::json:
            return writeJson(sheet, false, out, losses);
        case Target::jsonl:
            return writeJson(sheet, true, out, losses);
        case Target::ale:
            return writeAle(sheet, style, out, losses);
        case Target::edl:
            return writeEdl(sheet, style, out, losses);
        case Target::markdown:
            return writeMarkdown(sheet, out, losses);
        case Target::html:
            return writeHtml(sheet, out, losses);
    }
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

}  // namespace vek
