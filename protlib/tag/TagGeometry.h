#pragma once

#include "interfaces/IcuType.h"

#include <cstdint>

class ITag;

/**
 * Position and elements of a tag. Tags are used through ITag only and must not be null.
 *
 * Positions are counted in bits from the start of the tag's address space. They are computed in 64 bits; the functions
 * that return an int return the nearest int.
 */
namespace ProtUtilsN {

/** IsBitType() of the tag's type. */
bool IsBitType(ITag const* tag);

/** Number of elements of an array or string, 1 for a scalar, 0 when the element type has no fixed length. */
int GetItemCount(ITag const* tag);

/** Element type of an array or string, the type itself for a scalar. */
ICU_Type GetBasicType(ITag const* tag);

/** Bytes of one element. */
int GetBasicLength(ITag const* tag);

/** First bit of the tag. */
int getStartingBit(ITag const* tag);

/** The bit just past the tag. */
int getEndingBit(ITag const* tag);

/** First bit of the tag, exact for every tag. */
std::int64_t getStartingBitExact(ITag const* tag);

/** The bit just past the tag, exact for every tag. */
std::int64_t getEndingBitExact(ITag const* tag);

} // namespace ProtUtilsN
