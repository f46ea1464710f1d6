#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/input/limits.h"
#include "formats/log/source.h"
#include "formats/writing/output_sink.h"

namespace vek::formats {

/// What the writers write to. Many small texts go on to a sink in few large pieces, so that only
/// a piece of a long text is held in memory.
class Output {
public:
    /// The name is for messages. Without a sink all that is written is kept.
    explicit Output(std::string name, std::unique_ptr<OutputSink> sink = nullptr);
    ~Output();
    Output(Output&&) noexcept;

    /// At most so much is written; more is a Failure with `unwritable`.
    void limit(const OutputLimit& most, const Terms& terms);
    /// All that is written is put into another encoding than UTF-8, "" for none, and packed by
    /// gzip, when the output is closed. To be said before anything is written.
    void encode(const std::string& encoding, bool isPacked);

    /// A Failure with `unwritable` when the sink takes no more.
    void write(std::string_view text);
    void line(std::string_view text);
    /// Bytes of a file that was read, as they stand there. The input must live as long as this.
    void copy(const Input& input, Range range);
    /// Says that everything is written, and answers what there is to say of where it went. To be
    /// called before the end; nothing is saved without.
    std::vector<std::string> close();
    /// What was written, where no sink took it.
    std::string take() { return std::move(pending_); }

    const std::string& name() const { return name_; }

protected:
    OutputSink* sink() const { return sink_.get(); }
    /// Hands on what was not yet.
    void flush();

private:
    void encodePending();

    std::string name_;
    std::unique_ptr<OutputSink> sink_;
    std::size_t pieceSize_;
    std::string pending_;
    const Input* copied_ = nullptr;  ///< the last one that was copied of
    std::optional<SourceReader> reader_;
    std::size_t size_ = 0;  ///< of all that was written
    OutputLimit limit_;
    const Terms* terms_ = &ownTerms;
    std::string encoding_;
    bool isPacked_ = false;
};

}  // namespace vek::formats
