#pragma once

#include "plc/frames/Bytes.h"

#include <concepts>
#include <cstddef>

namespace plc {

/// The byte order of a station's numbers, in frames, in payloads and in its memory.
enum class ByteOrder : std::uint8_t {
    kLittle, ///< the configuration's model "Intel": least significant byte first
    kBig     ///< the configuration's model "Motorola": most significant byte first
};

/// Writes `value` at `offset`; there must be room for a T from there on.
template <std::unsigned_integral T>
void storeOrdered(std::span<std::uint8_t> bytes, std::size_t offset, ByteOrder order, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        std::size_t const place = order == ByteOrder::kLittle ? i : sizeof(T) - 1 - i;
        bytes[offset + place] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i));
    }
}

/// Reads the number at `offset`; there must be room for a T from there on.
template <std::unsigned_integral T>
T loadOrdered(ByteView bytes, std::size_t offset, ByteOrder order) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        std::size_t const place = order == ByteOrder::kLittle ? sizeof(T) - 1 - i : i;
        value = value << 8U | bytes[offset + place];
    }
    return static_cast<T>(value);
}

template <std::unsigned_integral T>
void appendOrdered(Bytes& bytes, ByteOrder order, T value) {
    std::size_t const offset = bytes.size();
    bytes.resize(offset + sizeof(T));
    storeOrdered(std::span(bytes), offset, order, value);
}

} // namespace plc
