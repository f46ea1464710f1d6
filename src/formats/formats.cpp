#include "formats/formats.h"

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "formats/edl/stray_lines.h"
#include "formats/packed/packed.h"
#include "formats/reading/decoding.h"
#include "formats/reading/delimiters.h"
#include "formats/reading/readers.h"
#include "formats/saving/change_formats.h"
#include "formats/signs.h"
#include "formats/table_file/table_lines.h"
#include "formats/table_file/table_places.h"
#include "formats/text/text_lines.h"
#include "formats/text/utf8.h"
#include "formats/writing/write_formats.h"
#include "formats/xml/xml_declaration.h"

namespace vek::formats {

namespace {

using Read = void (*)(Input& input, const Wanted& wanted, Log& log);
using Write = void (*)(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);

void refuseBinary(const Input& input, std::string_view text, const Terms& terms) {
    std::size_t nul = text.find('\0');
    if (nul == std::string_view::npos) return;
    auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(nul), '\n');
    throw Failure{
        unreadable,
        input.name(),
        {static_cast<std::size_t>(line), "", "a zero byte", "text",
         concat("if this is text, say its encoding with ", terms.encoding, ", such as utf-16")}};
}

// A file of another kind is not read further.
void requireText(Input& input, const Log& log) {
    refuseBinary(input, input.head(), *log.opening.terms);
    refuseBinary(input, input.text(), *log.opening.terms);
}

bool endsInLine(std::string_view text) {
    return !text.empty() && text.back() != '\n' && text.back() != '\r';
}

// The bytes of an input that holds text, without a mark in front.
Text textOf(Input& input, Log& log) {
    requireText(input, log);
    log.endsInLine = endsInLine(input.text());
    log.beganWithMark = input.text().starts_with(byteOrderMark);
    return {input.takeText(), log.beganWithMark ? byteOrderMark.size() : 0};
}

// The same of a text for which no encoding is laid down.
Text anyTextOf(Input& input, Log& log) {
    requireText(input, log);
    decodeBytes(input, log);
    return textOf(input, log);
}

template <char separator>
void readSeparated(Input& input, const Wanted&, Log& log) {
    readDelimited(anyTextOf(input, log), separator, log);
}

void readPlain(Input& input, const Wanted&, Log& log) {
    requireText(input, log);
    log.endsInLine = endsInLine(input.text());
    readPlainCsv(input, log);
}

void readAleText(Input& input, const Wanted&, Log& log) {
    readAle(anyTextOf(input, log), log);
}

void readEdlText(Input& input, const Wanted&, Log& log) {
    readEdl(anyTextOf(input, log), log);
}

void readJsonText(Input& input, const Wanted&, Log& log) {
    readJson(textOf(input, log), log);
}

void readOtioText(Input& input, const Wanted&, Log& log) {
    readOtio(textOf(input, log), log);
}

void readFcpxmlText(Input& input, const Wanted&, Log& log) {
    decodeDeclared(input, declaredEncoding(input.head()), log);
    readFcpxml(anyTextOf(input, log), log);
}

void readWorkbook(Input& input, const Wanted&, Log& log) {
    readXlsx(input, log);
}

void writeTableFile(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeTable(sheet, out, losses);
}

template <char separator>
void writeSeparated(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses) {
    writeDelimited(sheet, separator, style, out, losses);
}

template <bool asLines>
void writeJsonText(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeJson(sheet, asLines, out, losses);
}

void writeMarkdownText(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeMarkdown(sheet, out, losses);
}

void writeHtmlText(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeHtml(sheet, out, losses);
}

void writeParquetFile(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeParquet(sheet, out, losses);
}

void writeArrowFile(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeArrow(sheet, out, losses);
}

void writeWorkbook(const Sheet& sheet, const WriteStyle&, Output& out, Losses& losses) {
    writeXlsx(sheet, out, losses);
}

template <char usual>
std::unique_ptr<RowsInPlace> separatedInPlace(const Saving& saving) {
    const char said = saving.log.form.delimiter;
    return delimitedInPlace(saving, said != '\0' ? said : usual);
}

constexpr InPlaceWays tableWays = {
    .rows = tableInPlace, .rewrite = rewriteTable, .hasLinesOfLibrary = true};
constexpr InPlaceWays csvWays = {.rows = separatedInPlace<','>, .require = requireSameQuotes};
constexpr InPlaceWays tsvWays = {.rows = separatedInPlace<'\t'>, .require = requireSameQuotes};
constexpr InPlaceWays plainCsvWays = {.rows = plainCsvInPlace, .hasLinesOfLibrary = true};
constexpr InPlaceWays jsonWays = {.text = jsonInPlace};
constexpr InPlaceWays aleWays = {.rows = aleInPlace};
constexpr InPlaceWays edlWays = {.rows = edlInPlace, .require = requireSameEvents};

struct FormatEntry {
    Format format;
    const char* name;
    const char* endings;                   ///< "|.csv|" and so on, the usual one first
    Read read;                             ///< null for one that is only written
    Write write;                           ///< null for one that is only read
    const InPlaceWays* inPlace = nullptr;  ///< null for one of which no log is changed in place
    void (*tellText)(Input& input, const Log& log, const Tell& tell) = nullptr;
    void (*tellRows)(const Log& log, const Tell& tell) = nullptr;
};

constexpr FormatEntry formats[] = {
    {Format::table, "vekdb", "|.vek|.vdb|.vekdb|", readTable, writeTableFile, &tableWays,
     tellTableText},
    {Format::csv, "csv", "|.csv|", readSeparated<','>, writeSeparated<','>, &csvWays},
    {Format::tsv, "tsv", "|.tsv|.tab|", readSeparated<'\t'>, writeSeparated<'\t'>, &tsvWays},
    {Format::plainCsv, "plain-csv", "", readPlain, nullptr, &plainCsvWays},
    {Format::json, "json", "|.json|", readJsonText, writeJsonText<false>, &jsonWays},
    {Format::jsonl, "jsonl", "|.jsonl|.ndjson|", readJsonText, writeJsonText<true>, &jsonWays},
    {Format::ale, "ale", "|.ale|", readAleText, writeAle, &aleWays},
    {Format::edl, "edl", "|.edl|", readEdlText, writeEdl, &edlWays, nullptr, tellStrayLines},
    {Format::otio, "otio", "|.otio|", readOtioText, writeOtio},
    {Format::fcpxml, "fcpxml", "|.fcpxml|", readFcpxmlText, nullptr},
    {Format::xlsx, "xlsx", "|.xlsx|", readWorkbook, writeWorkbook},
    {Format::markdown, "markdown", "|.md|", nullptr, writeMarkdownText},
    {Format::html, "html", "|.html|.htm|", nullptr, writeHtmlText},
    {Format::parquet, "parquet", "|.parquet|", nullptr, writeParquetFile},
    {Format::arrow, "arrow", "|.arrow|", nullptr, writeArrowFile},
};

bool isReadable(const FormatEntry& entry) {
    return entry.read != nullptr;
}

bool isWritable(const FormatEntry& entry) {
    return entry.write != nullptr;
}

using Is = bool (*)(const FormatEntry& entry);

const FormatEntry& entryOf(Format format) {
    return *std::find_if(std::begin(formats), std::end(formats),
                         [format](const FormatEntry& entry) { return entry.format == format; });
}

const FormatEntry& entryNamed(const std::string& name, Is is) {
    for (const FormatEntry& entry : formats) {
        if (name != entry.name) continue;
        if (is(entry)) return entry;
        throw Failure{wrongUsage, concat(name, is == isWritable ? " can be read, not written"
                                                                : " can be written, not read")};
    }
    throw Failure{wrongUsage, "there is no format " + inQuotes(name)};
}

bool isEnding(std::string_view ending, std::string_view known) {
    return sameText(ending, known) && !known.empty();
}

const FormatEntry* entryOfPath(std::string_view path, Is is) {
    path = withoutPackedEnding(path);
    std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos) return nullptr;
    std::string_view ending = path.substr(dot);
    for (const FormatEntry& entry : formats) {
        if (!is(entry)) continue;
        for (std::string_view known = entry.endings; !known.empty();) {
            known.remove_prefix(1);
            std::size_t end = std::min(known.find('|'), known.size());
            if (isEnding(ending, known.substr(0, end))) return &entry;
            known.remove_prefix(end);
        }
    }
    return nullptr;
}

