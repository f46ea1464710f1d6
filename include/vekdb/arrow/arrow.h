#pragma once

#include <cstdint>

#include <vekdb/arrow/c_data.h>
#include <vekdb/host/visibility.h>

class VDBBase;

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
    ArrowTags tags = ArrowTags::none;
    ArrowBytes bytes = ArrowBytes::refuse;
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
/// EILSEQ for a cell that is refused, or EINVAL for a call with nothing to write to. A call that
/// failed can be made again. Rows without a record are left out, as by saving.
[[nodiscard]] VEKDB_PUBLIC ArrowArrayStream exportArrow(const VDBBase& source,
                                                        const ArrowExport& how = {});
