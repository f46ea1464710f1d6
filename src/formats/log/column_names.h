#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/log/log.h"

/// Names that several columns of a log have, case ignored. "Reel#2" is the second of them. A column
/// without a name is "[]", and "[]#2" the second one.
namespace vek::formats {

constexpr const char* unnamedAddress = "[]";

/// Names that several columns have, and which of them a column has.
struct RepeatedNames {
    std::vector<RepeatedName> all;
    std::unordered_map<unsigned, std::size_t> at;

    /// Makes them those of a log.
    void giveTo(Log& log) && noexcept;
};

/// Of columns with these names, those with a name that another one has, each name once, in the
/// order of its first column.
RepeatedNames findRepeatedNames(const std::vector<std::string>& names);

/// Keeps them with the log; the same, and tells them as problems.
void keepRepeatedNames(Log& log);
void noteRepeatedNames(Log& log);

/// The repeated name of a column; null where only this one has its name.
const RepeatedName* repeatedNameOf(const Log& log, unsigned column);

/// Which of the columns with its name a column is: 1 for the first, and for the only one.
std::size_t turnOf(const Log& log, unsigned column);

/// The name by which a log finds a column among all: its own, with its turn where others have it.
std::string ownNameOf(const Log& log, unsigned column);

/// "Reel#1 or Reel#2", "Reel#1 to Reel#5".
std::string choicesOf(const Log& log, const RepeatedName& repeated);

/// The column that "Reel#2" says, or noColumn.
unsigned numberedColumn(const Log& log, std::string_view text);

/// The column that is the first, second, ... of a name, or noColumn.
unsigned columnOfTurn(const Log& log, std::string_view name, std::size_t turn);

/// For each column of `a` the one of `b` with its name, the second of a name for the second and
/// so on; noColumn where there is none.
std::vector<unsigned> sameColumns(const Log& a, const Log& b);

/// What is told of columns that only one of two logs has where the other has one whose name is
/// another only by the case of letters beyond ASCII, or by what letters are made of.
std::vector<Problem> namesAlmostAs(const Log& log, const Log& as);

/// Whether the heading has no name for a column.
bool isUnnamed(const Log& log, unsigned column);

/// A person named one of the columns that have no name: they are columns like others then.
void nameColumns(Log& log, const std::vector<unsigned>& columns);

}  // namespace vek::formats
