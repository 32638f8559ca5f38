#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ProtUtilsN {

/** The text without blanks and tabs at its ends; only these two characters are trimmed. */
std::string GetTrim(std::string const& text);

/**
 * Splits @p text at every @p separator and appends the trimmed pieces to @p out, empty ones included.
 *
 * @p out is not cleared. A text without the separator, also the empty one, is one piece.
 */
void ParseSubstrings(std::string const& text, std::vector<std::string>& out, char separator);

/** Makes @p kept a copy of @p text; empty when that is null or there is no memory for it. */
void keepText(std::string& kept, char const* text);

/**
 * The integer at the start of @p text, read as strtoll() reads it; 0 when there is none.
 *
 * @param base 10, or 0 for base detection ("0x" hexadecimal, a leading "0" octal)
 * @return the nearest 64-bit number when the integer is larger
 */
std::int64_t parseInteger(char const* text, int base);

/** The nearest int. */
int clampToInt(std::int64_t value);

} // namespace ProtUtilsN

/**
 * Writes the digits of @p value, terminated by a zero, and returns @p buffer.
 *
 * Radix 16 uses 0-9 and a-f; every other radix writes '0' plus the digit's value. No sign is ever written: a negative
 * value gives the digits of its magnitude. A radix below 2 gives an empty text.
 *
 * @param buffer room for the digits and the zero, 33 bytes at most (radix 2)
 */
char* itoa(int value, char* buffer, int radix);
