#pragma once

#include <cstdint>
#include <string>

namespace host {

/** What a serial port can tell and the binary contract has no room for. */
struct PortReport {
    std::string lastError;        ///< why it could not be created or opened; empty after an open that worked
    std::string lastFault;        ///< why it died while it was open; empty after an open that worked
    std::int64_t firstByteAt = 0; ///< of the frame received last, microseconds of the port's clock
    std::int64_t lastByteAt = 0;
};

} // namespace host
