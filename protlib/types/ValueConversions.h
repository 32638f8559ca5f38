#pragma once

#include "interfaces/IcuType.h"

#include <cstddef>
#include <span>

/**
 * The conversions that a tag can carry, applied in place to the bytes of one host value.
 *
 * Numbers are in host order (little-endian on every machine this runs on). Each function returns false when the value
 * or its type does not fit; the bytes may then be partly converted. An empty span always succeeds.
 */
namespace ValueConversionsN {

/** "swapnibble": exchanges the high and the low nibble of every byte. Never fails. */
bool SwapNibbles(std::span<unsigned char> bytes);

/** "swap2", "swap4", "swap8": reverses every group of @p width bytes. Fails when the last group is not complete. */
bool ReverseGroups(std::span<unsigned char> bytes, std::size_t width);

/**
 * "bcd" towards the host: packed decimal to binary, element by element of @p elementLength bytes.
 *
 * Byte i of an element weighs 100^i, so the bytes 34 12 are 1234. Sum and weight have 32 bits and wrap; in an element
 * longer than 4 bytes the remaining bytes become zero. Fails on a nibble above 9 and on an element length below 1.
 */
bool PackedDecimalToBinary(std::span<unsigned char> bytes, int elementLength);

/**
 * "bcd" towards the PLC: binary to packed decimal, element by element of @p elementLength bytes.
 *
 * Fails on a value with more than two digits a byte and on an element length outside 1 to 4. Elements are read as
 * unsigned, so a negative value fails too.
 */
bool BinaryToPackedDecimal(std::span<unsigned char> bytes, int elementLength);

/**
 * "neg": arithmetic negation; the smallest integer is unchanged.
 *
 * @param elementType signed 8, 16 or 32 bits, float, double, or either 64-bit integer; any other type fails
 * @param itemCount number of elements. All byte elements are negated, but wider ones only while their byte position is
 *        below the number of elements: in an array these are not all elements.
 */
bool Negate(std::span<unsigned char> bytes, ICU_Type elementType, int itemCount);

/** "inv" of bits, one byte each: 0 becomes 1, everything else 0. Never fails. */
bool InvertBits(std::span<unsigned char> bytes);

/** "inv" of everything else: the complement of every byte. Fails unless the type is an unsigned integer or binary. */
bool InvertBytes(std::span<unsigned char> bytes, ICU_Type elementType);

} // namespace ValueConversionsN
