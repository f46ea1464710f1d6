#include "vekdb/record/record_strings.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr unsigned mostPatches = 4;

// Memory comes in steps; what is left of the last one is room for a longer text.
std::size_t roundedUp(std::size_t bytes) {
    constexpr std::size_t step = 16;
    return (bytes + step / 2 + step - 1) / step * step - step / 2;
}

ValuePatch* newPatch(void* place, std::size_t bytes, unsigned index, bool isInFront) {
    const auto room = static_cast<std::uint16_t>(bytes - sizeof(ValuePatch));
    return new (place) ValuePatch{nullptr, static_cast<std::uint16_t>(index), 0, room, isInFront};
}

// The block that a patch was made with.
void* blockOf(ValuePatch* patch) {
    if (!patch->isInFront) return patch;
    return reinterpret_cast<char*>(patch) - sizeof(RecordStrings);
}

}  // namespace

// The text may be that of the patch itself.
void ValuePatch::write(std::string_view value) {
    std::memmove(text(), value.data(), value.size());
    text()[value.size()] = '\0';
    size = static_cast<std::uint16_t>(value.size());
}

RecordStrings* RecordStrings::make(unsigned room) {
    static_assert(alignof(RecordStrings) >= alignof(String));
    void* block = ::operator new(sizeof(RecordStrings) + room * (sizeof(String) + sizeof(bool)));
    auto* strings =
        new (block) RecordStrings{nullptr, nullptr, 0, static_cast<unsigned short>(room)};
    for (unsigned i = 0; i < room; ++i) {
        new (strings->values() + i) String();
    }
    std::memset(strings->own(), 0, room);
    return strings;
}

RecordStrings* RecordStrings::copy(const RecordStrings& other, unsigned room) {
    std::unique_ptr<RecordStrings, void (*)(RecordStrings*)> guard(
        make(std::max<unsigned>({room, other.room, other.underCount})), destroy);
    RecordStrings* const copy = guard.get();
    for (unsigned i = 0; i < other.room; ++i) {
        copy->values()[i] = other.values()[i];
        copy->own()[i] = other.own()[i];
    }
    for (const ValuePatch* patch = other.patches; patch != nullptr; patch = patch->next) {
        if (other.standsUnder(patch->index)) copy->set(patch->index, String(patch->view()));
    }
    if (other.under != nullptr) {
        other.under->store->addReferences(1);
        copy->under = other.under;
        copy->underCount = other.underCount;
        copy->leftOut = other.leftOut;
    }
    return guard.release();
}

RecordStrings* RecordStrings::over(const LineSlices* slices, unsigned count, unsigned room) {
    RecordStrings* strings = make(room < count ? count : room);
    strings->under = slices;
    strings->underCount = static_cast<unsigned short>(count);
    return strings;
}

RecordStrings* RecordStrings::standing(const LineSlices* slices, unsigned count) {
    void* block = ::operator new(sizeof(RecordStrings));
    return new (block) RecordStrings{slices, nullptr, static_cast<unsigned short>(count), 0};
}

RecordStrings* RecordStrings::patched(const LineSlices* slices, unsigned count, unsigned index,
                                      std::string_view value) {
    static_assert(alignof(RecordStrings) >= alignof(ValuePatch));
    const std::size_t bytes =
        roundedUp(sizeof(RecordStrings) + sizeof(ValuePatch) + value.size() + 1);
    void* block = ::operator new(bytes);
    auto* strings =
        new (block) RecordStrings{slices, nullptr, static_cast<unsigned short>(count), 0};
    strings->patches = newPatch(strings + 1, bytes - sizeof(RecordStrings), index, true);
    strings->patches->write(value);
    return strings;
}

RecordStrings* RecordStrings::grown(RecordStrings* strings, unsigned room) {
    RecordStrings* larger = make(std::max<unsigned>(room, strings->underCount));
    larger->under = std::exchange(strings->under, nullptr);
    larger->underCount = strings->underCount;
    larger->leftOut = strings->leftOut;
    for (unsigned i = 0; i < strings->room; ++i) {
        larger->values()[i] = std::move(strings->values()[i]);
        larger->own()[i] = strings->own()[i];
    }
    larger->patches = std::exchange(strings->patches, nullptr);
    if (!larger->hasBlock(strings)) destroy(strings);
    return larger;
}

void RecordStrings::destroy(RecordStrings* strings) {
    for (unsigned i = 0; i < strings->room; ++i) {
        strings->values()[i].~String();
    }
    if (strings->under != nullptr) strings->under->store->release();
    const bool isPatchsBlock = strings->hasBlock(strings);
    for (ValuePatch* patch = strings->patches; patch != nullptr;) {
        ValuePatch* next = patch->next;
        ::operator delete(blockOf(patch));
        patch = next;
    }
    if (!isPatchsBlock) ::operator delete(strings);
}

bool RecordStrings::hasBlock(const void* block) const {
    ValuePatch* patch = patches;
    while (patch != nullptr && blockOf(patch) != block) patch = patch->next;
    return patch != nullptr;
}

RecordStrings::String& RecordStrings::string(unsigned i) {
    if (standsUnder(i)) set(i, String(underView(i)));
    return values()[i];
}

void RecordStrings::set(unsigned i, String value) {
    values()[i] = std::move(value);
    own()[i] = true;
}

bool RecordStrings::hasEnoughPatches() const {
    unsigned count = 0;
    for (const ValuePatch* patch = patches; patch != nullptr; patch = patch->next) ++count;
    return count >= mostPatches;
}

// A patch that has become too small stays where it is and stands for no value any more.
bool RecordStrings::patch(unsigned i, std::string_view value) {
    if (room > 0 || value.size() > longestPatch) return false;
    ValuePatch* const before = patchOf(i);
    if (before != nullptr && value.size() < before->room) {
        before->write(value);
        return true;
    }
    if (hasEnoughPatches()) return false;
    const std::size_t bytes = roundedUp(sizeof(ValuePatch) + value.size() + 1);
    ValuePatch* const added = newPatch(::operator new(bytes), bytes, i, false);
    added->write(value);
    added->next = std::exchange(patches, added);
    if (before != nullptr) before->index = ValuePatch::noValue;
    return true;
}

void RecordStrings::cut(unsigned count) {
    if (underCount > count) underCount = static_cast<unsigned short>(count);
    for (unsigned i = count; i < room; ++i) {
        set(i, String());
    }
}

void RecordStrings::makeStrings(unsigned first, unsigned count) {
    for (unsigned i = first; i < count; ++i) {
        string(i);
    }
}

// The patch of the value that goes stands for none any more.
void RecordStrings::leaveOut(unsigned i) {
    for (ValuePatch* patch = patches; patch != nullptr; patch = patch->next) {
        if (patch->index == i) patch->index = ValuePatch::noValue;
        if (patch->index > i && patch->index != ValuePatch::noValue) --patch->index;
    }
    leftOut = static_cast<unsigned short>(i);
    --underCount;
}

void RecordStrings::erase(unsigned i, unsigned count) {
    if (mayLeaveOut()) return leaveOut(i);
    makeStrings(i + 1, count);
    for (unsigned k = i; k + 1 < count; ++k) {
        set(k, std::move(string(k + 1)));
    }
    cut(count - 1);
}