std::string names(Is is) {
    std::string out;
    for (const FormatEntry& entry : formats) {
        if (is(entry)) out += concat(out.empty() ? "" : "|", entry.name);
    }
    return out;
}

std::string_view usualEnding(const FormatEntry& entry) {
    return split(entry.endings, '|')[1];
}

// ".vek, .csv, ... or .html"
std::string endingsToWrite() {
    std::string out;
    std::string_view last;
    for (const FormatEntry& entry : formats) {
        if (!isWritable(entry)) continue;
        if (!last.empty()) out += concat(out.empty() ? "" : ", ", last);
        last = usualEnding(entry);
    }
    return concat(out, " or ", last);
}

// A member's name, and not a text that says so.
bool hasTimelineMember(std::string_view head) {
    constexpr std::string_view name = "\"OTIO_SCHEMA\"";
    for (std::size_t at = head.find(name); at != head.npos; at = head.find(name, at + 1)) {
        if (trimmed(head.substr(at + name.size())).starts_with(':')) return true;
    }
    return false;
}

bool isOneOf(Format format, std::initializer_list<Format> formats) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

// Cells between marks, or JSON, in a file that is called by the ending of another format. What is
// called a table file is none by its first line, and its reader says so.
bool isUnderWrongEnding(Format format, std::string_view line, std::string_view head, bool isWhole) {
    if (format == Format::table) return false;
    const bool isJsonsName = isOneOf(format, {Format::json, Format::jsonl});
    const bool isObject = line.starts_with('{') && format == Format::otio;
    if (isJson(head)) return !isJsonsName && !isObject;
    if (isOneOf(format, {Format::csv, Format::tsv})) return false;
    const bool isOwn = isJsonsName && (line.starts_with('{') || line.starts_with('['));
    return !isOwn && isDelimited(head, isWhole);
}

