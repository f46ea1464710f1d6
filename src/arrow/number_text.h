#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Numbers as the texts that people expect. Each function puts the text in the place of what the
// string held.

void writeInteger(std::int64_t number, std::string& out);
void writeUnsigned(std::uint64_t number, std::string& out);

/// The fewest digits that are read back as the same number: plain where people would write it so,
/// with an exponent for the very large and the very small.
void writeFloat(double number, std::string& out);
void writeFloat(float number, std::string& out);

/// The number that the 16 bits stand for.
float fromHalf(std::uint16_t bits);

/// A whole number of 4, 8, 16 or 32 bytes in the machine's order, with so many of its digits behind
/// the point; a negative number of them is zeros in front of it.
void writeDecimal(const void* number, std::size_t bytes, int digits, std::string& out);
