#pragma once

#include "tools/velk/context/Choices.h"

#include <array>
#include <optional>
#include <string>

namespace velk {

/** Where a frame is routed on one level. */
struct CouplerOptions {
    std::optional<int> coupler;
    std::optional<int> channel;
    std::optional<std::string> address;
};

/** The flags of every command that uses a line. Those not given follow the project file. */
struct LineOptions {
    std::optional<std::string> file;
    std::optional<std::string> port;
    std::optional<int> baud;
    std::optional<std::string> parity;
    std::optional<int> stopBits;
    std::optional<std::string> mode;
    std::optional<std::string> framing;
    std::optional<std::string> station; ///< a name or a node number
    std::optional<std::string> byteOrder;
    std::optional<int> blockSize;
    std::optional<int> timeoutMs;
    std::optional<int> repeat;
    std::optional<int> routingLevels;
    std::array<CouplerOptions, kMostRoutingLevels> couplers; ///< by routing level
    std::optional<std::string> storage;
    bool quiet = false;
};

} // namespace velk
