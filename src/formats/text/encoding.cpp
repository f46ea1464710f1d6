#include "formats/text/encoding.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <vekdb/host/text_util.h>
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

constexpr std::size_t sampleSize = 4096;
constexpr std::uint64_t highBits = 0x8080808080808080u;

unsigned char byteAt(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

// Where the first byte beyond 0x7F is, or the end.
std::size_t firstHighByte(std::string_view text, std::size_t at) {
    for (; at + 8 <= text.size(); at += 8) {
        std::uint64_t bytes;
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if ((bytes & highBits) != 0) break;
    }
    while (at < text.size() && byteAt(text, at) < 0x80) ++at;
    return at;
}

bool hasHighByte(std::string_view text) {
    unsigned char all = 0;
    for (char c : text) all |= static_cast<unsigned char>(c);
    return all >= 0x80;
}

class Conversion {
public:
    Conversion(const std::string& to, const std::string& from)
        : handle_(::iconv_open(to.c_str(), from.c_str())) {}
    ~Conversion() {
        if (isThere()) ::iconv_close(handle_);
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    bool isThere() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    /// Gives room with `makeRoom(used)` until all is converted; how many bytes were made, or
    /// nothing where a byte at `badAt` cannot be.
    template <class MakeRoom>
    std::optional<std::size_t> run(std::string_view text, MakeRoom makeRoom, std::size_t& badAt) {
        char* from = const_cast<char*>(text.data());  // iconv changes nothing of it
        std::size_t left = text.size();
        std::size_t made = 0;
        while (left > 0) {
            auto [to, room] = makeRoom(made);
            char* at = to;
            const std::size_t result = ::iconv(handle_, &from, &left, &at, &room);
            made += static_cast<std::size_t>(at - to);
            if (result != static_cast<std::size_t>(-1) || errno == E2BIG) continue;
            badAt = text.size() - left;
            return {};
        }
        return flush(made, makeRoom);
    }

private:
    // A letter that waits for marks behind it, and the way back to where a text begins.
    template <class MakeRoom>
    std::size_t flush(std::size_t made, MakeRoom makeRoom) {
        for (;;) {
            auto [to, room] = makeRoom(made);
            char* at = to;
            const std::size_t result = ::iconv(handle_, nullptr, nullptr, &at, &room);
            made += static_cast<std::size_t>(at - to);
            if (result != static_cast<std::size_t>(-1) || errno != E2BIG) return made;
        }
    }

    iconv_t handle_;
};

struct Room {
    char* at;
    std::size_t size;
};

bool isSmallLetter(unsigned char byte) {
    return byte >= 'a' && byte <= 'z';
}

bool isLetter(unsigned char byte) {
    return isSmallLetter(static_cast<unsigned char>(asciiLower(static_cast<char>(byte))));
}

bool isOneOf(unsigned char byte, std::string_view bytes) {
    return byte != 0 && bytes.find(static_cast<char>(byte)) != bytes.npos;
}

// A byte beyond 0x7F, which two systems have different signs for, and what stands around it.
struct HighByte {
    unsigned char before;
    unsigned char byte;
    unsigned char behind;

    HighByte(std::string_view text, std::size_t at)
        : before(at > 0 ? byteAt(text, at - 1) : 0),
          byte(byteAt(text, at)),
          behind(byteAt(text, at + 1)) {}

    bool isInWord() const { return isLetter(before) || isLetter(behind); }
    bool isWithinSmall() const { return isSmallLetter(before) && isSmallLetter(behind); }
    bool isWithinWord() const { return isLetter(before) && isLetter(behind); }
    bool beginsWord() const {
        const bool isBehindText =
            isLetter(before) || before >= 0x80 || isAsciiDigit(static_cast<char>(before));
        return !isBehindText && isSmallLetter(behind);
    }
};

// In Windows-1252 the letters with marks are the last bytes, in MacRoman those behind 0x7F. What
// both have other signs for counts for neither, and in no word is a capital behind a small letter.
bool speaksForWindows(const HighByte& at) {
    const bool isSmall = at.byte >= 0xDF;
    const bool isCapital = (at.byte >= 0xD6 && at.byte < 0xDF) ||
                           (at.byte >= 0xC0 && at.byte <= 0xC8) ||
                           (at.byte >= 0xCB && at.byte <= 0xCF);
    // As in MacRoman a question or an exclamation begins so.
    const bool isMarkOfMac = (at.byte == 0xC0 || at.byte == 0xC1) && at.beginsWord();
    const bool standsSo = isCapital && !isMarkOfMac && !isSmallLetter(at.before);
    return at.isInWord() && (isSmall || standsSo);
}

bool isMacLetter(unsigned char byte) {
    return byte >= 0x80 && byte <= 0x9F &&
           !isOneOf(byte, "\x80\x82\x84\x85\x86\x91\x92\x93\x94\x95\x96\x97\x9C");
}

// Where in Windows-1252 a sign of prices or of laws, a fraction or a capital would stand that
// cannot stand there, in MacRoman a letter, a degree, a dash or a quote does.
bool isOddInWindows(const HighByte& at) {
    if (isOneOf(at.byte, "\x81\x8D\x8F\x90\x9D")) return at.isInWord();  // else nothing
    if (isOneOf(at.byte, "\x80\x86\xBE")) return at.beginsWord();
    if (isOneOf(at.byte, "\xBE\xBF")) return at.isWithinWord();
    if (isOneOf(at.byte, "\x91\x93\x94\x95")) return at.isWithinSmall();
    if (at.byte == 0xA1) return isAsciiDigit(static_cast<char>(at.before));
    const bool isBetweenBlanks = at.before == ' ' && at.behind == ' ';
    if (isOneOf(at.byte, "\xD0\xD1") && isBetweenBlanks) return true;
    return isOneOf(at.byte, "\xA7\xC9\xCF\xD0\xD1\xD3\xD5") && isSmallLetter(at.before);
}

bool speaksForMac(const HighByte& at) {
    return (at.isInWord() && isMacLetter(at.byte)) || isOddInWindows(at);
}

bool isOfPlainText(unsigned unit) {
    return (unit >= 0x20 && unit < 0x7F) || unit == '\t' || unit == '\n' || unit == '\r';
}

// What a text is if it is UTF-16, by its units.
struct WideUnits {
    std::size_t plain = 0;  ///< that ASCII has, too
    std::size_t ends = 0;   ///< of lines
    bool areText = true;    ///< no control characters, no half of a pair

    WideUnits(std::string_view text, bool isBigEnd) {
        bool isBehindFirst = false;
        for (std::size_t at = 0; at + 2 <= text.size(); at += 2) {
            const unsigned unit = (byteAt(text, at + (isBigEnd ? 0 : 1)) << 8u) |
                                  byteAt(text, at + (isBigEnd ? 1 : 0));
            const bool isSecond = unit >= 0xDC00 && unit <= 0xDFFF;
            const bool isControl = (unit < 0xA0 && !isOfPlainText(unit)) || unit >= 0xFFFE;
            if (isControl || isSecond != isBehindFirst) areText = false;
            isBehindFirst = unit >= 0xD800 && unit <= 0xDBFF;
            plain += isOfPlainText(unit) ? 1 : 0;
            ends += unit == '\n' || unit == '\r' ? 1 : 0;
        }
    }
};

// Whether most bytes but the zeros are such as UTF-8 has.
bool isNearlyUtf8(std::string_view text) {
    std::size_t good = 0;
    std::size_t bad = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const unsigned char byte = byteAt(text, at);
        if (byte == 0) continue;
        const std::size_t size = byte < 0x80 ? 0 : wideCharacterSize(text.substr(at));
        (size != 0 || isOfPlainText(byte) ? good : bad) += std::max<std::size_t>(size, 1);
        at += std::max<std::size_t>(size, 1) - 1;
    }
    return good > 10 * bad;
}

// Lines of UTF-16 in whatever letters: their ends and most of what stands between cells have a zero
// byte. In UTF-8 with zero bytes in it not every line would end so.
bool isWideText(std::string_view text, bool isBigEnd) {
    const WideUnits units(text, isBigEnd);
    if (!units.areText || units.ends == 0) return false;
    const auto endBytes =
        std::count(text.begin(), text.end(), '\n') + std::count(text.begin(), text.end(), '\r');
    const bool endsAll = static_cast<std::size_t>(endBytes) == units.ends;
    return (endsAll && units.plain > units.ends) || !isNearlyUtf8(text);
}

}  // namespace

