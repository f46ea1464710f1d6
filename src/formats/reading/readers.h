#pragma once

#include <vekdb/host/text_block.h>
#include "formats/log/log.h"
#include "formats/reading/input.h"

/// One reader a format. Each fills `log` (table, lines, problems) and keeps every cell as it
/// stands: nothing is trimmed, rounded or given another type.
namespace vek::formats {

/// The bytes that a log is read from; its rows stand on them afterwards.
struct Text {
    Quor::Ptr<TextBlock> block;
    std::size_t start = 0;  ///< of the log in them

    std::string_view view() const { return {block->data() + start, block->size() - start}; }
};

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

}  // namespace vek::formats
