#include "views/row_blocks.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <numeric>
#include <utility>

namespace {

// Moves n things within a block.
template <class T>
void move(T* things, std::uint32_t from, std::uint32_t to, std::uint32_t n) noexcept {
    std::memmove(things + to, things + from, n * sizeof(T));
}

std::uint32_t countBelow(const std::uint32_t* rows, std::uint32_t n, std::uint32_t shift,
                         std::uint32_t row) noexcept {
    const auto below = [shift](std::uint32_t held, std::uint32_t bound) {
        return held + shift < bound;
    };
    return static_cast<std::uint32_t>(std::lower_bound(rows, rows + n, row, below) - rows);
}

// Without a jump for each row, so that the compiler looks at many at once.
bool holds(const std::uint32_t* rows, std::uint32_t n, std::uint32_t held) noexcept {
    std::uint32_t found = 0;
    for (std::uint32_t i = 0; i < n; ++i) found |= rows[i] == held ? 1u : 0u;
    return found != 0;
}

void lower(std::uint32_t* rows, std::uint32_t n, std::uint32_t shift,
           std::uint32_t target) noexcept {
    for (std::uint32_t i = 0; i < n; ++i) rows[i] -= rows[i] + shift > target ? 1u : 0u;
}

std::uint32_t blocksFor(std::uint32_t n, std::uint32_t fill) noexcept {
    return (n - 1) / fill + 1;
}

}  // namespace

void RowBlocks::setTag(std::uint32_t at, std::uint8_t tag) noexcept {
    const Place place = placeOf(at);
    blockOf(place).tags[at - place.start] = tag;
}

void RowBlocks::set(std::uint32_t at, ViewSlot slot) noexcept {
    const Place place = placeOf(at);
    const std::uint32_t i = at - place.start;
    const std::uint32_t held = slot.row - place.shift;
    same_ = same_ && slot.row == at;
    blockOf(place).rows[i] = held;
    blockOf(place).tags[i] = slot.tag;
    if (i == 0) entries_[place.block].first = held;
}

// --- finding

void RowBlocks::forgetPlaces() noexcept {
    summed_ = false;
    last_ = {0, 0, entries_.empty() ? 0 : entries_.front().delta};
}

void RowBlocks::sumUp() const noexcept {
    if (summed_) return;
    const std::size_t n = entries_.size();
    sums_.resize(n);
    for (std::size_t i = 0; i < n; ++i) sums_[i] = {entries_[i].rows, entries_[i].delta};
    for (std::size_t i = 1; i <= n; ++i) {
        const std::size_t above = i + (i & (~i + 1));
        if (above > n) continue;
        sums_[above - 1].rows += sums_[i - 1].rows;
        sums_[above - 1].shift += sums_[i - 1].shift;
    }
    summed_ = true;
}

void RowBlocks::addToSums(std::uint32_t block, std::uint32_t rows, std::uint32_t shift) noexcept {
    if (!summed_) return;
    for (std::size_t i = block + 1; i <= sums_.size(); i += i & (~i + 1)) {
        sums_[i - 1].rows += rows;
        sums_[i - 1].shift += shift;
    }
}

RowBlocks::Place RowBlocks::findPlace(std::uint32_t at) const noexcept {
    if (even_) return {at >> fillBits_, at >> fillBits_ << fillBits_, 0};
    sumUp();
    Place place;
    for (std::size_t step = std::bit_floor(entries_.size()); step > 0; step /= 2) {
        const std::size_t next = place.block + step;
        if (next > entries_.size() || at - place.start < sums_[next - 1].rows) continue;
        place = {static_cast<std::uint32_t>(next), place.start + sums_[next - 1].rows,
                 place.shift + sums_[next - 1].shift};
    }
    place.shift += entries_[place.block].delta;
    return place;
}

// Blocks whose first row is below come first; the last of these holds the place, or ends there.
std::uint32_t RowBlocks::firstFrom(std::uint32_t row) const noexcept {
    if (size_ == 0) return 0;
    sumUp();
    Place place;
    for (std::size_t step = std::bit_floor(entries_.size()); step > 0; step /= 2) {
        const std::size_t next = place.block + step;
        if (next > entries_.size()) continue;
        const std::uint32_t shift = place.shift + sums_[next - 1].shift;
        if (entries_[next - 1].first + shift >= row) continue;
        place = {static_cast<std::uint32_t>(next), place.start + sums_[next - 1].rows, shift};
    }
    if (place.block == 0) return 0;
    const Entry& entry = entries_[--place.block];
    place.start -= entry.rows;
    last_ = place;
    return place.start + countBelow(entry.block->rows, entry.rows, place.shift, row);
}

