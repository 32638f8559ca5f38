#pragma once

#include "base/Result.h"
#include "interfaces/IcuType.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/**
 * A value in the host's representation as text.
 *
 * Scalars as in ScalarText.h; arrays as "[1, 2, 3]"; binary as pairs of hexadecimal digits; a text up to its first
 * zero byte, with control characters and "\" written as \n, \r, \t, \\ or \x1B.
 *
 * @param type ITag::GetVarType()
 * @param bytes GetVarLength() bytes, in the machine's byte order, at any address
 */
base::Result<std::string> formatValue(ICU_Type type, std::span<unsigned char const> bytes);

/**
 * The value for a text, exactly @p length bytes. Reads what formatValue() writes and what parseScalar() accepts.
 *
 * The brackets of an array may be omitted, and blanks are allowed between elements and between binary bytes. Arrays and
 * binary need exactly as many elements as fit @p length; a shorter text is filled with zero bytes.
 */
base::Result<std::vector<unsigned char>> parseValue(std::string_view text, ICU_Type type, std::size_t length);

/** The same for a scalar, whose type gives its length. */
base::Result<std::vector<unsigned char>> parseValue(std::string_view text, ICU_Type type);

} // namespace host
