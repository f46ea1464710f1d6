#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/log/column_map.h"
#include "formats/log/log.h"

namespace vek::formats {

/// Adds a column behind the others, or finds the one that has the name. A Failure with `unwritable`
/// where a log has as many as it can hold. Where memory ends, a column whose name another one had
/// before may be there without it.
unsigned addColumn(Log& log, std::string_view name, DBFieldTypes::eType type = DBFieldTypes::text);
/// The same for several at once, noColumn for those that there is no room for.
std::vector<unsigned> addColumns(Log& log, const std::vector<DBFieldDesc>& columns);
/// To be told of a table whose columns were named or removed by others than ColumnEdits.
void askRangesByNewNames(Log& log);
/// That Failure, for a column that came from the named log.
[[noreturn]] void refuseFurtherColumn(const std::string& from, std::string_view name);

struct NewName {
    unsigned column = 0;
    std::string was;
    std::string to;
};

/// Edits the columns of a log, and with them the field map, which names columns by position. What
/// cannot be is a Failure with wrongUsage, or with unwritable where there is no room, and nothing
/// is changed then.
class ColumnEdits {
public:
    explicit ColumnEdits(Log& log);

    void add(const std::string& name, DBFieldTypes::eType type);
    void remove(unsigned column);
    void rename(unsigned column, const std::string& was, const std::string& to);
    /// All at once, so that names may change places. None of them is looked at.
    void rename(const std::vector<NewName>& names);
    void setType(unsigned column, DBFieldTypes::eType type);
    /// These are shown, in this order; all others are hidden behind them.
    void order(const std::vector<unsigned>& shown);

private:
    void removeFromTable(unsigned column);
    std::string freeName() const;
    void findAnotherByName(unsigned column);
    void forgetSource(unsigned column);
    void refuseTaken(const std::string& name) const;
    void requireTypes() const;
    void store();

    Log& log_;
    std::optional<ColumnMap> map_;
};

}  // namespace vek::formats
