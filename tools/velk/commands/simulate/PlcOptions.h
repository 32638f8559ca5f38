#pragma once

#include "tools/velk/commands/simulate/PlcFlags.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velk {

/** The simulated PLC's part of the command line. */
struct PlcOptions {
    std::string project; ///< a line file or a program file

    std::optional<std::string> port; ///< a real port; a pseudo-terminal without it
    std::optional<std::string> link; ///< a symbolic link to the port
    std::optional<int> baud;
    std::optional<std::string> parity;
    std::optional<int> stopBits;
    std::optional<std::string> mode;

    std::optional<std::string> framing;
    std::optional<std::string> byteOrder;
    std::optional<int> blockSize;

    std::optional<std::string> station; ///< the one that the faults apply to; all of them without it
    std::optional<double> drop;         ///< a share of the frames, 0 to 1
    std::optional<double> flip;         ///< the same
    std::vector<plc::TimeWindow> silent;
    std::vector<simulation::Replacement> replaceProgram;
    std::vector<plc::Micros> restart;
    std::vector<std::string> badQuality;
    std::vector<std::string> faults; ///< rules as in a description
    bool refuseLogin = false;
    std::optional<std::uint32_t> seed;

    std::int64_t forMicroseconds = 0; ///< 0: until the user asks to stop
    bool quiet = false;
    bool json = false;
    bool verbose = false;
};

} // namespace velk
