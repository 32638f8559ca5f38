#pragma once

#include "base/Result.h"
#include "interfaces/IcuType.h"

#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** A data type as tag addresses have it, taken apart: "short-6(swap2,bcd)". */
struct DriverType {
    ICU_Type type = ICU_NONE;
    int count = 1; ///< elements of an array, bytes of a text
    std::vector<std::string> conversions;
};

/**
 * Takes a data type apart. Refused are those that no memory area of the PLC takes: names that the driver does not
 * know, and 64-bit, binary and time values, which it knows and takes nowhere; and conversions that it does not know.
 */
base::Result<DriverType> parseDriverType(std::string_view text);

/** The name for tag addresses, without conversions: "short-6", "boolean". */
std::string driverTypeText(ICU_Type type, std::size_t count);

} // namespace velk
