#include "formats/saving/reading_back.h"

#include <algorithm>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/packed/packed.h"
#include "formats/reading/decoding.h"
#include "formats/reading/delimiters.h"
#include "formats/reading/lines_in_front.h"
#include "formats/reading/readers.h"
#include "formats/saving/patched_text.h"
#include "formats/text/encoding.h"
#include "formats/text/text_lines.h"
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

// A name of the format's own ending, whatever the file is called: in a pipe there is none to go by.
std::string nameOfItsOwn(Format format) {
    return concat("x.", formatName(format));
}

char usualDelimiter(Format format) {
    if (format == Format::csv) return ',';
    return format == Format::tsv ? '\t' : '\0';
}

std::string differenceOf(const FirstLook& found, const FirstLook& meant) {
    if (found.isPacked != meant.isPacked) return "packed by gzip";
    if (found.encoding != meant.encoding) return concat("text in ", found.encoding);
    if (found.format != meant.format) return concat("format ", formatName(found.format));
    if (found.hasMark != meant.hasMark) return "one with a byte order mark in front";
    if (found.delimiter == meant.delimiter) return {};
    return concat("cells separated by ", delimiterName(found.delimiter));
}

// Beginnings are cut at the size of a look.
bool isWhole(std::string_view text) {
    return text.size() < FirstLook::size;
}

FirstLook lookAtLog(const Log& log, std::string_view text) {
    FirstLook look = FirstLook::at(text, log.path, '\0');
    const char usual = usualDelimiter(log.format);
    const bool isWished = isDelimiterSaid(log);
    if (usual == '\0' || isWished) return look;
    const std::size_t front = std::min(sizeInFront(log), text.size());
    look.delimiter = foundDelimiter(text.substr(front), isWhole(text), usual);
    return look;
}

std::string beginningOf(const Input& input) {
    std::string text(std::min<std::uint64_t>(FirstLook::size, input.size()), '\0');
    input.readAgain(0, text.data(), text.size());
    return text;
}

std::size_t blankLinesInFront(const Log& log, std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    return LinesInFront::of(text, usualDelimiter(log.format), log).blank;
}

// A blank line that is a heading or a row, in front of one that is several cells by now.
void requireSameBlankLines(const Log& log, std::string_view was, std::string_view text,
                           const std::string& output) {
    if (usualDelimiter(log.format) == '\0') return;
    if (blankLinesInFront(log, text) == 0 || blankLinesInFront(log, was) != 0) return;
    const bool isRow = log.form.hasNoHeading;
    refuseOrTell(output,
                 concat("its ", isRow ? "first row" : "heading",
                        " is a blank line, which is passed over in front of a line of several "
                        "cells; ",
                        isRow ? "put another row first" : "give its column a name first"),
                 nullptr);
}

// There is only its name to know a file by that holds nothing; what is not that file is known by
// who asked for it.
void requireSameOfNothing(const Log& log, const std::string& output) {
    const bool isSaid = log.opening.format.has_value();
    if (output != log.path || isSaid || recognised(output, {}) == log.format) return;
    refuseOrTell(output,
                 concat("an empty file of this name would be read as format ",
                        formatName(recognised(output, {})),
                        "; keep a row, or give it the ending of its own format first"),
                 nullptr);
}

void requireSameLook(const Log& log, std::string_view text, const std::string& output,
                     Losses* told) {
    if (text.empty()) return requireSameOfNothing(log, output);
    const std::string was = beginningOf(*log.source->input);
    requireSameBlankLines(log, was, text, output);
    const FirstLook meant = lookAtLog(log, was);
    const FirstLook found = lookAtLog(log, text.substr(0, FirstLook::size));
    const std::string difference = differenceOf(found, meant);
    if (difference.empty()) return;
    const bool isMark = found.delimiter != meant.delimiter;
    text.remove_prefix(std::min(sizeInFront(log), text.size()));
    const std::string what =
        concat("it would be read as ", difference,
               " then: ", inQuotes(text.substr(0, std::min<std::size_t>(text.find('\n'), 40))));
    if (!isMark) refuseOrTell(output, what + "; put another text first", nullptr);
    refuseOrTell(
        output, concat(what, "; say on reading that it is ", delimiterName(meant.delimiter)), told);
}

std::string_view upToLastAscii(std::string_view text) {
    while (!text.empty() && static_cast<unsigned char>(text.back()) >= 0x80) text.remove_suffix(1);
    return text;
}

// As much of a text as a reader tells formats by.
std::string headOf(std::string_view text) {
    return std::string(Input({}, text.substr(0, FirstLook::size), {}).head());
}

// Formats for which no encoding is laid down.
bool isOfAnyEncoding(Format format) {
    return format == Format::csv || format == Format::tsv || format == Format::ale;
}

// Whether a file that was read has bytes that are no UTF-8. Pieces of it end behind a byte that is
// a character by itself.
bool readsOddBytes(const Input& input) {
    constexpr std::uint64_t most = 1 << 18;
    SourceReader reader(input);
    const std::uint64_t size = input.size();
    for (std::uint64_t at = 0; at < size;) {
        std::string_view piece = reader.read({at, std::min(size, at + most)});
        if (at + piece.size() < size) piece = upToLastAscii(piece);
        if (piece.empty() || !isWellFormedUtf8(piece)) return true;
        at += piece.size();
    }
    return false;
}