bool RowBlocks::isAscending() const noexcept {
    std::uint32_t shift = 0;
    std::uint32_t before = 0;
    for (const Entry& entry : entries_) {
        shift += entry.delta;
        for (std::uint32_t i = 0; i < entry.rows; ++i) {
            const std::uint32_t row = entry.block->rows[i] + shift;
            if (row < before) return false;
            before = row;
        }
    }
    return true;
}

std::uint32_t RowBlocks::find(std::uint32_t row) const noexcept {
    std::uint32_t shift = 0;
    std::uint32_t start = 0;
    for (const Entry& entry : entries_) {
        shift += entry.delta;
        const std::uint32_t* rows = entry.block->rows;
        if (holds(rows, entry.rows, row - shift)) {
            return start + static_cast<std::uint32_t>(
                               std::find(rows, rows + entry.rows, row - shift) - rows);
        }
        start += entry.rows;
    }
    return size_;
}

// --- coming

bool RowBlocks::hasRoom(std::uint32_t at, std::uint32_t n) const noexcept {
    if (n == 0) return true;
    if (size_ == 0) return false;
    const bool atEnd = at == size_;
    const Place place = atEnd ? lastPlace() : placeOf(at);
    const std::uint32_t room = atEnd ? fill_ : most_;
    const std::uint32_t rows = entries_[place.block].rows;
    return rows <= room && n <= room - rows;
}

// Behind the last row none is split.
std::size_t RowBlocks::blocksNeeded(std::uint32_t at, std::uint32_t n) const noexcept {
    return blocksFor(n, fill_) + (at == size_ ? 0 : 1);
}

RowBlocks::Spare RowBlocks::spareFor(std::uint32_t at, std::uint32_t n) const {
    Spare spare;
    if (!hasRoom(at, n)) provide(spare, blocksNeeded(at, n));
    return spare;
}

RowBlocks::Spare RowBlocks::spareFor(std::uint32_t n) const {
    Spare spare;
    provide(spare, blocksFor(n, fill_) + 1);
    return spare;
}

void RowBlocks::provide(Spare& spare, std::size_t blocks) const {
    const std::size_t entries = entries_.size() + blocks;
    if (entries > entries_.capacity()) {
        const std::size_t room = std::max(entries, 2 * entries_.size());
        spare.entries.reserve(room);
        spare.sums.reserve(room);
        spare.unused.reserve(room);
    }
    if (unused_.size() >= blocks) return;
    spare.blocks.reserve(blocks);
    for (std::size_t i = unused_.size(); i < blocks; ++i) {
        spare.blocks.push_back(std::unique_ptr<Block>(new Block));
    }
}

bool RowBlocks::isEnough(const Spare& spare, std::uint32_t at, std::uint32_t n) const noexcept {
    if (hasRoom(at, n)) return true;
    const std::size_t more = blocksNeeded(at, n);
    const std::size_t room = std::max(entries_.capacity(), spare.entries.capacity());
    return spare.blocks.size() + unused_.size() >= more && room >= entries_.size() + more;
}

void RowBlocks::take(Spare& spare) noexcept {
    if (spare.entries.capacity() <= entries_.capacity()) return;
    std::move(entries_.begin(), entries_.end(), std::back_inserter(spare.entries));
    std::move(unused_.begin(), unused_.end(), std::back_inserter(spare.unused));
    entries_.swap(spare.entries);
    unused_.swap(spare.unused);
    sums_.swap(spare.sums);
    summed_ = false;
}

std::unique_ptr<RowBlocks::Block> RowBlocks::freshBlock(Spare& spare) noexcept {
    Blocks& from = unused_.empty() ? spare.blocks : unused_;
    std::unique_ptr<Block> fresh = std::move(from.back());
    from.pop_back();
    return fresh;
}

