#pragma once

#include "interfaces/IcuType.h"

#include <array>
#include <cstdint>

/** One memory area of the PLC. */
struct MemTypeRow {
    char const* name;
    ICU_Type naturalType;
    int area; ///< the area's number in requests and in the PLC's symbol file
    int flags;
    int readTypes;  ///< mask of the types that can be read
    int writeTypes; ///< mask of the types that can be written
    int minIndex;
    int reserved; ///< 0
    int maxIndex;
};

/** The PLC's memory areas; rows 0 to 5 are the areas 0 to 5. */
extern std::array<MemTypeRow, 7> const MemTypes;

/** The row of an area number of the PLC's symbol file; null above 5. */
MemTypeRow const* memTypeRowOfArea(std::uint32_t area);

/** The row that the first letter of an address space selects: M, I, Q, 3, 4, 5 or N; null for any other. */
MemTypeRow const* memTypeRowOfLetter(char letter);
