#include "formats/json/number_words.h"

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"

namespace vek::formats {

namespace {

// Behind a string that begins at `at`.
std::size_t behindString(std::string_view json, std::size_t at) {
    for (++at; at < json.size() && json[at] != '"'; ++at) {
        if (json[at] == '\\') ++at;
    }
    return std::min(at + 1, json.size());
}

std::string_view numberWordAt(std::string_view rest) {
    for (std::string_view word : {"-Infinity", "Infinity", "-Inf", "Inf", "NaN", "-NaN", "nan"}) {
        const bool isIt = rest.starts_with(word);
        const std::string_view behind = rest.substr(isIt ? word.size() : 0);
        if (isIt && (behind.empty() ||
                     !(asciiLower(behind.front()) >= 'a' && asciiLower(behind.front()) <= 'z')))
            return word;
    }
    return {};
}

}  // namespace

std::optional<std::string> withNumberWordsQuoted(std::string_view json) {
    std::string out;
    std::size_t kept = 0;
    for (std::size_t at = 0; at < json.size();) {
        if (json[at] == '"') {
            at = behindString(json, at);
            continue;
        }
        const std::string_view word = numberWordAt(json.substr(at));
        if (word.empty()) {
            ++at;
            continue;
        }
        out += concat(json.substr(kept, at - kept), "\"", word, "\"");
        kept = at += word.size();
    }
    if (kept == 0) return {};
    out += json.substr(kept);
    return out;
}

}  // namespace vek::formats