void RowBlocks::insert(std::uint32_t at, std::uint32_t n, std::uint32_t first,
                       Spare& spare) noexcept {
    same_ = same_ && (n == 0 || (at == size_ && first == at));
    if (hasRoom(at, n)) return insertHere(at, n, first);
    take(spare);
    if (at == size_) {
        const std::uint32_t added = topUp(n, first);
        const std::uint32_t shift = size_ > 0 ? lastPlace().shift : 0;
        const auto behind = static_cast<std::uint32_t>(entries_.size());
        return insertBlocks(behind, shift, n - added, first + added, spare);
    }
    const Place place = placeOf(at);
    const std::uint32_t before = at - place.start;
    if (n <= most_ / 2) {
        split(place, entries_[place.block].rows / 2, spare);
        return insertHere(at, n, first);
    }
    if (before == 0) {
        return insertBlocks(place.block, place.shift - entries_[place.block].delta, n, first,
                            spare);
    }
    split(place, before, spare);
    insertBlocks(place.block + 1, place.shift, n, first, spare);
}

// Into the block that the row stands in, which has room.
void RowBlocks::insertHere(std::uint32_t at, std::uint32_t n, std::uint32_t first) noexcept {
    if (n == 0) return;
    const bool atEnd = at == size_;
    const Place place = atEnd ? lastPlace() : placeOf(at);
    Entry& entry = entries_[place.block];
    const std::uint32_t i = at - place.start;
    move(entry.block->rows, i, i + n, entry.rows - i);
    move(entry.block->tags, i, i + n, entry.rows - i);
    std::iota(entry.block->rows + i, entry.block->rows + i + n, first - place.shift);
    std::memset(entry.block->tags + i, 0, n);
    entry.first = entry.block->rows[0];
    entry.rows += n;
    size_ += n;
    even_ = even_ && atEnd;
    addToSums(place.block, n, 0);
}

// Fills the last block, and answers with how many.
std::uint32_t RowBlocks::topUp(std::uint32_t n, std::uint32_t first) noexcept {
    if (size_ == 0 || entries_.back().rows >= fill_) return 0;
    const std::uint32_t more = std::min(n, fill_ - entries_.back().rows);
    insertHere(size_, more, first);
    return more;
}

// New blocks from number `block` on, to whose rows nothing is added but the shift, which is
// that of the block before.
void RowBlocks::insertBlocks(std::uint32_t block, std::uint32_t shift, std::uint32_t n,
                             std::uint32_t first, Spare& spare) noexcept {
    if (n == 0) return;
    even_ =
        even_ && block == entries_.size() && (entries_.empty() || entries_.back().rows == fill_);
    const std::size_t before = entries_.size();
    for (std::uint32_t left = n; left > 0;) {
        const std::uint32_t rows = std::min(left, fill_);
        std::unique_ptr<Block> fresh = freshBlock(spare);
        std::iota(fresh->rows, fresh->rows + rows, first - shift);
        std::memset(fresh->tags, 0, rows);
        entries_.push_back({std::move(fresh), rows, 0, first - shift});
        first += rows;
        left -= rows;
    }
    const auto place = entries_.begin();
    std::rotate(place + block, place + static_cast<std::ptrdiff_t>(before), entries_.end());
    size_ += n;
    forgetPlaces();
}

// The rows of a block behind the first ones get a block of their own.
void RowBlocks::split(const Place& place, std::uint32_t kept, Spare& spare) noexcept {
    Entry& entry = entries_[place.block];
    std::unique_ptr<Block> fresh = freshBlock(spare);
    const std::uint32_t rows = entry.rows - kept;
    std::copy_n(entry.block->rows + kept, rows, fresh->rows);
    std::copy_n(entry.block->tags + kept, rows, fresh->tags);
    entry.rows = kept;
    const std::uint32_t first = fresh->rows[0];
    entries_.insert(entries_.begin() + place.block + 1, {std::move(fresh), rows, 0, first});
    even_ = false;
    forgetPlaces();
}

// --- going

void RowBlocks::forget() noexcept {
    for (Entry& entry : entries_) unused_.push_back(std::move(entry.block));
    entries_.clear();
    size_ = 0;
    same_ = even_ = true;
    forgetPlaces();
}

void RowBlocks::cut(std::uint32_t block, std::uint32_t from, std::uint32_t n) noexcept {
    Entry& entry = entries_[block];
    move(entry.block->rows, from + n, from, entry.rows - from - n);
    move(entry.block->tags, from + n, from, entry.rows - from - n);
    entry.rows -= n;
    entry.first = entry.block->rows[0];
    size_ -= n;
    addToSums(block, ~n + 1, 0);
}

void RowBlocks::dropBlocks(std::uint32_t from, std::uint32_t end) noexcept {
    if (from == end) return;
    std::uint32_t carried = 0;
    for (std::uint32_t i = from; i < end; ++i) {
        carried += entries_[i].delta;
        size_ -= entries_[i].rows;
    }
    entries_.erase(entries_.begin() + from, entries_.begin() + end);
    if (from < entries_.size()) entries_[from].delta += carried;
    forgetPlaces();
}

