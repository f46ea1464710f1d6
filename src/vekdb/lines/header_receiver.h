#pragma once

#include <cstddef>
#include <string_view>

#include <vekdb/field_types.h>

/// Receives what stands before the records of a file: its parameters, then its columns.
class HeaderReceiver {
public:
    /// Those of before are no more.
    virtual void beginParameters() = 0;
    virtual void addParameter(std::string_view name, std::string_view value) = 0;
    virtual void setRevision(int revision) = 0;

    /// The file says that it has so many columns; how many of them there can be.
    virtual unsigned announceColumns(std::size_t count) = 0;
    /// They can be given types and names now.
    virtual void makeColumns() = 0;
    virtual void setType(unsigned column, DBFieldTypes::eType type) = 0;
    /// The file has no types, and the column's name tells whether it holds timecodes.
    virtual void guessType(unsigned column, bool holdsTimecodes) = 0;
    /// The types are known; the names follow.
    virtual void endTypes() = 0;
    virtual void setName(unsigned column, const char* name) = 0;
    /// This line of the column header has another number of values than its first one.
    virtual void refuse(int line) = 0;

protected:
    ~HeaderReceiver() = default;
};
