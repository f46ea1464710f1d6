#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <vekdb/host/text_block.h>

/// Texts that are not UTF-8. encoding.cpp is the only place that knows the system's iconv.
namespace vek::formats {

/// Whether all bytes are well-formed UTF-8; a text without any byte beyond 0x7F is told at the
/// speed of memory.
bool isWellFormedUtf8(std::string_view text);

/// The characters of bytes beyond 0x7F, and such bytes that make none.
struct Utf8Count {
    std::size_t good = 0;
    std::size_t bad = 0;

    void add(std::string_view text);
};

/// Whether of the bytes beyond 0x7F at least as many characters are well-formed as are not: UTF-8
/// that has been damaged.
bool isMostlyUtf8(std::string_view text);

/// The encoding as iconv calls it, "" for UTF-8; nothing for one that the system does not have.
std::optional<std::string> encodingNamed(const std::string& name);

/// "UTF-16LE" or "UTF-16BE" for a text that begins with a mark of it; "" for others.
std::string markedEncodingOf(std::string_view head);
/// The same also for a text whose bytes are zero in turns, as those of Latin letters are, or whose
/// lines end as those of such a text do.
std::string wideEncodingOf(std::string_view head);

/// "WINDOWS-1252" or "MACINTOSH", whichever makes letters of more of the bytes beyond 0x7F that
/// stand beside letters.
std::string likelyEncoding(std::string_view text);

/// The text as UTF-8; nothing where a byte at `badAt` is no character of the encoding.
Quor::Ptr<TextBlock> toUtf8(std::string_view text, const std::string& encoding, std::size_t& badAt);
/// The way back.
std::optional<std::string> fromUtf8(std::string_view text, const std::string& encoding,
                                    std::size_t& badAt);

}  // namespace vek::formats
