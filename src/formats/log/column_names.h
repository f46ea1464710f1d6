#pragma once

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

/// Gives the columns names that differ, and one to those that have none, as long as it lives, for
/// work that goes by names.
class DistinctNames {
public:
    explicit DistinctNames(const Log& log);
    ~DistinctNames();
    DistinctNames(const DistinctNames&) = delete;
    DistinctNames& operator=(const DistinctNames&) = delete;

    /// Those of all columns without what tells them apart.
    std::vector<std::string> names() const;

    /// To be told of a column that is removed, and of one that gets another name for good.
    void removed(unsigned column);
    void renamed(unsigned column, const std::string& name);

private:
    struct Own {
        unsigned column;
        std::string name;
    };

    void makeDistinct(unsigned column);

    const Log& log_;
    std::vector<Own> own_;
};

}  // namespace vek::formats
