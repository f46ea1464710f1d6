#pragma once

#include <vekdb/record.h>
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_strings.h"

/// What the table may do to its records and nobody else: tags, the changed flag, and standing
/// a record on slices.
class RecordAccess {
public:
    static void setTag(dbrecord& record, unsigned value) {
        record.tag_ = static_cast<std::uint8_t>(value);
    }
    /// The record's `fieldView`, for loops over all rows.
    static std::string_view view(const dbrecord& record, unsigned index) {
        if (index >= record.stored_) return {"", 0};
        if (record.storage_ == dbrecord::Storage::slices) return record.values_.slices->view(index);
        return record.values_.strings->view(index);
    }
    // Have the processor fetch what `view` will read first, and then, when it is there, the start
    // of the text or a value of it. Always inlined: as functions they would be taken to have no
    // effect, and calls of them would go away.
    [[gnu::always_inline]] static void expectView(const dbrecord& record) {
        __builtin_prefetch(record.values_.slices);
    }
    [[gnu::always_inline]] static void expectText(const dbrecord& record) {
        if (record.storage_ != dbrecord::Storage::slices) return;
        __builtin_prefetch(record.values_.slices->first());
    }
    // A line of usual length takes three of the processor's.
    [[gnu::always_inline]] static void expectLine(const dbrecord& record) {
        if (record.storage_ != dbrecord::Storage::slices) return;
        const char* const first = record.values_.slices->first();
        for (std::size_t at = 0; at < 192; at += 64) __builtin_prefetch(first + at);
    }
    [[gnu::always_inline]] static void expectValue(const dbrecord& record, unsigned index) {
        __builtin_prefetch(view(record, index).data());
    }
    /// Whether the values are those that they were when the record was marked.
    static bool isKeyed(const dbrecord& record) { return record.isKeyed_; }
    static void markKeyed(const dbrecord& record) { record.isKeyed_ = true; }
    /// Whether the address of the record is kept somewhere after the record itself is gone.
    static bool isListed(const dbrecord& record) { return record.isListed_; }
    static void markListed(dbrecord& record) { record.isListed_ = true; }
    static void setChanged(const dbrecord& record, bool changed) { record.changed_ = changed; }

    /// What `set_container` does, for whoever knows the table as an owner alone.
    static void setOwner(dbrecord& record, RecordOwner* owner) { record.owner_ = owner; }
    static const RecordOwner* owner(const dbrecord& record) { return record.owner_; }

    /// What reading a line does to a record that it filled: the record is changed, its table
    /// modified and stamped.
    static void markRead(dbrecord& record) { record.markRead(); }

    /// Makes the record's values the slices; the caller has counted the record's reference.
    static void adopt(dbrecord& record, LineSlices* slices, unsigned short values) {
        if (record.values_.strings != nullptr) record.release();
        record.values_.slices = slices;
        record.storage_ = dbrecord::Storage::slices;
        record.count_ = record.stored_ = values;
        record.isKeyed_ = false;
    }
    /// Makes the record's values the first ones of another that stands on slices, at most so
    /// many, and copies none. False, and nothing done, where the other keeps strings.
    static bool share(dbrecord& record, const dbrecord& other, unsigned most) {
        if (other.storage_ != dbrecord::Storage::slices) return false;
        const unsigned count = other.stored_ < most ? other.stored_ : most;
        if (count == 0) return drop(record), true;
        other.values_.slices->share();
        adopt(record, other.values_.slices, static_cast<unsigned short>(count));
        return true;
    }
    /// Empties the list of values of a record on slices that no other reads, whose reference is
    /// the caller's then. Null, and nothing done, for every other record.
    static LineSlices* leaveSlices(dbrecord& record) {
        if (record.storage_ != dbrecord::Storage::slices) return nullptr;
        LineSlices* slices = record.values_.slices;
        if (slices->isShared()) return nullptr;
        record.values_.strings = nullptr;
        record.storage_ = dbrecord::Storage::strings;
        record.count_ = record.stored_ = 0;
        return slices;
    }
    /// Gives each of two records the other's values. Owner, tag and flags stay; takes no memory.
    static void exchange(dbrecord& a, dbrecord& b) noexcept;
    /// Makes the list of values longer; those behind the stored ones are empty.
    static void widen(dbrecord& record, unsigned short count) {
        if (record.count_ < count) record.count_ = count;
    }
    /// Empties the list of values: the count is 0 afterwards.
    static void drop(dbrecord& record) { record.resize(0); }
    /// The slices that the record stands on, all of its stored values; null for strings.
    static const LineSlices* slices(const dbrecord& record) {
        const bool onSlices = record.storage_ == dbrecord::Storage::slices;
        return onSlices ? record.values_.slices : nullptr;
    }
    /// How many values the record stores; those behind them are empty.
    static unsigned storedCount(const dbrecord& record) { return record.stored_; }
    /// Sets a stored value of a record that stands on slices with a small block for its text
    /// alone. False, and nothing done, where the value is to be a string.
    static bool patch(dbrecord& record, unsigned index, std::string_view value);
    /// Appends a value behind the last without marking anything changed.
    static void append(dbrecord& record, std::string_view value);
    /// Takes the memory that removing the value needs.
    static void prepareRemoval(dbrecord& record, unsigned index) { record.prepareRemoval(index); }
    /// Stores a value, in range, without marking anything changed.
    static void place(dbrecord& record, unsigned index, LightweightString<char> value);
};