std::string_view withoutMark(std::string_view head) {
    if (head.starts_with(byteOrderMark)) head.remove_prefix(byteOrderMark.size());
    return head;
}

}  // namespace

const char* formatName(Format format) {
    return entryOf(format).name;
}

const std::string& readableFormats() {
    static const std::string readable = names(isReadable);
    return readable;
}

const std::string& writableFormats() {
    static const std::string writable = names(isWritable);
    return writable;
}

Format formatNamed(const std::string& name) {
    return entryNamed(name, isReadable).format;
}

Format targetNamed(const std::string& name) {
    return entryNamed(name, isWritable).format;
}

bool hasTargetEnding(const std::string& path) {
    return entryOfPath(path, isWritable) != nullptr;
}

std::string_view endingOf(Format format) {
    return usualEnding(entryOf(format));
}

Format targetOfPath(const std::string& path, const Terms& terms) {
    if (const FormatEntry* entry = entryOfPath(path, isWritable)) return entry->format;
    const FormatEntry* other = entryOfPath(path, isReadable);
    throw Failure{wrongUsage,
                  path,
                  {0, "",
                   other == nullptr ? "the ending names no format"
                                    : concat(other->name, " can be read, not written"),
                   concat(endingsToWrite(), ", or the format ", terms.format), ""}};
}

bool isWorkbook(std::string_view head) {
    return head.starts_with("PK\x03\x04") || head.starts_with("PK\x05\x06") ||
           head.starts_with("\xD0\xCF\x11\xE0");
}

