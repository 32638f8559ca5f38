#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/FrameParser.h"
#include "plc/frames/PlcRouting.h"
#include "plc/program/ProgramDescription.h"
#include "plc/station/Faults.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace plc {

/// Everything that makes one station of a line. The defaults suit a test.
struct StationDescription {
    std::string name = "plc";
    ByteOrder byteOrder = ByteOrder::kLittle;
    std::size_t blockSize = 128; ///< 128..1460, the same as the panel's
    Route route{};               ///< used with routed framing only
    ProgramDescription program{};

    std::size_t filePieceSize = 512;                 ///< bytes of a file in one reply, 1..65535
    std::uint16_t mismatchWord = 0x48;               ///< status word when the project identifier differs: 0x48 or 0x33
    Micros ackDelay{0};                              ///< from a frame to the acknowledge or the further response block
    Micros answerDelay{0};                           ///< from the turnaround to the first response block
    Micros exchangeTimeout{std::chrono::seconds(1)}; ///< silence of the panel after which an exchange is given up
    std::uint32_t faultSeed = 1;                     ///< seed of the generator for all random choices of the faults
    std::vector<FaultRule> faults{};
};

/// Throws DescriptionError when a number is out of its range. The program is not checked.
void checkStation(StationDescription const& station);

/// What is needed to read the station's frames.
[[nodiscard]] FrameKey frameKey(StationDescription const& station);

} // namespace plc
