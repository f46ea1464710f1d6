#pragma once

#include <optional>
#include <string_view>

namespace vek {

/// The formats of logs. Some are only read, some only written.
enum class Format {
    table,     ///< the library's own table files
    csv,       ///< comma-separated text with quotes
    tsv,       ///< text between tabs
    plainCsv,  ///< comma-separated text as the core reads it; only read
    json,      ///< an array of objects
    jsonl,     ///< an object a line
    ale,       ///< log exchange files
    edl,       ///< edit lists of CMX 3600 form
    otio,      ///< OpenTimelineIO timelines
    fcpxml,    ///< FCPXML timelines; only read
    xlsx,      ///< Excel workbooks; one sheet is read
    markdown,  ///< only written
    html,      ///< only written
    parquet,   ///< files of columns, which DuckDB writes where it is installed; only written
    arrow,     ///< files of columns, which pyarrow or apache-arrow writes; only written
};

/// "vekdb", "csv", "tsv", "plain-csv", "json", "jsonl", "ale", ...: a text that lives as long as
/// the process.
std::string_view nameOf(Format format) noexcept;
/// The format of such a name; nothing for any other text.
std::optional<Format> formatOfName(std::string_view name) noexcept;
/// The format that the ending of a file's name says, whatever its case; nothing for any other.
std::optional<Format> formatOfPath(std::string_view path) noexcept;
/// Whether logs of the format can be read, and whether they can be written.
bool canRead(Format format) noexcept;
bool canWrite(Format format) noexcept;

}  // namespace vek
