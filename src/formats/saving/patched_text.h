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
    /// What is added to it stands behind all that came before.
    std::string& own();

    /// What was added last, if nothing was kept behind it.
    std::string_view lastOwn() const {
        return parts_.empty() || parts_.back().isKept ? std::string_view() : text_;
    }

    /// Whether it is what the file holds, no more and no less.
    bool isFile(std::uint64_t size) const;
    /// What is not the file's own.
    std::string_view made() const { return text_; }
    /// No more than so many bytes that it begins with. Nothing can be added afterwards.
    std::string beginning(const Input& file, std::uint64_t size);
    /// Nothing can be added afterwards.
    void write(const Input& file, Output& out);

private:
    void endOwn();

    struct Part {
        bool isKept;
        Range range;  // of the file, or of the text
    };

    std::string text_;
    std::vector<Part> parts_;
};

}  // namespace vek::formats
