#include "formats/reading/decoding.h"

#include <algorithm>

#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/log/log.h"
#include "formats/packed/packed.h"
#include "formats/text/encoding.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// The encoding that a person named, as iconv calls it.
std::string wishedEncoding(const Opening& opening) {
    const std::string& wish = opening.wishes.encoding;
    if (wish.empty()) return {};
    const std::optional<std::string> known = encodingNamed(wish);
    if (known) return *known;
    throw Failure{wrongUsage,
                  concat(opening.terms->encoding,
                         " takes what iconv -l lists, such as windows-1252, macroman or utf-16, "
                         "not ",
                         inQuotes(wish))};
}

std::size_t lineOf(std::string_view text, std::size_t at) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(at);
    return 1 + static_cast<std::size_t>(std::count(text.begin(), end, '\n'));
}

void convert(Input& input, const std::string& encoding, Log& log) {
    const std::string_view text = input.text();
    std::size_t badAt = 0;
    Quor::Ptr<TextBlock> made = toUtf8(text, encoding, badAt);
    if (!made) {
        throw Failure{
            unreadable,
            log.name,
            {lineOf(text, badAt), "", "a byte that is no character", "text in " + encoding,
             concat("say what it is with ", log.opening.terms->encoding)}};
    }
    input.become(std::move(made));
    log.form.encoding = encoding;
}

// Bytes that are no UTF-8 are text in another encoding, unless they are UTF-8 that was damaged.
struct Decoded {
    std::string encoding;
    Quor::Ptr<TextBlock> text;  // null where they are kept
};

Decoded decodedBytes(std::string_view text) {
    if (isMostlyUtf8(text)) return {};
    Decoded decoded{likelyEncoding(text), {}};
    std::size_t badAt = 0;
    decoded.text = toUtf8(text, decoded.encoding, badAt);
    return decoded;
}

bool namesByteOrder(std::string_view encoding) {
    return encoding.size() > 2 && (sameText(encoding.substr(encoding.size() - 2), "LE") ||
                                   sameText(encoding.substr(encoding.size() - 2), "BE"));
}

// A mark says more than a person who says "utf-16", and the bytes where no order of them is said.
std::string encodingOf(Input& input, const Opening& opening) {
    const std::string wish = wishedEncoding(opening);
    if (!opening.wishes.encoding.empty() && !wish.starts_with("UTF-16")) return wish;
    const std::string found = namesByteOrder(opening.wishes.encoding)
                                  ? markedEncodingOf(input.head())
                                  : wideEncodingOf(input.head());
    return found.empty() ? wish : found;
}

// Whether a text means in an encoding what it means byte by byte.
bool readsAsItStands(std::string_view text, const std::string& encoding) {
    std::size_t badAt = 0;
    const Quor::Ptr<TextBlock> made = toUtf8(text, encoding, badAt);
    return made && std::string_view(made->data(), made->size()) == text;
}

}  // namespace

void decode(Input& input, Log& log) {
    if (isPacked(input.head())) {
        log.form.isPacked = true;
        input.become(unpacked(input.text(), log.name, log.opening));
    }
    if (isWorkbook(input.head())) return;
    const std::string encoding = encodingOf(input, log.opening);
    if (!encoding.empty()) convert(input, encoding, log);
}

void decodeDeclared(Input& input, std::string_view declared, Log& log) {
    if (!log.opening.wishes.encoding.empty() || !log.form.encoding.empty()) return;
    if (declared.empty() || isWellFormedUtf8(input.text())) return;
    const std::optional<std::string> known = encodingNamed(std::string(declared));
    if (known && !known->empty() && readsAsItStands(declared, *known)) convert(input, *known, log);
}

void decodeBytes(Input& input, Log& log) {
    if (!log.opening.wishes.encoding.empty() || !log.form.encoding.empty()) return;
    const std::string_view text = input.text();
    if (isWellFormedUtf8(text)) return;
    Decoded decoded = decodedBytes(text);
    log.report([&]() -> Problem {
        const std::string_view term = log.opening.terms->encoding;
        return {0, "", "bytes that are no UTF-8", "UTF-8",
                decoded.text ? concat("the file is read as ", decoded.encoding, "; ", term,
                                      " says what it is")
                             : concat("they are kept as they are; ", term, " says what they are")};
    });
    if (!decoded.text) return;
    input.become(std::move(decoded.text));
    log.form.encoding = decoded.encoding;
}

std::string encodingOfBytes(std::string_view text) {
    if (isWellFormedUtf8(text)) return {};
    const Decoded decoded = decodedBytes(text);
    return decoded.text ? decoded.encoding : std::string();
}

}  // namespace vek::formats
