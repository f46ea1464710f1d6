#include "formats/choosing/regex.h"

#include <re2/re2.h>

#include "formats/failure.h"
#include "formats/text/width.h"

namespace vek::formats {

namespace {

constexpr std::size_t longestReason = 120;

RE2::Options options(RE2::Options::Encoding encoding) {
    RE2::Options options;
    options.set_encoding(encoding);
    options.set_dot_nl(true);
    options.set_never_capture(true);
    options.set_log_errors(false);
    return options;
}

bool isBackReference(std::string_view argument) {
    return argument.size() == 2 && argument[0] == '\\' && argument[1] >= '1' && argument[1] <= '9';
}

std::string whyNot(const RE2& expression) {
    if (isBackReference(expression.error_arg())) {
        return "back-references such as " + expression.error_arg() +
               " are not known, as they take time without bounds";
    }
    return fitted(expression.error(), longestReason);
}

}  // namespace

// A text that is no UTF-8 is matched byte by byte; that form is made for the first such text.
struct Regex::Compiled {
    explicit Compiled(const std::string& text)
        : characters(text, options(RE2::Options::EncodingUTF8)) {}

    const RE2& bytes() {
        if (!bytes_) {
            bytes_ =
                std::make_unique<RE2>(characters.pattern(), options(RE2::Options::EncodingLatin1));
        }
        return *bytes_;
    }

    RE2 characters;

private:
    std::unique_ptr<RE2> bytes_;
};

Regex::Regex(const std::string& text) : compiled_(std::make_unique<Compiled>(text)) {
    bool isText = isUtf8(text);
    const RE2& expression = isText ? compiled_->characters : compiled_->bytes();
    if (expression.ok()) return;
    throw Failure{wrongUsage, inQuotes(text) + " is no regular expression: " + whyNot(expression)};
}

Regex::~Regex() = default;

bool Regex::matches(std::string_view text) const {
    re2::StringPiece piece(text.data(), text.size());
    bool isTried = compiled_->characters.ok();
    if (isTried && RE2::PartialMatch(piece, compiled_->characters)) return true;
    if (isTried && isUtf8(text)) return false;
    return RE2::PartialMatch(piece, compiled_->bytes());
}

}  // namespace vek::formats
