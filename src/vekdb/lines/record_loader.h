#pragma once

#include "vekdb/lines/record_lines.h"
#include "vekdb/lines/record_receiver.h"

/// Reads records, one a line, until a line says that there are no more: an essentially empty one,
/// or one with another number of values than there are columns.
class RecordLoader {
public:
    /// With `skipFirst` the first line is passed over.
    RecordLoader(RecordLines& lines, RecordReceiver& receiver, unsigned columns, bool skipFirst)
        : lines_(lines), receiver_(receiver), columns_(columns), skips_(skipFirst) {}

    /// Reads at most `most` records and hands them over; how many it read.
    unsigned load(unsigned most);

private:
    bool readNext(dbrecord& record);
    bool isComplete(const LineScan& line);
    bool replacePassedOver(dbrecord& record);
    void expectRest(unsigned most);

    RecordLines& lines_;
    RecordReceiver& receiver_;
    const unsigned columns_;
    const bool skips_;
    unsigned loaded_ = 0;
};