// The content decides where it is plain; then the name's ending does.
Format recognised(const std::string& path, std::string_view head) {
    if (isWorkbook(head)) return Format::xlsx;
    const bool isWhole = head.size() < Input::headSize;
    head = withoutMark(head);
    std::string_view line = firstFilledLine(head);
    std::string_view start = line.starts_with('"') ? line.substr(1) : line;
    if (sameText(start.substr(0, 6), "VEKDB:")) return Format::table;
    if (isLogExchange(head)) return Format::ale;
    if (line.starts_with('{') && hasTimelineMember(head)) return Format::otio;
    if (line.starts_with('<') && head.find("<fcpxml") != head.npos) return Format::fcpxml;
    const FormatEntry* entry = entryOfPath(path, isReadable);
    const bool isCalledEdl = entry != nullptr && entry->format == Format::edl;
    const bool isCalledCells =
        entry != nullptr && isOneOf(entry->format, {Format::csv, Format::tsv});
    const bool isOfCells = !isCalledEdl && isTitleOfCells(head, isWhole, isCalledCells);
    if (isEditList(head) && !isOfCells) return Format::edl;
    if (entry != nullptr && !isUnderWrongEnding(entry->format, line, head, isWhole)) {
        return entry->format;
    }
    const bool mayBeJson = line.starts_with('{') || line.starts_with('[');
    if (mayBeJson && (isJson(head) || !isDelimited(head, isWhole))) return Format::json;
    return line.find('\t') != std::string_view::npos ? Format::tsv : Format::csv;
}

std::string otherFormat(Format tried, std::string_view head) {
    const bool isWhole = head.size() < Input::headSize;
    head = withoutMark(head);
    if (isJson(head)) {
        return isOneOf(tried, {Format::json, Format::jsonl}) ? "" : "json";
    }
    if (isOneOf(tried, {Format::csv, Format::tsv}) || !isDelimited(head, isWhole)) return "";
    return foundDelimiter(head, isWhole, ',') == '\t' ? "tsv" : "csv";
}

void readAs(Format format, Input& input, const Wanted& wanted, Log& log) {
    const FormatEntry& entry = entryOf(format);
    if (!isReadable(entry)) {
        throw Failure{wrongUsage,
                      log.name,
                      {0, "", concat(entry.name, " is written, not read"), "another format", ""}};
    }
    entry.read(input, wanted, log);
}

void notePlacesAsRead(Log& log) {
    if (log.format == Format::table) notePlaces(log);
}

const InPlaceWays* inPlaceWays(Format format) {
    return entryOf(format).inPlace;
}

void tellText(Input& input, const Log& log, const Tell& tell) {
    const FormatEntry& entry = entryOf(log.format);
    if (entry.tellText != nullptr) entry.tellText(input, log, tell);
}

void tellRows(const Log& log, const Tell& tell) {
    const FormatEntry& entry = entryOf(log.format);
    if (entry.tellRows != nullptr) entry.tellRows(log, tell);
}

void writeSheet(const Sheet& sheet, Format target, const WriteStyle& style, Output& out,
                Losses& losses) {
    if (isPackedName(out.name()) || !style.form.encoding.empty())
        out.encode(style.form.encoding, isPackedName(out.name()));
    entryOf(target).write(sheet, style, out, losses);
}

}  // namespace vek::formats

namespace vek {

std::string_view nameOf(Format format) noexcept {
    return formats::formatName(format);
}

std::optional<Format> formatOfName(std::string_view name) noexcept {
    for (const formats::FormatEntry& entry : formats::formats) {
        if (name == entry.name) return entry.format;
    }
    return {};
}

std::optional<Format> formatOfPath(std::string_view path) noexcept {
    const auto isAny = [](const formats::FormatEntry&) { return true; };
    const formats::FormatEntry* entry = formats::entryOfPath(path, isAny);
    return entry == nullptr ? std::nullopt : std::optional(entry->format);
}

bool canRead(Format format) noexcept {
    return formats::isReadable(formats::entryOf(format));
}

bool canWrite(Format format) noexcept {
    return formats::isWritable(formats::entryOf(format));
}

}  // namespace vek
