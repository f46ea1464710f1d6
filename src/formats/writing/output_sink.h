#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vek::formats {

/// Where a text goes as it is written.
class OutputSink {
public:
    virtual ~OutputSink() = default;
    /// Takes the next piece. A Failure with `unwritable` when no more is taken.
    virtual void take(std::string_view piece) = 0;
    /// All was given. Answers what there is to say about it. Without this nothing is saved of what
    /// can be taken back.
    virtual std::vector<std::string> end() { return {}; }
    /// How much comes at once as a rule.
    virtual std::size_t pieceSize() const { return 1 << 16; }
};

/// Keeps nothing: for who wants to know what a writer says.
class NoSink : public OutputSink {
public:
    void take(std::string_view) override {}
};

}  // namespace vek::formats