bool hasOddBytes(Source& source) {
    if (!source.hasOddBytes) source.hasOddBytes = readsOddBytes(*source.input);
    return *source.hasOddBytes;
}

// What a reader finds out of the bytes; "" for UTF-8 and for what is kept as it is.
std::string encodingFound(std::string_view bytes) {
    const std::string wide = wideEncodingOf(headOf(bytes));
    return wide.empty() ? encodingOfBytes(bytes) : wide;
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string encoded(const std::string& text, const std::string& encoding) {
    std::size_t badAt = 0;
    // What cannot be encoded is refused by who writes it.
    return encoding.empty() ? text : fromUtf8(text, encoding, badAt).value_or(std::string());
}

void requireSameEncoding(const Log& log, PatchedText& text, const std::string& output,
                         Losses* told) {
    const std::string& encoding = log.form.encoding;
    const bool isSaid = !log.opening.wishes.encoding.empty();
    if (isSaid || !(isOfAnyEncoding(log.format) || !encoding.empty())) return;
    const bool mayDiffer = !encoding.empty() || hasOddBytes(*log.source) || !text.isMadeOfUtf8();
    if (!mayDiffer) return;
    const std::string bytes = encoded(text.beginning(*log.source->input, SIZE_MAX), encoding);
    const std::string found = encodingFound(bytes);
    if (found == encoding || (found.empty() && isAscii(bytes))) return;
    const std::string meant = encoding.empty() ? "utf-8" : encoding;
    refuseOrTell(output,
                 concat("it would be read as text in ", found.empty() ? "UTF-8" : found,
                        " then; say what it is with ", log.opening.terms->encoding, " ", meant),
                 told);
}

// Every name and cell, and what says where it stands.
template <class Take>
void forEachText(const Sheet& sheet, Take take) {
    for (unsigned i = 0; i < sheet.columns.size(); ++i) {
        take(sheet.name(i), [&] { return inQuotes(sheet.name(i)); });
    }
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        for (unsigned i = 0; i < sheet.columns.size(); ++i) {
            take(sheet.cell(row, i), [&] { return place(sheet, row, i); });
        }
    }
}

}  // namespace

std::size_t sizeInFront(const Log& log) {
    return (log.beganWithMark ? byteOrderMark.size() : 0) + log.form.skipped.size();
}

void refuseOrTell(const std::string& output, const std::string& what, Losses* told) {
    if (told == nullptr) throw Failure{unwritable, concat(output, ": not changed, ", what)};
    told->addEach(concat(output, ": ", what));
}

bool isDelimiterSaid(const Log& log) {
    const std::string_view first =
        std::string_view(log.form.skipped).substr(0, log.form.skipped.find_first_of("\r\n"));
    return log.opening.wishes.delimiter != '\0' || delimiterOfLine(first).has_value();
}

FirstLook FirstLook::at(std::string_view text, const std::string& path, char usual) {
    FirstLook look;
    const bool isWholeText = isWhole(text);
    const std::string head = headOf(text);
    look.encoding = wideEncodingOf(head);
    look.isPacked = vek::formats::isPacked(head);
    look.hasMark = head.starts_with(byteOrderMark);
    look.format = recognised(path, head);
    if (look.hasMark) text.remove_prefix(byteOrderMark.size());
    if (usual != '\0') look.delimiter = foundDelimiter(text.substr(0, size), isWholeText, usual);
    return look;
}

void CheckedOutput::look() {
    const bool hasMark = beginning_.starts_with(byteOrderMark);
    const char usual = delimiter_ == '\0' ? '\0' : usualDelimiter(format_);
    const FirstLook found = FirstLook::at(beginning_, nameOfItsOwn(format_), usual);
    const std::string difference = differenceOf(found, {format_, {}, false, hasMark, delimiter_});
    // Zero bytes are told; whatever they make of a text, it is refused by readers.
    const bool isTold = beginning_.find('\0') != std::string::npos;
    if (!difference.empty() && !isTold) {
        throw Failure{
            unwritable,
            concat(out_.name(), ": ",
                   inQuotes(std::string_view(beginning_).substr(0, beginning_.find('\n'))),
                   ", expected a first line that is not read as ", difference,
                   "; rename a column, put another first, or choose another format")};
    }
    isLookedAt_ = true;
    out_.write(std::exchange(beginning_, {}));
}

// A blank line is passed over for the next one. In a pipe there is no name to go by.
bool standsAsFirstLine(std::string_view line, Format format) {
    const std::string_view text = trimmed(line);
    const FirstLook look = FirstLook::at(line, nameOfItsOwn(format), '\0');
    const bool isMarked = look.hasMark || look.isPacked || !look.encoding.empty();
    return !text.empty() && !isMarked && std::string_view("{[<").find(text.front()) == text.npos &&
           look.format == format;
}

void tellNoUtf8(const Sheet& sheet, Losses& losses) {
    Utf8Count count;
    forEachText(sheet, [&](std::string_view text, auto) { count.add(text); });
    if (count.good >= count.bad) return;
    forEachText(sheet, [&](std::string_view text, auto place) {
        if (isWellFormedUtf8(text)) return;
        losses.add("texts that are no UTF-8, by which the file is read as one in another encoding",
                   place());
    });
}

void requireSameReading(const Log& log, PatchedText& text, const std::string& output,
                        Losses* told) {
    requireSameLook(log, text.beginning(*log.source->input, FirstLook::size), output, told);
    requireSameEncoding(log, text, output, told);
}

}  // namespace vek::formats
