#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/output.h"

namespace vek::formats {

/// A text made of pieces of a file and of others that stand between them.
class PatchedText {
public:
    void keep(Range range);
    /// What is added to it stands behind all that came before. To be asked for again after each
    /// value or so: a text that has become long is not made longer.
    std::string& own();

    /// What was added last, if nothing was kept behind it; more may stand in front.
    std::string_view lastOwn() const;

    /// Whether it is what the file holds, no more and no less.
    bool isFile(std::uint64_t size) const;
    /// Whether what is not the file's own is UTF-8, where no character is added in two pieces.
    bool isMadeOfUtf8() const;
    /// Whether what is not the file's own has the character.
    bool isMadeWith(char c) const;
    /// No more than so many bytes that it begins with. Nothing can be added afterwards.
    std::string beginning(const Input& file, std::uint64_t size);
    /// Nothing can be added afterwards.
    void write(const Input& file, Output& out);

private:
    // Bytes of the file, or of what was made, counted through all texts.
    struct Part {
        std::uint64_t isKept : 1;
        std::uint64_t begin : 63;
        std::uint64_t end;

        Range range() const { return {begin, end}; }
    };

    std::uint64_t sizeMade() const { return finished_ + (made_.empty() ? 0 : made_.back().size()); }
    void endOwn();
    template <class Kept, class Made>
    void forEachPiece(Kept kept, Made made) const;

    std::vector<std::string> made_;  // one behind the other
    std::uint64_t finished_ = 0;     // bytes of all of them but the last
    std::vector<Part> parts_;
};

}  // namespace vek::formats
