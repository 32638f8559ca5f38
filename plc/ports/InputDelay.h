#pragma once

#include "plc/frames/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace plc {

/**
 * Bytes on their way from the panel over a line that has a pace, where the port itself has none.
 *
 * What comes together is passed on together, when its last byte has arrived; what comes while the line is busy begins
 * when it is free.
 */
class InputDelay {
public:
    /// 0 bytes a second: everything arrives at once.
    explicit InputDelay(std::uint32_t bytesPerSecond) : bytesPerSecond_(bytesPerSecond) {}

    void put(ByteView bytes, Micros now);
    /// Removes the bytes that have arrived by `now`.
    [[nodiscard]] Bytes take(Micros now);
    /// When the next bytes have arrived.
    [[nodiscard]] std::optional<Micros> nextDue() const;
    /// How many bytes are on their way.
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
