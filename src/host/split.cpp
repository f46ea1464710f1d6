#include <vekdb/host/split.h>

namespace {

// The places in a text where it is split.
std::vector<unsigned> separatorsOf(std::string_view text, char separator, unsigned flags) {
    const bool respectQuotes = (flags & Quor::splitKeepsQuotedWhole) != 0 && separator != '"';
    std::vector<unsigned> places;
    bool quoted = false;
    for (unsigned i = 0; i < text.size(); ++i) {
        if (text[i] == separator) {
            if (!(quoted && respectQuotes)) {
                places.push_back(i);
            }
        } else if (text[i] == '"' && (i == 0 || text[i - 1] != '\\')) {
            quoted = !quoted;
        }
    }
    return places;
}

// Pieces between two separators, and what stands before the first and behind
// the last of them.
class Splitter {
public:
    Splitter(const LightweightString<char>& text, std::vector<unsigned> places,
             std::vector<LightweightString<char>>& out, unsigned flags)
        : text_(text),
          places_(std::move(places)),
          out_(out),
          dropsEmpty_((flags & Quor::splitDropsEmpty) != 0),
          kept_((flags & Quor::splitKeepsSeparator) != 0 ? 1 : 0) {}

    void appendFirst() {
        if (places_.front() != 0 || text_.length() == 1) {
            out_.push_back(text_.substr(0, places_.front() + kept_));
        }
    }

    void appendInner() {
        for (std::size_t i = 1; i < places_.size(); ++i) {
            const unsigned start = places_[i - 1] + 1;
            const unsigned length = places_[i] - start;
            if (length != 0 || !dropsEmpty_) {
                out_.push_back(text_.substr(start, length + kept_));
            }
        }
    }

    void appendLast() {
        if (places_.back() != text_.length() - 1) {
            out_.push_back(text_.substr(places_.back() + 1));
        }
    }

private:
    const LightweightString<char>& text_;
    std::vector<unsigned> places_;
    std::vector<LightweightString<char>>& out_;
    bool dropsEmpty_;
    unsigned kept_;
};

}  // namespace

unsigned Quor::splitIf(const LightweightString<char>& given, char separator,
                       std::vector<LightweightString<char>>& out, unsigned flags) {
    // A share of its own: the given string may be one of out's, which move as out grows.
    const LightweightString<char> text = given;
    std::vector<unsigned> places = separatorsOf(text.view(), separator, flags);
    if (places.empty()) {
        out.push_back(text);
    } else {
        Splitter splitter(text, std::move(places), out, flags);
        splitter.appendFirst();
        splitter.appendInner();
        splitter.appendLast();
    }
    return static_cast<unsigned>(out.size());
}