void RowBlocks::erase(std::uint32_t at, std::uint32_t n) noexcept {
    if (n == 0) return;
    same_ = same_ && at + n == size_;
    even_ = even_ && at + n == size_;
    const Place place = placeOf(at);
    std::uint32_t block = place.block;
    const std::uint32_t from = at - place.start;
    if (from > 0) {
        const std::uint32_t here = std::min(n, entries_[block].rows - from);
        cut(block++, from, here);
        n -= here;
    }
    std::uint32_t end = block;
    while (n > 0 && entries_[end].rows <= n) n -= entries_[end++].rows;
    dropBlocks(block, end);
    if (n > 0) cut(block, 0, n);
    if (size_ == 0) same_ = even_ = true;
    if (std::uint64_t{size_} * 4 < entries_.size() * std::uint64_t{fill_}) gather();
}

// Puts neighbours that fit into one block together. Twice as many blocks as needed are left at
// most, so that it comes once in many removals.
void RowBlocks::gather() noexcept {
    if (entries_.size() < 2) return;
    std::size_t last = 0;
    std::uint32_t lastShift = entries_[0].delta;
    std::uint32_t shift = lastShift;
    for (std::size_t i = 1; i < entries_.size(); ++i) {
        Entry& to = entries_[last];
        Entry& from = entries_[i];
        shift += from.delta;
        if (to.rows + from.rows <= fill_) {
            for (std::uint32_t j = 0; j < from.rows; ++j) {
                to.block->rows[to.rows + j] = from.block->rows[j] + shift - lastShift;
            }
            std::copy_n(from.block->tags, from.rows, to.block->tags + to.rows);
            to.rows += from.rows;
            continue;
        }
        from.delta = shift - lastShift;
        lastShift = shift;
        if (++last != i) entries_[last] = std::move(from);
    }
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(last) + 1, entries_.end());
    even_ = false;
    forgetPlaces();
}

// --- renumbering

void RowBlocks::addFrom(std::uint32_t block, std::uint32_t by) noexcept {
    if (block >= entries_.size()) return;
    entries_[block].delta += by;
    addToSums(block, 0, by);
}

void RowBlocks::shiftFrom(std::uint32_t at, std::uint32_t by) noexcept {
    if (at >= size_) return;
    const Place place = placeOf(at);
    const std::uint32_t from = at - place.start;
    same_ = even_ = false;
    if (from == 0) {
        addFrom(place.block, by);
        last_ = {place.block, place.start, place.shift + by};
        return;
    }
    Entry& entry = entries_[place.block];
    for (std::uint32_t i = from; i < entry.rows; ++i) entry.block->rows[i] += by;
    addFrom(place.block + 1, by);
    last_ = place;
}

std::uint32_t RowBlocks::lowerAbove(std::uint32_t target, std::uint32_t from) noexcept {
    if (from >= size_) return size_;
    same_ = false;
    Place place = placeOf(from);
    std::uint32_t i = from - place.start;
    while (true) {
        Entry& entry = entries_[place.block];
        std::uint32_t* rows = entry.block->rows;
        const std::uint32_t held = target - place.shift;
        std::uint32_t end = entry.rows;
        const bool found = holds(rows + i, end - i, held);
        if (found) end = static_cast<std::uint32_t>(std::find(rows + i, rows + end, held) - rows);
        lower(rows + i, end - i, place.shift, target);
        entry.first = rows[0];
        if (found) return place.start + end;
        place.start += entry.rows;
        if (++place.block == entries_.size()) return size_;
        place.shift += entries_[place.block].delta;
        i = 0;
    }
}

// --- tags

void RowBlocks::tagAll(std::uint8_t tag) noexcept {
    for (Entry& entry : entries_) std::memset(entry.block->tags, tag, entry.rows);
}

void RowBlocks::invertTags() noexcept {
    for (Entry& entry : entries_) {
        for (std::uint32_t i = 0; i < entry.rows; ++i) entry.block->tags[i] ^= 1;
    }
}

std::uint32_t RowBlocks::countTags() const noexcept {
    std::uint32_t tagged = 0;
    for (const Entry& entry : entries_) {
        const std::uint8_t* tags = entry.block->tags;
        tagged += std::accumulate(tags, tags + entry.rows, 0u);
    }
    return tagged;
}
