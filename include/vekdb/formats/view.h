#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <vekdb/formats/reason.h>
#include <vekdb/formats/row.h>
#include <vekdb/formats/saving.h>
#include <vekdb/views/view.h>

namespace vek {

/// Rows of a log in an order, as a range. A handle: copies show the same rows. It keeps alive all
/// that it shows, also when the Log is gone, and shows what is edited later; rows that are added
/// to the log do not come into it, and rows that are removed from the log stay in it.
class View {
public:
    /// Rows that it shows, and how many there were before a limit and an offset.
    unsigned size() const noexcept;
    std::size_t matched() const noexcept { return matched_; }
    /// The row in a place below the size.
    Row at(unsigned place) const;
    PlaceIterator<View> begin() const { return {*this, 0}; }
    PlaceIterator<View> end() const { return {*this, size()}; }

    /// The core's view of these rows. It must not outlive this handle and its copies.
    const VDBView& view() const noexcept { return view_; }

    /// Writes these rows into a file, which is replaced whole or not at all. The ending of its name
    /// says the format where none is named. Says what the format did not hold.
    Result<Saved> saveAs(std::string_view path, const SaveOptions& options = {}) const;
    Result<Saved> saveAs(std::string_view path, Format format,
                         const SaveOptions& options = {}) const;
    /// The same into a text, which is put in the place of what `text` held; and into a sink.
    Result<Saved> write(std::string& text, Format format, const SaveOptions& options = {}) const;
    Result<Saved> write(Sink& sink, Format format, const SaveOptions& options = {}) const;
    /// What saving would say, and nothing written. It takes as long.
    Result<Saved> wouldLose(Format format, const SaveOptions& options = {}) const;

private:
    friend class Log;
    friend struct LogInside;
    View(std::shared_ptr<LogInside> log, VDBView view, std::size_t matched)
        : log_(std::move(log)), view_(std::move(view)), matched_(matched) {}

    std::shared_ptr<LogInside> log_;  // goes last
    VDBView view_;
    std::size_t matched_ = 0;
};

}  // namespace vek
