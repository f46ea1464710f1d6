#include "tools/vek/timecode/speeds.h"

#include <algorithm>

#include "tools/vek/timecode/notes.h"

namespace vek::timecode {

namespace {

unsigned edlColumnOf(const Log& log, EdlColumn column) {
    return log.findColumn(edlColumnNames[column]);
}

bool mayHaveSpeed(std::string_view cell) {
    return cell.find("M2") != cell.npos || cell.find("m2") != cell.npos;
}

}  // namespace

Speeds::Speeds(Work& work, int newNominal)
    : work_(work),
      newNominal_(newNominal),
      start_(edlColumnOf(work.log, edlSourceIn)),
      reel_(edlColumnOf(work.log, edlReel)) {
    if (start_ == noColumn) return;
    notes_ = noteColumns(work_.log, edlCommentsName);
    strays_ = noteColumns(work_.log, edlCommentsBeforeName);
}

void Speeds::move() {
    if (notes_.empty() && strays_.empty()) return;
    std::unordered_map<unsigned, std::string> starts;
    std::unordered_map<unsigned, std::string> reels;
    for (const Edit& edit : work_.edits) {
        if (edit.column == start_) starts[edit.row] = edit.after;
        if (edit.column == reel_) reels[edit.row] = edit.after;
    }
    const bool isOtherRate = newNominal_ != work_.counting.nominal();
    for (unsigned row : work_.rows) {
        const auto start = starts.find(row);
        const auto reel = reels.find(row);
        const std::string_view startBefore = work_.log.cell(row, start_);
        EdlMove move{startBefore, startBefore, work_.counting.nominal(), newNominal_};
        if (reel_ != noColumn) move.reel = move.newReel = work_.log.cell(row, reel_);
        if (start != starts.end()) move.newSourceIn = start->second;
        if (reel != reels.end()) move.newReel = reel->second;
        const bool isEdited = start != starts.end() || reel != reels.end();
        if (isEdited || (isOtherRate && !keepsSource(row))) notesOf(row, move);
    }
}

bool Speeds::concern(const std::vector<Edit>& edits) const {
    return (!notes_.empty() || !strays_.empty()) &&
           std::ranges::any_of(edits, [&](const Edit& edit) {
               return edit.column == start_ || edit.column == reel_;
           });
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
    if (move.newSourceIn != move.sourceIn || move.nominal != move.newNominal) {
        for (unsigned column : strays_) tellStrays(row, column);
    }
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
