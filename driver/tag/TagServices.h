#pragma once

#include "driver/config/ParamManager.h"
#include "protlib/types/MemoryManager.h"

namespace _VELK {

/** What a tag can use of the driver that creates it: parameters and memory types. Both outlive the tag. */
struct TagServices {
    ParamManager const& params;
    MemoryManager const& memory;
};

} // namespace _VELK
