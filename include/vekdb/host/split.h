#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

#include <vector>

namespace Quor {

/// May be added up.
enum SplitFlags : unsigned {
    splitDropsEmpty = 1,        ///< inner pieces of no characters are left out
    splitKeepsQuotedWhole = 2,  ///< a separator between double quotes does not split
    splitKeepsSeparator = 4,    ///< a piece keeps the separator that ends it
};

/// Splits text at a separator, appends the pieces to out and returns out's new
/// size. A double quote after a backslash neither opens nor closes a quotation;
/// quotes and backslashes stay in the pieces. A separator at the very start or
/// end of a longer text gives no empty piece there.
VEKDB_PUBLIC unsigned splitIf(const LightweightString<char>& text, char separator,
                              std::vector<LightweightString<char>>& out, unsigned flags);

}  // namespace Quor
