#include <vekdb/formats/merging.h>

#include "formats/changing/merger.h"
#include "formats/face/guarded.h"
#include "formats/face/inside.h"

namespace vek {

namespace {

using formats::Merger;

Merger::Prefer preferOf(MergeOptions::Prefer prefer) {
    switch (prefer) {
        case MergeOptions::first:
            return Merger::Prefer::first;
        case MergeOptions::last:
            return Merger::Prefer::last;
        case MergeOptions::filled:
            return Merger::Prefer::filled;
        default:
            return Merger::Prefer::report;
    }
}

MergeConflict valueOf(const Merger::Conflict& conflict) {
    MergeConflict value;
    value.kind = conflict.kind == Merger::Conflict::key ? MergeConflict::key : MergeConflict::cell;
    value.file = conflict.file;
    value.line = conflict.line;
    value.column = conflict.column;
    value.value = conflict.value;
    value.kept = conflict.kept;
    if (conflict.row != 0) value.row = static_cast<unsigned>(conflict.row - 1);
    return value;
}

[[noreturn]] void refuse(const LogInside& inside, const char* found, const char* expected) {
    throw formats::Failure{formats::wrongUsage, inside.log.name, {0, "", found, expected, ""}};
}

void requireJoinable(const LogInside& into, const LogInside& from, const MergeOptions& options) {
    if (&into == &from) refuse(into, "is joined to itself", "another log");
    if (!options.joinsUnlike) formats::requireSameCounting(into.log, from.log);
}

// While in scope, rows that are added to the table are shown by a log that does not show all.
class ShowsNewRows {
public:
    ShowsNewRows(LogInside& inside, std::size_t most) : inside_(inside) {
        if (inside.kept) inside.kept->reserve(inside.kept->size() + most);
    }
    ~ShowsNewRows() {
        for (; inside_.kept && row_ < inside_.log.rowCount(); ++row_) inside_.kept->push_back(row_);
    }
    ShowsNewRows(const ShowsNewRows&) = delete;
    ShowsNewRows& operator=(const ShowsNewRows&) = delete;

private:
    LogInside& inside_;
    unsigned row_ = inside_.log.rowCount();
};

void add(const LogInside& from, LogInside& into, Merger& merger) {
    const ShownRows rows(from);
    const ShowsNewRows shows(into, rows.log().rowCount());
    merger.add(rows.log());
}

}  // namespace

std::string MergeConflict::text() const {
    return formats::worded({kind == key ? Merger::Conflict::key : Merger::Conflict::cell, file,
                            line, column, value, kept, row ? *row + std::size_t{1} : 0});
}

Result<Merged> merge(Log& into, const std::vector<Log>& others, const MergeOptions& options) {
    return guarded([&]() -> Result<Merged> {
        LogInside& inside = LogInside::of(into);
        if (inside.showsAll()) inside.kept.reset();
        for (const Log& from : others) requireJoinable(inside, LogInside::of(from), options);
        Merged merged;
        const auto tell = [&](const Merger::Conflict& conflict) {
            if (merged.conflicts.size() < options.mostConflicts) {
                merged.conflicts.push_back(valueOf(conflict));
            }
        };
        const auto note = [&](const std::string& text) { merged.notes.push_back(text); };
        Merger merger(inside.log, preferOf(options.prefer), tell, note);
        const std::vector<unsigned>* const rows = inside.kept ? &*inside.kept : nullptr;
        if (!options.key.empty()) merger.useKey(options.key, rows);
        for (const Log& from : others) add(LogInside::of(from), inside, merger);
        for (MergeConflict& conflict : merged.conflicts) {
            if (conflict.row) conflict.row = inside.placeOf(*conflict.row);
        }
        merged.cells = merger.conflicts();
        merged.keys = merger.repeatedKeys();
        return merged;
    });
}

}  // namespace vek
