#pragma once

#include "base/Result.h"
#include "interfaces/IcuType.h"

#include <span>
#include <string>
#include <string_view>

namespace host {

/**
 * One scalar value as text: "true" or "false", a decimal number, the shortest decimal form of a floating-point
 * number that reads back to the same value. Times are 64-bit numbers without a sign.
 *
 * @param bytes scalarWidth(type) bytes in the machine's byte order, at any address
 */
base::Result<std::string> formatScalar(ICU_Type type, std::span<unsigned char const> bytes);

/**
 * Reads a scalar from text into @p bytes, which are scalarWidth(type) bytes.
 *
 * Booleans are true, false, 1 or 0; integers are decimal, or hexadecimal after "0x"; nothing may follow the value, and
 * values out of the type's range are refused. @p bytes is not written on failure.
 */
base::Outcome parseScalar(std::string_view text, ICU_Type type, std::span<unsigned char> bytes);

} // namespace host
