#pragma once

#include "base/Result.h"

#include <cstdint>
#include <optional>

namespace host {

/** What a serial port can tell and the binary contract has no room for. */
struct PortReport {
    std::optional<base::Failure> lastError; ///< why it could not be created or opened; none after an open that worked
    std::optional<base::Failure> lastFault; ///< why it died while it was open; none after an open that worked
    std::int64_t firstByteAt = 0;           ///< of the frame received last, microseconds of the port's clock
    std::int64_t lastByteAt = 0;
};

} // namespace host
