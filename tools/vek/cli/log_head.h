#pragma once

#include <optional>
#include <string>
#include <vector>

#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

/// The beginning of a log, for what has to answer while somebody writes a command.
namespace vek {

/// How much of a file is looked at for its columns, more where that is not the whole heading, and
/// for the values of one.
constexpr std::size_t bytesForColumns = 1 << 18;
constexpr std::size_t bytesForValues = 2 << 20;

/// As much of a log as its first bytes tell, all its columns as a rule; nothing for what is no
/// log, or no file that can be read again. The last row is not whole where the file has more bytes.
struct LogHead {
    Log log;
    bool isWhole = false;
};
std::optional<LogHead> headOfLog(const std::string& path, const Opening& opening,
                                 std::size_t bytes);

/// The names of the sheets of a workbook of at most 64 MB; none for other files.
std::vector<std::string> sheetsOfWorkbook(const std::string& path, const Opening& opening);

}  // namespace vek
