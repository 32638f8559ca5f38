#pragma once

#include "symbols/TextPool.h"

#include <cstdint>
#include <span>
#include <vector>

namespace _VELK {

/** One data type of a symbol file. A placeholder has class 29, no name and no extra. */
struct SdbType {
    std::uint32_t typeClass = 0;
    std::uint32_t size = 0;         ///< bytes of a value of this type
    char const* name = nullptr;     ///< zero-terminated; null when the record has none
    std::uint32_t elementType = 0;  ///< arrays: number of the element's type
    std::span<char const> extra;    ///< as read: an array's dimensions (8 bytes each), else 4 bytes or nothing
    char const* listText = nullptr; ///< the symbols' shared copy of the name; null until one needs it
};

/** The data types of a symbol file, by number. Needed only while the file is parsed. */
struct SDBTag {
    std::vector<SdbType> types;
    TextPool texts; ///< the types' names and extras

    void clear() noexcept;
};

} // namespace _VELK
