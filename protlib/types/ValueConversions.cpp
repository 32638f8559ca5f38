#include "protlib/types/ValueConversions.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace ValueConversionsN {

namespace {

using Bytes = std::span<unsigned char>;

constexpr std::uint32_t kLowNibble = 0x0F;

/** Largest value that fits 1, 2, 3 and 4 bytes of packed decimal. */
constexpr std::array<std::uint32_t, 4> kPackedDecimalLimits{99, 9999, 999999, 99999999};

/** Stores the bytes of @p value, least significant first; bytes above the number become zero. */
void storeLittleEndian(Bytes element, std::uint32_t value) {
    for (auto& byte : element) {
        byte = static_cast<unsigned char>(value & 0xFFU);
        value >>= 8U;
    }
}

std::uint32_t loadLittleEndian(Bytes element) {
    std::uint32_t value = 0;
    for (auto position = element.size(); position-- > 0;) {
        value = value << 8U | element[position];
    }
    return value;
}

bool elementToBinary(Bytes element) {
    std::uint32_t value = 0;
    std::uint32_t weight = 1;
    for (auto const byte : element) {
        auto const high = std::uint32_t{byte} >> 4U;
        auto const low = byte & kLowNibble;
        if (high > 9 || low > 9) {
            return false;
        }
        value += (high * 10 + low) * weight;
        weight *= 100;
    }
    storeLittleEndian(element, value);
    return true;
}

bool elementToPackedDecimal(Bytes element) {
    auto value = loadLittleEndian(element);
    if (value > kPackedDecimalLimits[element.size() - 1]) {
        return false;
    }
    for (auto& byte : element) {
        byte = static_cast<unsigned char>(value / 10 % 10 << 4U | value % 10);
        value /= 100;
    }
    return true;
}

/** Runs @p convert on every whole element; an incomplete one at the end is not changed. */
template <typename Convert>
bool forEachElement(Bytes bytes, std::size_t elementLength, Convert convert) {
    for (; bytes.size() >= elementLength; bytes = bytes.subspan(elementLength)) {
        if (!convert(bytes.first(elementLength))) {
            return false;
        }
    }
    return true;
}

void negateBytes(Bytes bytes, int itemCount) {
    auto const count = std::min(bytes.size(), static_cast<std::size_t>(std::max(itemCount, 0)));
    for (auto& byte : bytes.first(count)) {
        byte = static_cast<unsigned char>(0U - byte);
    }
}

/**
 * Changes elements of the width of @p Number as long as the byte position is below the item count.
 *
 * The item count is compared with a byte position on purpose, so only the first elements of an array are changed.
 */
template <typename Number, typename Change>
void walkElements(Bytes bytes, int itemCount, Change change) {
    auto const end = static_cast<std::size_t>(std::max(itemCount, 0));
    for (std::size_t position = 0; position < end && bytes.size() - position >= sizeof(Number);
         position += sizeof(Number)) {
        Number number = 0;
        std::memcpy(&number, &bytes[position], sizeof number);
        number = change(number);
        std::memcpy(&bytes[position], &number, sizeof number);
    }
}

template <typename Unsigned>
Unsigned negated(Unsigned value) {
    return static_cast<Unsigned>(Unsigned{0} - value);
}

/** Changes the sign bit only, so that a NaN keeps its other bits. */
template <typename Unsigned>
Unsigned withOtherSign(Unsigned floatBits) {
    return floatBits ^ Unsigned { 1 } << (sizeof(Unsigned) * 8 - 1);
}

} // namespace

bool SwapNibbles(Bytes bytes) {
    for (auto& byte : bytes) {
        byte = static_cast<unsigned char>(byte << 4U | byte >> 4U);
    }
    return true;
}

bool ReverseGroups(Bytes bytes, std::size_t width) {
    if (width == 0 || bytes.size() % width != 0) {
        return false;
    }
    for (; !bytes.empty(); bytes = bytes.subspan(width)) {
        auto const group = bytes.first(width);
        std::reverse(group.begin(), group.end());
    }
    return true;
}

bool PackedDecimalToBinary(Bytes bytes, int elementLength) {
    if (bytes.empty()) {
        return true;
    }
    return elementLength > 0 && forEachElement(bytes, static_cast<std::size_t>(elementLength), elementToBinary);
}

bool BinaryToPackedDecimal(Bytes bytes, int elementLength) {
    if (bytes.empty()) {
        return true;
    }
    if (elementLength < 1) {
        return false;
    }
    auto const length = static_cast<std::size_t>(elementLength);
    if (bytes.size() < length) {
        return true;
    }
    return length <= kPackedDecimalLimits.size() && forEachElement(bytes, length, elementToPackedDecimal);
}

bool Negate(Bytes bytes, ICU_Type elementType, int itemCount) {
    if (bytes.empty()) {
        return true;
    }
    switch (elementType) {
    case ICU_BYTE:
        negateBytes(bytes, itemCount);
        return true;
    case ICU_SHORT:
        walkElements<std::uint16_t>(bytes, itemCount, negated<std::uint16_t>);
        return true;
    case ICU_INT:
        walkElements<std::uint32_t>(bytes, itemCount, negated<std::uint32_t>);
        return true;
    case ICU_FLOAT:
        walkElements<std::uint32_t>(bytes, itemCount, withOtherSign<std::uint32_t>);
        return true;
    case ICU_DOUBLE:
        walkElements<std::uint64_t>(bytes, itemCount, withOtherSign<std::uint64_t>);
        return true;
    case ICU_UINT64:
    case ICU_INT64:
        walkElements<std::uint64_t>(bytes, itemCount, negated<std::uint64_t>);
        return true;
    default:
        return false;
    }
}

bool InvertBits(Bytes bytes) {
    for (auto& byte : bytes) {
        byte = byte == 0 ? 1 : 0;
    }
    return true;
}

bool InvertBytes(Bytes bytes, ICU_Type elementType) {
    if (bytes.empty()) {
        return true;
    }
    switch (elementType) {
    case ICU_UNSIGNED_BYTE:
    case ICU_UNSIGNED_SHORT:
    case ICU_UNSIGNED_INT:
    case ICU_BINARY:
        break;
    default:
        return false;
    }
    for (auto& byte : bytes) {
        byte = static_cast<unsigned char>(~byte);
    }
    return true;
}

} // namespace ValueConversionsN
