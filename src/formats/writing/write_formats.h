#pragma once

#include "formats/writing/writers.h"

/// One writer a format; see writeSheet.
namespace vek::formats {

void writeTable(const Sheet& sheet, Output& out, Losses& losses);
void writeDelimited(const Sheet& sheet, char separator, const WriteStyle& style, Output& out,
                    Losses& losses);
void writeJson(const Sheet& sheet, bool asLines, Output& out, Losses& losses);
void writeAle(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);
void writeEdl(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);
void writeOtio(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);
void writeMarkdown(const Sheet& sheet, Output& out, Losses& losses);
void writeHtml(const Sheet& sheet, Output& out, Losses& losses);
void writeParquet(const Sheet& sheet, Output& out, Losses& losses);
void writeArrow(const Sheet& sheet, Output& out, Losses& losses);
void writeXlsx(const Sheet& sheet, Output& out, Losses& losses);

}  // namespace vek::formats
