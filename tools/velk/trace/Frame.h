#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::trace {

/** "little-endian" or "big-endian". */
std::string_view orderText(plc::ByteOrder order);

/** Which way bytes went. */
enum class Way { ToPlc, FromPlc };

enum class FrameKind {
    Unknown, ///< bytes that are not a frame, or only a part of one
    Block,
    Acknowledge, ///< of a block, by its number
    Turnaround,  ///< acknowledge 0 to the PLC: the panel waits for the response
    Closing,     ///< acknowledge 0 from the PLC: the exchange is over
};

/** The 19 bytes before a frame that is routed through couplers. */
struct Routing {
    std::uint16_t blockSize = 0;
    unsigned levels = 0;
    std::array<std::uint8_t, 2> hop{};
    std::array<std::array<std::uint8_t, 4>, 2> address{};
    std::uint8_t status = 0; ///< not 0 in a frame from the PLC: a coupler could not pass the frame on
};

/** What a frame says. Of the numbers only those of its kind have a meaning. */
struct Frame {
    FrameKind kind = FrameKind::Unknown;
    std::optional<Routing> routing{};
    plc::ByteOrder order = plc::ByteOrder::kLittle;
    bool orderIsCertain = false; ///< the order follows from the bytes themselves

    std::uint16_t number = 0;          ///< of the block, or of the block that is acknowledged
    std::uint16_t length = 0;          ///< blocks: the length field
    bool last = false;                 ///< blocks
    std::uint8_t checksum = 0;         ///< blocks: as received
    std::uint8_t rightChecksum = 0;    ///< blocks: as it should be
    std::uint16_t code = 0;            ///< acknowledges
    plc::ByteView payload{};           ///< blocks: part of the bytes that were decoded
    std::vector<std::string> faults{}; ///< what is wrong with the frame, each in a few words
};

/**
 * Decodes bytes that arrived without a pause between them. Any bytes are accepted.
 *
 * Framing and byte order are determined from the bytes: a routing header has its own first byte, an acknowledge carries
 * the number 10, and the length field of a block matches the received bytes in only one of the two orders.
 *
 * @param usual the order to assume when the bytes fit both
 */
Frame decodeFrame(plc::ByteView bytes, Way way, std::optional<plc::ByteOrder> usual = std::nullopt);

} // namespace velk::trace
