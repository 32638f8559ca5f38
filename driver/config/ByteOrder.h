#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace _VELK {

/** Byte order of the multi-byte numbers that are exchanged with a node: little-endian for the model "Intel" only. */
enum class ByteOrder { LittleEndian, BigEndian };

constexpr ByteOrder byteOrderOf(bool bigEndian) {
    return bigEndian ? ByteOrder::BigEndian : ByteOrder::LittleEndian;
}

/** Writes @p value to the first two bytes of @p bytes, which must be there. */
constexpr void put16(std::span<unsigned char> bytes, std::uint16_t value, ByteOrder order) {
    auto const high = static_cast<unsigned char>(value >> 8U);
    auto const low = static_cast<unsigned char>(value & 0xFFU);
    bool const bigEndian = order == ByteOrder::BigEndian;
    bytes[0] = bigEndian ? high : low;
    bytes[1] = bigEndian ? low : high;
}

/** Reads the first two bytes of @p bytes, which must be there. */
constexpr std::uint16_t get16(std::span<unsigned char const> bytes, ByteOrder order) {
    bool const bigEndian = order == ByteOrder::BigEndian;
    unsigned const high = bytes[bigEndian ? 0 : 1];
    unsigned const low = bytes[bigEndian ? 1 : 0];
    return static_cast<std::uint16_t>((high << 8U) | low);
}

/** Writes @p value to the first four bytes of @p bytes, which must be there. */
constexpr void put32(std::span<unsigned char> bytes, std::uint32_t value, ByteOrder order) {
    bool const bigEndian = order == ByteOrder::BigEndian;
    auto const high = static_cast<std::uint16_t>(value >> 16U);
    auto const low = static_cast<std::uint16_t>(value & 0xFFFFU);
    put16(bytes.first(2), bigEndian ? high : low, order);
    put16(bytes.subspan(2), bigEndian ? low : high, order);
}

} // namespace _VELK
