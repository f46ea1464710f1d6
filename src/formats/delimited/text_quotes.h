#pragma once

#include <string_view>

namespace vek::formats {

/// Whether the quotes of a text are part of its cells, whatever they stand around, as they are for
/// many programs that write tabs between cells and quote nothing. So it is where a cell has quotes
/// that no program would write which quotes cells, and none has quotes that it needs: around a tab,
/// or a quote that is written twice. With other delimiters than tabs it never is.
bool hasTextQuotes(std::string_view text, char delimiter);
/// Whether a cell begins with a quote.
bool hasQuotedCell(std::string_view text, char delimiter);

}  // namespace vek::formats
