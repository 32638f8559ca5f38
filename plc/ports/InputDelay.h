#pragma once

#include "plc/frames/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace plc {

/**
 * Delays the bytes from the panel to the pace of the line, for ports that have no pace.
 *
 * Bytes that come together are passed on together, when the last of them has arrived; bytes that come while the line is
 * busy start when it is free.
 */
class InputDelay {
public:
    /// 0 bytes a second: everything arrives at once.
    explicit InputDelay(std::uint32_t bytesPerSecond) : bytesPerSecond_(bytesPerSecond) {}

    void put(ByteView bytes, Micros now);
    /// Removes the bytes that arrived by `now`.
    [[nodiscard]] Bytes take(Micros now);
    /// When the next bytes have arrived.
    [[nodiscard]] std::optional<Micros> nextDue() const;
    /// How many bytes are in transit.
    [[nodiscard]] std::size_t size() const { return size_; }
    void clear();

private:
    struct Burst {
        Bytes bytes{};
        Micros due{};
    };

    std::uint32_t bytesPerSecond_;
    std::deque<Burst> bursts_;
    std::size_t size_ = 0;
    Micros lineFree_{Micros::min()};
};

} // namespace plc
