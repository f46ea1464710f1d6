#pragma once

#include <string_view>

/// By what a text is known to be of a format, whatever its file is called.
namespace vek::formats {

/// The first line that is not blank, without blanks at its ends.
std::string_view firstFilledLine(std::string_view head);

/// An object of names and values or a list of such, as no line of cells begins.
bool isJson(std::string_view head);

/// A title with events or what belongs to them, or with nothing that says it is another's.
bool isEditList(std::string_view head);
/// A title in front of cells, or one that is a cell, and nothing of an edit list. What is called by
/// the ending of such a format may have a line without a mark.
bool isTitleOfCells(std::string_view head, bool isWhole, bool isCalledSo);

/// "Heading" in front of entries or of columns, and not of values.
bool isLogExchange(std::string_view head);

}  // namespace vek::formats
