#include "formats/text/suggestion.h"

#include <algorithm>
#include <numeric>

#include <vekdb/host/text_util.h>

namespace vek::formats {

namespace {

std::string lowered(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), asciiLower<char>);
    return out;
}

// How many single-character edits part two words.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row[b.size()];
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& candidates) {
    constexpr std::size_t longestWord = 64;
    std::string wanted = lowered(word.substr(0, longestWord));
    std::string best;
    std::size_t bestDistance = wanted.size() <= 3 ? 1 : std::max<std::size_t>(2, wanted.size() / 3);
    for (const std::string& candidate : candidates) {
        if (candidate.size() > longestWord) continue;
        std::string known = lowered(candidate);
        std::size_t edits = distance(wanted, known);
        if (wanted.size() > 2 && known.find(wanted) != std::string::npos) edits = 1;
        if (edits < bestDistance || (best.empty() && edits == bestDistance)) {
            best = candidate;
            bestDistance = edits;
        }
    }
    return best;
}

std::string suggestion(std::string_view word, const std::vector<std::string>& candidates) {
    std::string best = nearest(word, candidates);
    return best.empty() ? std::string() : "; did you mean " + best + "?";
}

}  // namespace vek::formats
