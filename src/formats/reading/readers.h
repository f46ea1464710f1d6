#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <vekdb/host/text_block.h>
#include "formats/input/input.h"
#include "formats/log/log.h"

/// One reader a format. Each fills `log` (table, lines, problems) and keeps every cell as it
/// stands: nothing is trimmed, rounded or given another type.
namespace vek::formats {

/// The bytes that a log is read from; its rows stand on them afterwards.
struct Text {
    Quor::Ptr<TextBlock> block;
    std::size_t start = 0;  ///< of the log in them

    std::string_view view() const { return {block->data() + start, block->size() - start}; }
};

/// The name of the format that a text seems to have that begins so and is none of the tried one:
/// "csv", "tsv" or "json"; "" where it does not seem so.
std::string otherFormat(Format tried, std::string_view head);

/// Notes where the rows stand in the file of a log that is to be changed, of a format in which only
/// all of them together tell it.
void notePlacesAsRead(Log& log);

/// Leaves out rows of an undamaged file that do not hold the wanted "contains" conditions.
void readTable(Input& input, const Wanted& wanted, Log& log);
void readPlainCsv(Input& input, Log& log);
void readDelimited(Text text, char separator, Log& log);
void readAle(Text text, Log& log);
void readEdl(Text text, Log& log);
void readJson(Text text, Log& log);
void readOtio(Text text, Log& log);
void readFcpxml(Text text, Log& log);
void readXlsx(Input& input, Log& log);
/// The names of a workbook's sheets, in their order.
std::vector<std::string> sheetsOfXlsx(Input& input, const Opening& opening);

}  // namespace vek::formats
