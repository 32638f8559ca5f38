#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velk {

/** What is known of a serial port of this machine. */
struct PortInfo {
    std::string path;          ///< "/dev/ttyUSB0"
    std::string stableName;    ///< a path that stays when the adapter is plugged in again; empty when there is none
    std::string driver;        ///< the kernel's; empty when it is not known
    std::string product;       ///< what the adapter calls itself
    std::string serial;        ///< of the adapter
    std::string heldBy;        ///< the program that has it open; empty for none
    std::string mayNot;        ///< why this user may not open it, with what to do; empty when it may
    std::optional<bool> rs485; ///< the kernel switches the direction of an RS-485 line; nothing when it is not known
};

/** The serial ports of this machine, by path. A port that is free is opened for a moment to see what it can do. */
std::vector<PortInfo> listPorts();

/** The same as text: a table, or a JSON document. */
std::string portsTable(std::vector<PortInfo> const& ports);
std::string portsJson(std::vector<PortInfo> const& ports);

} // namespace velk
