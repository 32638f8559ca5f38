#pragma once

/**
 * Moves bits between the host's arrays, one byte for each bit, and the PLC's packed memory.
 *
 * Bits are numbered from the least significant bit of byte 0 upward: bit n is bit n mod 8 of byte n / 8.
 */
namespace ProtUtilsN {

/** Number of bytes that the bits startBit to startBit + bitCount - 1 touch; division truncates toward zero. */
int GetLenOfBits(int startBit, int bitCount);

/**
 * Spreads @p count bits of @p packed, from bit @p startBit on, to one byte each: 0 or 1.
 *
 * @param bits room for @p count bytes
 * @param packed GetLenOfBits(startBit % 8, count) bytes from byte startBit / 8 on
 */
void UnpackBits(unsigned char* bits, unsigned char const* packed, int startBit, int count);

/** The inverse: a byte that is not 0 sets its bit, a 0 clears it. The other bits of @p packed are unchanged. */
void PackBits(unsigned char* packed, unsigned char const* bits, int startBit, int count);

} // namespace ProtUtilsN
