#pragma once

#include <vekdb/host/visibility.h>

class dbrecord;
class vekdb;

/// Which rows of a file a table takes while it is loaded, so that little memory and time go into
/// a large file of which few rows are wanted. Belongs to the caller and is used until the load
/// returns. What it throws leaves the table freed and goes on to the caller.
class VEKDB_PUBLIC RowChoice {
public:
    virtual ~RowChoice() = default;

    /// The table's columns and parameters are known and none of its rows is there. The query that
    /// it has when this returns, set here as a rule, is put to every row of the file; nothing else
    /// of the table may be changed here. Called once more where the file must be read anew; the
    /// rows taken before are gone then.
    virtual void begin(vekdb& table) = 0;
    /// Whether the table takes the file's next row. `matches`: the row answers the query, or there
    /// is none. A record that is not taken ends with this call. Nothing of the table may be changed
    /// in it but the query, and another one is not for the rows of this load.
    virtual bool takes(const dbrecord& record, bool matches) = 0;
};
