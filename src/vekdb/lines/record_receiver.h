#pragma once

#include <cstddef>

class dbrecord;

/// Receives the records of a file while they are read.
class RecordReceiver {
public:
    /// An empty record, which the first line is read into.
    virtual dbrecord& first() = 0;
    /// Keeps the record that was read, or does not. The record that the next line is read into:
    /// another one where it was kept, the same one where it was not.
    virtual dbrecord& take(dbrecord& read) = 0;
    /// Whether every record is kept.
    virtual bool takesAll() const = 0;
    /// About so many more records are to come.
    virtual void expect(std::size_t more) = 0;
    /// Behind so many records stands a line of another number of values than there are columns.
    virtual void refuse(unsigned records) = 0;

protected:
    ~RecordReceiver() = default;
};
