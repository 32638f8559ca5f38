#include "protlib/types/BitPacking.h"

#include "protlib/text/TextUtils.h"

#include <cstddef>
#include <cstdint>

namespace ProtUtilsN {

namespace {

constexpr std::int64_t kBitsPerByte = 8;

unsigned char maskOf(std::int64_t bit) {
    return static_cast<unsigned char>(1U << (bit % kBitsPerByte));
}

std::ptrdiff_t byteOf(std::int64_t bit) {
    return static_cast<std::ptrdiff_t>(bit / kBitsPerByte);
}

} // namespace

int GetLenOfBits(int startBit, int bitCount) {
    std::int64_t const lastBit = std::int64_t{startBit} + bitCount - 1;
    return clampToInt(lastBit / kBitsPerByte - startBit / kBitsPerByte + 1);
}

void UnpackBits(unsigned char* bits, unsigned char const* packed, int startBit, int count) {
    for (std::int64_t i = 0; i < count; ++i) {
        auto const bit = startBit + i;
        bool const isSet = bit >= 0 && (packed[byteOf(bit)] & maskOf(bit)) != 0;
        bits[static_cast<std::ptrdiff_t>(i)] = isSet ? 1 : 0;
    }
}

void PackBits(unsigned char* packed, unsigned char const* bits, int startBit, int count) {
    for (std::int64_t i = 0; i < count; ++i) {
        auto const bit = startBit + i;
        if (bit < 0) {
            continue;
        }
        auto& byte = packed[byteOf(bit)];
        auto const mask = maskOf(bit);
        byte = static_cast<unsigned char>(bits[static_cast<std::ptrdiff_t>(i)] != 0 ? byte | mask : byte & ~mask);
    }
}

} // namespace ProtUtilsN
