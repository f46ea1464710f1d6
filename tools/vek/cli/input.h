#pragma once

#include <string>
#include <string_view>

namespace vek {

/// The bytes of one input, read once and whole, from a path or, for "-", from standard input.
class Input {
public:
    /// Reads to the end; a Failure with `unreadable` that says why when that does not work.
    explicit Input(const std::string& path);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    /// For messages: the path, or "standard input".
    const std::string& name() const { return name_; }
    std::string_view text() const { return text_; }
    bool isStandardInput() const { return isStandardInput_; }

    /// A path under which the library's own loader finds the same bytes, whatever the file is
    /// called and also for standard input. Ends with the Input.
    std::string loaderPath();

private:
    void readAll();
    void spool();

    std::string name_;
    std::string text_;
    bool isStandardInput_;
    bool isRegular_ = false;
    int descriptor_ = -1;
};

}  // namespace vek
