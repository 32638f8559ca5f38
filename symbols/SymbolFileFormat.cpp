#include "symbols/SymbolFileFormat.h"

namespace _VELK {

namespace {

template <std::size_t Offset, std::size_t Size>
std::uint16_t readU16(std::span<std::uint8_t const, Size> bytes) noexcept {
    static_assert(Offset + 2 <= Size);
    return static_cast<std::uint16_t>(bytes[Offset] | bytes[Offset + 1] << 8U);
}

template <std::size_t Offset, std::size_t Size>
std::uint32_t readU32(std::span<std::uint8_t const, Size> bytes) noexcept {
    static_assert(Offset + 4 <= Size);
    return static_cast<std::uint32_t>(bytes[Offset]) | static_cast<std::uint32_t>(bytes[Offset + 1]) << 8U |
           static_cast<std::uint32_t>(bytes[Offset + 2]) << 16U | static_cast<std::uint32_t>(bytes[Offset + 3]) << 24U;
}

} // namespace

SymbolFileHeader parseSymbolFileHeader(std::span<std::uint8_t const, kSymbolFileHeaderSize> bytes) noexcept {
    return {.format = readU32<0>(bytes),
            .headerLength = readU32<4>(bytes),
            .variant = readU32<8>(bytes),
            .projectId = readU32<12>(bytes)};
}

SectionHeader parseSectionHeader(std::span<std::uint8_t const, kSectionHeaderSize> bytes) noexcept {
    return {.kind = readU32<0>(bytes), .length = readU32<4>(bytes), .recordCount = readU32<12>(bytes)};
}

TypeRecord parseTypeRecord(std::span<std::uint8_t const, kTypeRecordSize> bytes) noexcept {
    return {.kind = readU32<0>(bytes),
            .length = readU32<4>(bytes),
            .typeClass = readU32<8>(bytes),
            .size = readU32<12>(bytes),
            .nameLength = readU16<16>(bytes)};
}

VariableRecord parseVariableRecord(std::span<std::uint8_t const, kVariableRecordSize> bytes) noexcept {
    return {.kind = readU32<0>(bytes),
            .length = readU32<4>(bytes),
            .typeNumber = readU32<8>(bytes),
            .flags = {bytes[16], bytes[17]},
            .area = readU16<18>(bytes),
            .offset = readU32<20>(bytes),
            .nameLength = readU16<24>(bytes)};
}

ArrayExtra parseArrayExtra(std::span<std::uint8_t const, kArrayExtraSize> bytes) noexcept {
    return {.elementType = readU32<0>(bytes), .dimensionCount = readU32<4>(bytes)};
}

} // namespace _VELK
