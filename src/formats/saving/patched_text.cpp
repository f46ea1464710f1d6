#include "formats/saving/patched_text.h"

#include <algorithm>

#include "formats/reading/input.h"

namespace vek::formats {

void PatchedText::endOwn() {
    if (!parts_.empty() && !parts_.back().isKept) parts_.back().range.end = text_.size();
}

void PatchedText::keep(Range range) {
    if (range.size() == 0) return;
    if (!parts_.empty() && parts_.back().isKept && parts_.back().range.end == range.begin) {
        parts_.back().range.end = range.end;
        return;
    }
    endOwn();
    parts_.push_back({true, range});
}

std::string& PatchedText::own() {
    if (parts_.empty() || parts_.back().isKept) parts_.push_back({false, {text_.size(), 0}});
    return text_;
}

bool PatchedText::isFile(std::uint64_t size) const {
    if (!text_.empty()) return false;
    std::uint64_t at = 0;
    for (const Part& part : parts_) {
        if (!part.isKept) continue;
        if (part.range.begin != at) return false;
        at = part.range.end;
    }
    return at == size;
}

std::string PatchedText::beginning(const Input& file, std::uint64_t size) {
    endOwn();
    std::string out;
    for (const Part& part : parts_) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(part.range.size(), size - out.size()));
        const auto from = static_cast<std::size_t>(part.range.begin);
        if (!part.isKept) {
            out.append(text_, from, count);
            continue;
        }
        out.resize(out.size() + count);
        file.readAgain(part.range.begin, out.data() + out.size() - count, count);
    }
    return out;
}

void PatchedText::write(const Input& file, Output& out) {
    endOwn();
    const std::string_view text = text_;
    for (const Part& part : parts_) {
        if (part.isKept)
            out.copy(file, part.range);
        else
            out.write(text.substr(static_cast<std::size_t>(part.range.begin), part.range.size()));
    }
}

}  // namespace vek::formats
