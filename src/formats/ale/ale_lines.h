#pragma once

#include <string>

#include "formats/ale/ale_form.h"

/// Lines of log exchange files, without their ends.
namespace vek::formats {

/// A row: so many of the sheet's values, and empty ones behind those.
void addAleRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
               Losses& losses);
/// The line of names, and one of a heading.
std::string aleNames(const AleForm& form, Losses& losses);
/// Tells what a reader of the whole heading, up to the rows, does not find as it was meant.
void tellAleHeading(std::string_view heading, const AleForm& form, Losses& losses);
std::string aleEntry(const std::string& name, const std::string& value, Losses& losses);

}  // namespace vek::formats
