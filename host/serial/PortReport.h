#pragma once

#include "base/Result.h"

#include <cstdint>
#include <optional>

namespace host {

/** Information about a serial port that the binary contract cannot carry. */
struct PortReport {
    std::optional<base::Failure> lastError; ///< why it could not be created or opened; none after a successful open
    std::optional<base::Failure> lastFault; ///< why it failed while it was open; none after a successful open
    std::int64_t firstByteAt = 0;           ///< of the frame received last, microseconds of the port's clock
    std::int64_t lastByteAt = 0;
};

} // namespace host
