#pragma once

#include <string>
#include <string_view>

namespace vek::formats {

class Input;
struct Log;

/// Makes UTF-8 of an input that is packed, is UTF-16, or is in the encoding that a person named,
/// and notes what it was. A Failure where that cannot be.
void decode(Input& input, Log& log);

/// Makes UTF-8 of a text that is not, and says itself what it is; where it does not, or names what
/// nobody knows, it stays as it is.
void decodeDeclared(Input& input, std::string_view declared, Log& log);

/// Makes UTF-8 of a text that is not, and that nobody named an encoding for; tells it. A text that
/// has bytes for which the likely encoding has no character stays as it is.
void decodeBytes(Input& input, Log& log);
/// The encoding that it would take a text for, "" where the bytes stay as they are.
std::string encodingOfBytes(std::string_view text);

}  // namespace vek::formats
