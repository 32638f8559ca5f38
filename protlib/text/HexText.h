#pragma once

#include <array>
#include <span>
#include <string_view>

/** Bytes as two hexadecimal digits each, high nibble first. */
namespace HexTextN {

/** Value of a digit 0-9, A-F or a-f; -1 for any other character. */
int HexDigitValue(char digit);

/** Reads @p bytes.size() bytes. False when @p digits is not twice as long or contains anything but digits. */
bool DecodeHex(std::string_view digits, std::span<unsigned char> bytes);

/** The two lower-case digits of @p byte. */
std::array<char, 2> EncodeHex(unsigned char byte);

} // namespace HexTextN