bool isWellFormedUtf8(std::string_view text) {
    constexpr std::size_t chunk = 1 << 16;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view next = text.substr(at, chunk);
        if (!hasHighByte(next)) {
            at += next.size();
            continue;
        }
        const std::size_t end = at + next.size();
        for (at = firstHighByte(text, at); at < end; at = firstHighByte(text, at)) {
            const std::size_t size = wideCharacterSize(text.substr(at));
            if (size == 0) return false;
            at += size;
        }
    }
    return true;
}

void Utf8Count::add(std::string_view text) {
    for (std::size_t at = firstHighByte(text, 0); at < text.size(); at = firstHighByte(text, at)) {
        const std::size_t size = wideCharacterSize(text.substr(at));
        ++(size != 0 ? good : bad);
        at += std::max<std::size_t>(size, 1);
    }
}

bool isMostlyUtf8(std::string_view text) {
    Utf8Count count;
    count.add(text);
    return count.good >= count.bad;
}

std::optional<std::string> encodingNamed(const std::string& name) {
    std::string upper;
    for (char c : name) upper += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    // As iconv -l writes names. What else may stand there drops characters or changes them.
    if (upper.ends_with("//")) upper.resize(upper.size() - 2);
    if (upper.find('/') != upper.npos) return {};
    if (upper == "UTF-8" || upper == "UTF8") return std::string();
    if (upper == "MACROMAN" || upper == "MAC-ROMAN") upper = "MACINTOSH";
    // Marks stay in the text.
    if (upper == "UTF-16" || upper == "UTF16") upper = "UTF-16LE";
    if (!Conversion("UTF-8", upper).isThere() || !Conversion(upper, "UTF-8").isThere()) return {};
    return upper;
}

