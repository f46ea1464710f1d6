#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

#include <cstdint>
#include <string_view>
#include <vector>

/// Searching texts for what people type.
namespace TextSearch {

/// How a term is compared with a text.
enum eMatchMethod {
    eMatchWhole = 0,     ///< the text is the term
    eMatchContains = 1,  ///< the term stands anywhere in the text
    eMatchBegins = 2     ///< the text begins with the term
};

/// May be added up.
enum eMatchFlags : unsigned {
    eMatchCase = 1,     ///< capital and small letters differ; they do not otherwise
    eMatchTimecode = 2  ///< the characters : ; . , are the same
};

/// One term. It is prepared when it is made, so that one criterion is made for
/// many texts. Only the letters A to Z have a case.
class VEKDB_PUBLIC Criterion {
public:
    /// An empty one, or one of a term.
    Criterion() = default;
    explicit Criterion(const LightweightString<char>& text, eMatchMethod method = eMatchContains);

    /// The term as it was given, and how it is compared.
    const LightweightString<char>& text() const { return text_; }
    eMatchMethod method() const { return method_; }

    /// Whether the term is nothing, or nothing but white space. An empty criterion
    /// is satisfied by every text.
    bool empty() const { return isEmpty_; }

    /// Whether the text satisfies this criterion. Unknown flags have no meaning.
    bool isSatisfiedBy(std::string_view text, unsigned flags) const;

    /// Two places in the term to look at first, where the rarest bytes stand, and
    /// for each what a byte must be after some bits of it were set. Whatever
    /// equals the term passes both filters.
    struct Filter {
        std::uint8_t setBits[2];   ///< set in the byte at each place
        std::uint8_t expected[2];  ///< what it then is
    };
    /// The places, counted from the term's first byte, and a filter for each way of comparing.
    struct Anchors {
        std::uint32_t places[2] = {0, 0};  ///< below the term's length
        Filter filters[4] = {};            ///< for each sum of flags
    };

    /// Lives with the criterion; of no meaning for an empty one.
    const Anchors& anchors() const { return anchors_; }

private:
    LightweightString<char> text_;
    eMatchMethod method_ = eMatchContains;
    bool isEmpty_ = true;
    Anchors anchors_;
};

/// The terms for one text; all of them must be satisfied.
class VEKDB_PUBLIC Criteria {
public:
    /// None, or one.
    Criteria() = default;
    Criteria(const Criterion& criterion) { add(criterion); }

    /// One more that must be satisfied, too.
    void add(const Criterion& criterion);

    /// Whether every text satisfies them: there is none, or none but empty ones.
    bool empty() const { return isEmpty_; }
    unsigned size() const { return static_cast<unsigned>(criteria_.size()); }

    /// The i-th criterion as it was added; past the end an empty one. Lives until
    /// the criteria change.
    const Criterion& getCriterion(unsigned short i) const;

    /// Whether the text satisfies every criterion.
    bool areSatisfiedBy(std::string_view text, unsigned flags) const {
        for (const Criterion& criterion : criteria_) {
            if (!criterion.isSatisfiedBy(text, flags)) {
                return false;
            }
        }
        return true;
    }

private:
    std::vector<Criterion> criteria_;
    bool isEmpty_ = true;
};

/// True when the text satisfies the criteria, with the flags of eMatchFlags.
/// Nothing is copied.
inline bool match(std::string_view text, const Criteria& criteria, unsigned flags) {
    return criteria.empty() || criteria.areSatisfiedBy(text, flags);
}
inline bool match(const LightweightString<char>& text, const Criteria& criteria, unsigned flags) {
    return match(text.view(), criteria, flags);
}
inline bool match(const char* text, const Criteria& criteria, unsigned flags) {
    return match(LightweightString<char>(text), criteria, flags);
}

}  // namespace TextSearch
