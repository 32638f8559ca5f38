#pragma once

#include "base/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

/** The settings that may differ from node to node. The texts and numbers are checked by the driver, not here. */
struct NodeSettings {
    int blockSize = 128;            ///< bytes, 128..1460
    int timeoutMs = 10'000;         ///< 100..20000
    int repeat = 2;                 ///< attempts for one request
    std::string model = "Motorola"; ///< byte order: "Motorola" or "Intel"
    int routingLevels = 0;          ///< 0..2
    std::string coupler1 = "0";     ///< of routing level 1: "0" to "6"
    int channel1 = 0;               ///< 0..19
    std::string address1 = "0.0.0.0";
    std::string coupler2 = "0"; ///< of routing level 2
    int channel2 = 0;
    std::string address2 = "0.0.0.0";
};

/** One node's own settings; anything not set is as for every node. */
struct NodeOverrides {
    int node = 0;
    std::optional<std::string> prefix; ///< alias
    std::optional<int> blockSize;
    std::optional<int> timeoutMs;
    std::optional<int> repeat;
    std::optional<std::string> model;
    std::optional<int> routingLevels;
    std::optional<std::string> coupler1;
    std::optional<int> channel1;
    std::optional<std::string> address1;
    std::optional<std::string> coupler2;
    std::optional<int> channel2;
    std::optional<std::string> address2;
};

/** The configuration of a driver instance; starts with the configuration tool's defaults. */
struct DriverConfig {
    std::string uart = "com1";   ///< a port name or the path of a device
    int baudrate = 19'200;       ///< bit/s
    std::string parity = "none"; ///< "none", "even", "odd" or "mark"
    int stopbits = 1;
    std::string mode = "RS-232";              ///< or "RS-485"
    std::string protType = "ABB_RS232_AC";    ///< or "Serial_RS232"
    NodeSettings nodes;                       ///< for every node
    std::vector<NodeOverrides> nodeOverrides; ///< each node once
};

/**
 * The driver's configuration string: "CfgVer=1 uart=com1 ... Node3::Timeout=500".
 *
 * Blanks in texts are written "&nbsp;". A text that the string cannot carry is refused: other white space, control
 * characters, "&nbsp;" itself, "CfgVer=" and "::", which would be read as the start of another entry. A node number
 * that is negative or appears twice is refused as well.
 */
base::Result<std::string> configText(DriverConfig const& config);

} // namespace host
