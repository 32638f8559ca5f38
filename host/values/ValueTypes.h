#pragma once

#include "interfaces/IcuType.h"

#include <cstddef>

namespace host {

/** Bytes of a scalar value in the host's representation; 0 for texts, arrays and anything that is not a type. */
std::size_t scalarWidth(ICU_Type type);

/** The type of an array's elements; ICU_NONE for what is not an array. Texts and binary are not arrays here. */
ICU_Type arrayElement(ICU_Type type);

/**
 * The type's name in tag addresses, without the count: "unsignedByte", "string"; "unknown" for anything that is not a
 * type.
 */
char const* typeName(ICU_Type type);

} // namespace host
