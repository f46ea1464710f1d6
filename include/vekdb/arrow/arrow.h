#pragma once

#include <cstdint>
#include <memory>

#include <vekdb/arrow/c_data.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>
#include <vekdb/table.h>

/// What becomes of a cell whose bytes are no UTF-8, which every text of Arrow is.
enum class ArrowBytes : std::uint8_t {
    refuse,   ///< its batch is refused, and the error says which cell it is
    replace,  ///< what is no character becomes U+FFFD
    binary,   ///< all columns are handed over as binary instead of text, byte for byte
};

/// Whether the tags of the rows are handed over, in a column behind the others.
enum class ArrowTags : std::uint8_t {
    none,
    flags,    ///< as booleans: whether a row is tagged
    numbers,  ///< as bytes without sign: the tags themselves
};

/// How a table or a view is handed over.
struct VEKDB_PUBLIC ArrowExport {
    ArrowTags tags = ArrowTags::none;       ///< whether the tags come with them
    ArrowBytes bytes = ArrowBytes::refuse;  ///< what becomes of bytes that are no UTF-8
    /// The most rows of a batch, at least 1.
    std::uint32_t rowsPerBatch = 65'536;
    /// The most bytes of text in a batch; a row that is longer is a batch by itself. Beyond
    /// 2,147,483,647 the columns are large texts, whose places are counted in 64 bits.
    std::uint64_t bytesPerBatch = std::uint64_t{16} << 20;
};

/// Hands the rows that a table or a view shows over as a stream of Arrow: a column of texts for
/// each of its columns (format "u"), without nulls, where a cell without a value is an empty text.
/// The column of the tags is named "Tag", with a number behind where there is such a column.
///
/// The schema's metadata has the parameters, each under "vekdb.parameter:NAME", in the order in
/// which they are saved; that of a column has its type under "vekdb.type" as it is saved, that of
/// the tags has "vekdb.tag" with "flags" or "numbers". A column's name that is no UTF-8 is given
/// with U+FFFD in it, and its bytes stand under "vekdb.name". `importArrow` reads all of this.
///
/// Ownership: the stream is the caller's, who releases it once or gives it to somebody who does.
/// It is a picture of the source as it is now. It shares the rows' texts with the table where they
/// stand in a text that was loaded, holds what it shares, and nothing ends it but its release:
/// what happens to the table or view afterwards, their end included, it does not show. Batches are
/// copies and outlive the stream, schemas too; all of them may be released in any order, and by
/// other threads. The stream itself is for one thread at a time, which may be another one than the
/// table's. Values that were shared are not overwritten where they stand by later edits of the
/// table, which take some bytes more for that.
///
/// Failure: exhausted memory throws here; the stream's functions never throw but answer ENOMEM, or
/// EILSEQ for a cell that is refused, EOVERFLOW for one that 32-bit offsets cannot count, or EINVAL
/// for a call with nothing to write to. A call that failed can be made again. Rows without a record
/// are left out, as by saving.
[[nodiscard]] VEKDB_PUBLIC ArrowArrayStream exportArrow(const VDBBase& source,
                                                        const ArrowExport& how = {});

/// Makes a table of the batches of a stream: a column of texts for each field, a row for each of
/// theirs. What `exportArrow` says in metadata becomes parameters, types of columns and tags again;
/// a table without parameters gets the one of its revision, so that what is saved can be loaded.
///
/// Texts and binary values are taken byte for byte, also where they are large, views or of fixed
/// size. Other values become the texts that people expect: whole numbers and decimals with all
/// their digits, numbers with a point in the fewest digits that are read back as the same, "true"
/// and "false", days and times as ISO 8601 writes them (UTC, with a "Z", where there is a zone),
/// and of a dictionary the value that is meant. Nulls become empty cells. A batch may begin
/// anywhere in its buffers.
///
/// Ownership: the stream is taken and released, whatever happens; the table is the caller's and
/// holds nothing of the stream. Failure: null, and `why` says why, with the column: a type that
/// becomes no text (lists, structures, durations, intervals, maps, unions, runs), lengths, places
/// or numbers of a dictionary that contradict each other, a text with a zero byte, which no log
/// holds, more columns or rows than a table has, a stream that fails. How much memory stands behind
/// a pointer no reader of such a stream can know: take streams from those alone that may write to
/// this process' memory. Exhausted memory throws.
[[nodiscard]] VEKDB_PUBLIC std::unique_ptr<vekdb> importArrow(
    ArrowArrayStream& stream, LightweightString<char>* why = nullptr);
[[nodiscard]] inline std::unique_ptr<vekdb> importArrow(ArrowArrayStream&& stream,
                                                        LightweightString<char>* why = nullptr) {
    return importArrow(stream, why);
}
