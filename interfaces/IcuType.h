#pragma once

/**
 * The host's data types.
 *
 * The values are part of the contract with the host: ITag::GetVarType() returns them, and bit (value - 1) of a type
 * mask belongs to the type.
 */
enum ICU_Type : int {
    ICU_NONE = 0, ///< no type, for example the item type of a scalar tag
    ICU_BOOLEAN = 1,
    ICU_BYTE = 2,  ///< signed, 8 bits
    ICU_SHORT = 3, ///< signed, 16 bits
    ICU_INT = 4,   ///< signed, 32 bits
    ICU_UNSIGNED_BYTE = 5,
    ICU_UNSIGNED_SHORT = 6,
    ICU_UNSIGNED_INT = 7,
    ICU_FLOAT = 8,          ///< IEEE 754, 32 bits
    ICU_DOUBLE = 9,         ///< IEEE 754, 64 bits
    ICU_STRING = 10,        ///< bytes of text
    ICU_BINARY = 11,        ///< bytes without a meaning for the host
    ICU_TIME = 12,          ///< 8 bytes
    ICU_BOOLEAN_ARRAY = 13, ///< one host byte for each bit
    ICU_BYTE_ARRAY = 14,
    ICU_SHORT_ARRAY = 15,
    ICU_INT_ARRAY = 16,
    ICU_UNSIGNED_BYTE_ARRAY = 17,
    ICU_UNSIGNED_SHORT_ARRAY = 18,
    ICU_UNSIGNED_INT_ARRAY = 19,
    ICU_FLOAT_ARRAY = 20,
    ICU_DOUBLE_ARRAY = 21,
    ICU_TIME_ARRAY = 22,
    ICU_UINT64 = 23,
    ICU_INT64 = 24,
    ICU_UINT64_ARRAY = 25,
    ICU_INT64_ARRAY = 26
};
