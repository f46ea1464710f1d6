#include "formats/choosing/regex.h"

#include <re2/re2.h>

#include <utility>

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

// A text that is no UTF-8 is matched byte by byte; that form is made for the first such text.
class BothForms {
public:
    BothForms(const std::string& text, const RE2::Options& asCharacters)
        : characters(text, asCharacters) {
        const RE2& expression = isUtf8(text) ? characters : bytes();
        if (expression.ok()) return;
        throw Failure{wrongUsage,
                      inQuotes(text) + " is no regular expression: " + whyNot(expression)};
    }

    const RE2& bytes() {
        if (!bytes_) {
            RE2::Options asBytes = characters.options();
            asBytes.set_encoding(RE2::Options::EncodingLatin1);
            bytes_ = std::make_unique<RE2>(characters.pattern(), asBytes);
        }
        return *bytes_;
    }

    RE2 characters;

private:
    std::unique_ptr<RE2> bytes_;
};

// Nothing but groups and backslashes stands behind a backslash.
void checkReplacement(const std::string& with, int groups) {
    for (std::size_t at = with.find('\\'); at != std::string::npos; at = with.find('\\', at + 2)) {
        const char next = at + 1 < with.size() ? with[at + 1] : '\0';
        if (next == '\\') continue;
        if (next < '0' || next > '9') {
            throw Failure{wrongUsage, inQuotes(with) +
                                          ": expected \\0 to \\9, or \\\\ for a backslash, "
                                          "behind a backslash in what is put in"};
        }
        if (next - '0' <= groups) continue;
        throw Failure{wrongUsage, concat(inQuotes(with), ": \\", std::string(1, next),
                                         " is not there, the expression has ",
                                         counted(static_cast<std::size_t>(groups), "group"))};
    }
}

}  // namespace

struct Regex::Compiled : BothForms {
    explicit Compiled(const std::string& text)
        : BothForms(text, options(RE2::Options::EncodingUTF8)) {}
};

Regex::Regex(const std::string& text) : compiled_(std::make_unique<Compiled>(text)) {}

Regex::~Regex() = default;

bool Regex::matches(std::string_view text) const {
    re2::StringPiece piece(text.data(), text.size());
    bool isTried = compiled_->characters.ok();
    if (isTried && RE2::PartialMatch(piece, compiled_->characters)) return true;
    if (isTried && isUtf8(text)) return false;
    return RE2::PartialMatch(piece, compiled_->bytes());
}

struct Substitution::Compiled : BothForms {
    Compiled(const std::string& expression, std::string text, Manner how)
        : BothForms(expression, optionsFor(how)), with(std::move(text)), manner(how) {
        const RE2& tried = characters.ok() ? characters : bytes();
        checkReplacement(with, tried.NumberOfCapturingGroups());
    }

    static RE2::Options optionsFor(Manner how) {
        RE2::Options out = options(RE2::Options::EncodingUTF8);
        out.set_never_capture(false);
        out.set_case_sensitive(!how.ignoresCase);
        return out;
    }

    std::string with;
    Manner manner;
};

Substitution::Substitution(const std::string& expression, const std::string& with, Manner manner)
    : compiled_(std::make_unique<Compiled>(expression, with, manner)) {}

Substitution::~Substitution() = default;
Substitution::Substitution(Substitution&&) noexcept = default;

void Substitution::apply(std::string& text) const {
    const bool asCharacters = compiled_->characters.ok() && isUtf8(text);
    const RE2& expression = asCharacters ? compiled_->characters : compiled_->bytes();
    if (compiled_->manner.everywhere)
        RE2::GlobalReplace(&text, expression, compiled_->with);
    else
        RE2::Replace(&text, expression, compiled_->with);
}

}  // namespace vek::formats
