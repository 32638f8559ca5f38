#pragma once

#include "driver/config/NodeParams.h"
#include "driver/link/RoutingHeader.h"

#include <array>
#include <cstddef>

namespace _VELK {

inline constexpr std::size_t kDataLength = 75'000; ///< most bytes of a request and of a response
inline constexpr std::size_t kTxFrameLength = kRoutingHeaderLength + std::size_t{kMaxBlockSize};
inline constexpr std::size_t kRxFrameLength = 1'460; ///< routing header included

/** The buffers that all exchanges share. */
struct LinkBuffers {
    std::array<unsigned char, kTxFrameLength> txFrame{};
    std::array<unsigned char, kRxFrameLength> rxFrame{};
    std::array<unsigned char, kDataLength> txData{};
    std::array<unsigned char, kDataLength> rxData{};
};

} // namespace _VELK
