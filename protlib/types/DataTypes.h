#pragma once

#include "interfaces/IcuType.h"

#include <array>
#include <string>
#include <vector>

/** The host's data types as text and in bytes. */
namespace ProtUtilsN {

/** One row of the type table. */
struct DataType {
    char const* name;   ///< as in type texts; there a name that ends in "-" is followed by a count
    ICU_Type type;      ///< the type itself
    ICU_Type basicType; ///< type of one element of an array or string, ICU_NONE for a scalar
    int length;         ///< bytes of one value, 0 when the length depends on the count
    int flag;           ///< the type's bit in a type mask: 1 << (type - 1)
};

/** All data types, in the order of their values: row k holds the type k + 1. */
extern std::array<DataType, 26> const DataTypes;

/**
 * Reads a type text such as "int", "string-20", "short-10" or "int(swap2,bcd)".
 *
 * @param type the type
 * @param basicType its element type, ICU_NONE for a scalar
 * @param length length of the host value in bytes: that of one element times the count after the "-" (a count that is
 *        missing or is not a number is 0); for booleans also the number of bits
 * @param params the words in the parentheses, trimmed, are appended (the conversions of a tag)
 * @return false for an unknown name, a "(" without a ")", and a length that is negative or does not fit an int;
 *         the outputs are then unchanged, except for @p params
 */
bool GetICOMType(std::string const& text, ICU_Type& type, ICU_Type& basicType, int& length,
                 std::vector<std::string>& params);

/**
 * Bytes of one value of a scalar type, 0 for arrays, strings and anything that is not a type.
 *
 * The lookup ends before the 64-bit arrays on purpose; like all arrays they give 0.
 */
int GetDataLength(ICU_Type type);

/** True for the boolean and the boolean array, whose values are bits on the PLC's side. */
bool IsBitType(ICU_Type type);

/** The type's bit in a type mask, 0 for anything that is not a type. */
int GetTypeFlag(ICU_Type type);

/** Version of this set of utilities: 200. */
int GetVersion();

} // namespace ProtUtilsN