std::string markedEncodingOf(std::string_view head) {
    if (head.starts_with("\xFF\xFE")) return "UTF-16LE";
    return head.starts_with("\xFE\xFF") ? "UTF-16BE" : "";
}

std::string wideEncodingOf(std::string_view head) {
    if (std::string marked = markedEncodingOf(head); !marked.empty()) return marked;
    const std::string_view sample = head.substr(0, sampleSize);
    const std::size_t units = sample.size() / 2;
    std::size_t first = 0;
    std::size_t second = 0;
    for (std::size_t i = 0; i < units; ++i) {
        first += sample[2 * i] == '\0' ? 1 : 0;
        second += sample[2 * i + 1] == '\0' ? 1 : 0;
    }
    if (first + second == 0) return "";
    if (second > units / 2 && first == 0) return "UTF-16LE";
    if (first > units / 2 && second == 0) return "UTF-16BE";
    if (isWideText(sample, false)) return "UTF-16LE";
    return isWideText(sample, true) ? "UTF-16BE" : "";
}

std::string likelyEncoding(std::string_view text) {
    std::size_t windows = 0;
    std::size_t mac = 0;
    for (std::size_t at = firstHighByte(text, 0); at < text.size();
         at = firstHighByte(text, at + 1)) {
        const HighByte high(text, at);
        windows += speaksForWindows(high) ? 1 : 0;
        mac += speaksForMac(high) ? 1 : 0;
    }
    return mac > windows ? "MACINTOSH" : "WINDOWS-1252";
}

Quor::Ptr<TextBlock> toUtf8(std::string_view text, const std::string& encoding,
                            std::size_t& badAt) {
    Quor::Ptr<TextBlock> block = TextBlock::create(text.size() + text.size() / 8 + 64);
    const auto makeRoom = [&](std::size_t used) {
        if (block->size() - used < 16) block->resize(block->size() + block->size() / 2);
        return Room{block->data() + used, block->size() - used};
    };
    Conversion conversion("UTF-8", encoding);
    const std::optional<std::size_t> made = conversion.run(text, makeRoom, badAt);
    if (!made) return {};
    block->resize(*made);
    return block;
}

std::optional<std::string> fromUtf8(std::string_view text, const std::string& encoding,
                                    std::size_t& badAt) {
    std::string out(text.size() + 64, '\0');
    const auto makeRoom = [&](std::size_t used) {
        if (out.size() - used < 16) out.resize(2 * out.size());
        return Room{out.data() + used, out.size() - used};
    };
    Conversion conversion(encoding, "UTF-8");
    const std::optional<std::size_t> made = conversion.run(text, makeRoom, badAt);
    if (!made) return {};
    out.resize(*made);
    return out;
}

}  // namespace vek::formats
