#include "formats/saving/patched_text.h"

#include <algorithm>

#include "formats/input/input.h"
#include "formats/text/encoding.h"

namespace vek::formats {

namespace {

// A text that grows beyond that would be copied over and over.
constexpr std::size_t longText = 1 << 18;

}  // namespace

void PatchedText::endOwn() {
    if (!parts_.empty() && !parts_.back().isKept) parts_.back().end = sizeMade();
}

void PatchedText::keep(Range range) {
    if (range.size() == 0) return;
    if (!parts_.empty() && parts_.back().isKept && parts_.back().end == range.begin) {
        parts_.back().end = range.end;
        return;
    }
    endOwn();
    parts_.push_back({1, range.begin, range.end});
}

std::string& PatchedText::own() {
    if (parts_.empty() || parts_.back().isKept) parts_.push_back({0, sizeMade(), 0});
    if (made_.empty() || made_.back().size() >= longText) {
        finished_ = sizeMade();
        made_.emplace_back();
        if (finished_ != 0) made_.back().reserve(longText + longText / 4);
    }
    return made_.back();
}

std::string_view PatchedText::lastOwn() const {
    if (parts_.empty() || parts_.back().isKept || parts_.back().begin == sizeMade()) return {};
    const auto last = std::find_if(made_.rbegin(), made_.rend(),
                                   [](const std::string& text) { return !text.empty(); });
    return last == made_.rend() ? std::string_view() : std::string_view(*last);
}

bool PatchedText::isFile(std::uint64_t size) const {
    if (sizeMade() != 0) return false;
    std::uint64_t at = 0;
    for (const Part& part : parts_) {
        if (!part.isKept) continue;
        if (part.begin != at) return false;
        at = part.end;
    }
    return at == size;
}

bool PatchedText::isMadeOfUtf8() const {
    return std::all_of(made_.begin(), made_.end(),
                       [](const std::string& text) { return isWellFormedUtf8(text); });
}

bool PatchedText::isMadeWith(char c) const {
    return std::any_of(made_.begin(), made_.end(),
                       [c](const std::string& text) { return text.find(c) != text.npos; });
}

// In their order. What was made is given text by text.
template <class Kept, class Made>
void PatchedText::forEachPiece(Kept kept, Made made) const {
    auto text = made_.begin();
    std::uint64_t before = 0;  // bytes of the texts in front of that one
    for (const Part& part : parts_) {
        if (part.isKept) {
            kept(part.range());
            continue;
        }
        for (std::uint64_t at = part.begin; at < part.end;) {
            for (; at - before >= text->size(); ++text) before += text->size();
            const std::uint64_t end = std::min<std::uint64_t>(part.end, before + text->size());
            made(std::string_view(*text).substr(at - before, end - at));
            at = end;
        }
    }
}

std::string PatchedText::beginning(const Input& file, std::uint64_t size) {
    endOwn();
    std::string out;
    const auto left = [&](std::uint64_t wanted) {
        return static_cast<std::size_t>(std::min<std::uint64_t>(wanted, size - out.size()));
    };
    const auto keep = [&](Range range) {
        const std::size_t count = left(range.size());
        out.resize(out.size() + count);
        file.readAgain(range.begin, out.data() + out.size() - count, count);
    };
    forEachPiece(keep, [&](std::string_view piece) { out += piece.substr(0, left(piece.size())); });
    return out;
}

void PatchedText::write(const Input& file, Output& out) {
    endOwn();
    forEachPiece([&](Range range) { out.copy(file, range); },
                 [&](std::string_view piece) { out.write(piece); });
}

}  // namespace vek::formats
