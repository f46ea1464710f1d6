#include "tools/vek/timecode/speeds.h"

#include "tools/vek/timecode/notes.h"

namespace vek::timecode {

namespace {

bool mayHaveSpeed(std::string_view cell) {
    return cell.find("M2") != cell.npos || cell.find("m2") != cell.npos;
}

}  // namespace

Speeds::Speeds(Work& work, int newNominal)
    : work_(work), newNominal_(newNominal), start_(work.log.findColumn("Source In")) {
    if (start_ == noColumn) return;
    notes_ = noteColumns(work_.log, edlCommentsName);
    strays_ = noteColumns(work_.log, edlCommentsBeforeName);
}

void Speeds::move() {
    if (notes_.empty() && strays_.empty()) return;
    std::unordered_map<unsigned, std::string> starts;
    for (const Edit& edit : work_.edits) {
        if (edit.column == start_) starts[edit.row] = edit.after;
    }
    const bool isOtherRate = newNominal_ != work_.counting.nominal();
    for (unsigned row : work_.rows) {
        const auto moved = starts.find(row);
        const std::string_view before = work_.log.cell(row, start_);
        if (moved != starts.end())
            notesOf(row, {before, moved->second, work_.counting.nominal(), newNominal_});
        else if (isOtherRate && !keepsSource(row))
            notesOf(row, {before, before, work_.counting.nominal(), newNominal_});
    }
}

// A clip of a timeline with a rate of its own, whose source stays, which is told.
bool Speeds::keepsSource(unsigned row) const {
    const std::optional<FrameRate> own = work_.counting.ownRate(row, start_);
    return own && !own->isAsFastAs(*work_.counting.rate());
}

// Comments of people may begin so, too, outside an edit list; a speed ends with a timecode.
bool Speeds::isSpeed(std::string_view line) const {
    if (!isEdlMotion(line)) return false;
    const std::string_view last = line.substr(line.find_last_of(" \t") + 1);
    return work_.log.format == Format::edl || parseTimecode(last);
}

void Speeds::notesOf(unsigned row, const EdlMove& move) {
    for (unsigned column : strays_) tellStrays(row, column);
    for (unsigned column : notes_) {
        if (!mayHaveSpeed(work_.log.cell(row, column))) continue;
        work_.moveNote(row, column,
                       [&](std::string_view line) { return noteOf(row, column, line, move); });
    }
}

std::string Speeds::noteOf(unsigned row, unsigned column, std::string_view line,
                           const EdlMove& move) {
    if (!isSpeed(line)) return std::string(line);
    std::optional<std::string> moved = movedEdlMotion(line, move);
    if (moved) return *moved;
    work_.leaveLine(row, column, line, "a speed in tenths of a frame, from the start of the event");
    return std::string(line);
}

// In front of an event a speed stands behind an FCM line, and may be that of any other event.
void Speeds::tellStrays(unsigned row, unsigned column) {
    const std::string_view cell = work_.log.cell(row, column);
    if (!mayHaveSpeed(cell)) return;
    for (std::string_view line : split(cell, '\n')) {
        if (isSpeed(line)) work_.leaveLine(row, column, line, "a speed just behind its event");
    }
}

}  // namespace vek::timecode
