#pragma once

#include "base/Result.h"
#include "interfaces/IcuType.h"

#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** The parts of a data type in a tag address: "short-6(swap2,bcd)". */
struct DriverType {
    ICU_Type type = ICU_NONE;
    int count = 1; ///< elements of an array, bytes of a text
    std::vector<std::string> conversions;
};

/**
 * Parses a data type. Refuses what no memory area of the PLC accepts: types that the driver does not know, 64-bit,
 * binary and time values, which it knows but accepts nowhere, and unknown conversions.
 */
base::Result<DriverType> parseDriverType(std::string_view text);

/** The name for tag addresses, without conversions: "short-6", "boolean". */
std::string driverTypeText(ICU_Type type, std::size_t count);

} // namespace velk
