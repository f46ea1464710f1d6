#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/format.h>
#include <vekdb/formats/problem.h>
#include "formats/terms.h"

/// The formats that there are. A new one is a room with its reader and its writer, a name in
/// `Format` (vekdb/formats/format.h) and a line of the table in formats.cpp.
namespace vek::formats {

class Input;
class Losses;
class Output;
struct InPlaceWays;
struct Log;
struct Sheet;
struct WriteStyle;

/// "vekdb", "csv", ...
const char* formatName(Format format);

/// The names of those that can be read, and of those that can be written, "|" between them.
const std::string& readableFormats();
const std::string& writableFormats();

/// A format that can be read, and one that can be written. A Failure with wrongUsage for a name
/// that no such format has.
Format formatNamed(const std::string& name);
Format targetNamed(const std::string& name);

/// One to write, by the ending of a file's name; a Failure that says which endings there are.
Format targetOfPath(const std::string& path, const Terms& terms);
bool hasTargetEnding(const std::string& path);
/// What files of a format that can be written are called by: ".csv".
std::string_view endingOf(Format format);

/// What a text is taken for that begins so, in a file of that name.
Format recognised(const std::string& path, std::string_view head);

/// Whether the bytes are those of a workbook or of what people take for one, an old one or one
/// of another program; no text begins so.
bool isWorkbook(std::string_view head);

/// Fills the log with what the reader of the format finds. Rows of which a wanted condition does
/// not hold may be left out.
void readAs(Format format, Input& input, const std::vector<std::string>& wanted, Log& log);

/// How logs of the format are changed in place; null for one of which none is.
const InPlaceWays* inPlaceWays(Format format);

/// Tells what is wrong with the text of a log that was read from the input and that its rows do not
/// show any more; and what its rows show that the format has no place for.
using Tell = std::function<void(const Problem&)>;
void tellText(Input& input, const Log& log, const Tell& tell);
void tellRows(const Log& log, const Tell& tell);

/// Writes the sheet and adds up what is lost. The output is not closed.
void writeSheet(const Sheet& sheet, Format target, const WriteStyle& style, Output& out,
                Losses& losses);

}  // namespace vek::formats
