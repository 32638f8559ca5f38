#pragma once

#include "interfaces/ItemStatus.h"

#include <cstdint>

struct MemTypeRow;

namespace _VELK {

/** Facts about a tag that exchanges find out. */
struct TagBinding {
    int index = 0;
    int subindex = 0;
    bool bound = false;
    std::uint32_t stamp = 0;
    MemTypeRow const* symbolRow = nullptr; ///< area of the bound variable, null when the driver cannot address it
    std::uint32_t missingFile = 0;         ///< generation of the file that lacks the variable; 0 for none
    idal_error_t status = kItemGood;
};

} // namespace _VELK
