#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/**
 * The PLC's binary symbol file (".sdb"), byte for byte.
 *
 *     file header                         16 bytes
 *     sections, one after another         each: section header (16 bytes), records
 *
 * All integers are little-endian; nothing is padded or aligned. Two sections matter: the data types (kind 2) and, after
 * it, the variables (kind 3). The parse functions here only split fixed parts; they check nothing.
 */
namespace _VELK {

inline constexpr std::uint32_t kSymbolFileFormat = 1;           ///< the only SymbolFileHeader::format
inline constexpr std::uint32_t kHighestSymbolFileVariant = 1;   ///< SymbolFileHeader::variant is 0 or 1
inline constexpr std::uint32_t kTypeSectionKind = 2;            ///< SectionHeader::kind of the data types
inline constexpr std::uint32_t kVariableSectionKind = 3;        ///< SectionHeader::kind of the variables
inline constexpr std::uint32_t kTypeRecordKind = 4;             ///< TypeRecord::kind; any other is a placeholder
inline constexpr std::uint32_t kVariableRecordKind = 5;         ///< VariableRecord::kind; any other is a placeholder
inline constexpr std::uint32_t kArrayTypeClass = 9;             ///< TypeRecord::typeClass of arrays
inline constexpr std::uint32_t kStructureTypeClass = 11;        ///< TypeRecord::typeClass of structures
inline constexpr std::uint32_t kTypeClass13 = 13;               ///< its records end with 4 bytes of unknown meaning
inline constexpr std::uint32_t kTypeClass23 = 23;               ///< its records end with 4 bytes of unknown meaning
inline constexpr std::uint32_t kPlaceholderTypeClass = 29;      ///< given to type placeholders; not in the file
inline constexpr std::size_t kSymbolFileHeaderSize = 16;        ///< bytes
inline constexpr std::size_t kSectionHeaderSize = 16;           ///< bytes
inline constexpr std::size_t kTypeRecordSize = 18;              ///< bytes of the fixed part
inline constexpr std::size_t kVariableRecordSize = 26;          ///< bytes of the fixed part
inline constexpr std::size_t kArrayExtraSize = 8;               ///< bytes before the dimensions of an array
inline constexpr std::size_t kArrayDimensionSize = 8;           ///< bytes of each dimension
inline constexpr std::size_t kPlainExtraSize = 4;               ///< bytes after the name, classes 11, 13 and 23
inline constexpr std::size_t kGapBeforeName = 2;                ///< bytes, see VariableRecord::hasGapBeforeName()
inline constexpr std::uint32_t kLongestOverheadWithoutGap = 28; ///< see VariableRecord::hasGapBeforeName()

/** At the start of the file: u32 format, u32 header length, u32 variant, u32 project identifier. */
struct SymbolFileHeader {
    std::uint32_t format = 0;
    std::uint32_t headerLength = 0; ///< the first section begins this many bytes from the start of the file
    std::uint32_t variant = 0;
    std::uint32_t projectId = 0;
};

/** At the start of a section: u32 kind, u32 length, u32 unused, u32 number of records. */
struct SectionHeader {
    std::uint32_t kind = 0;
    std::uint32_t length = 0; ///< bytes from the start of this header to the next section; for skipping only
    std::uint32_t recordCount = 0;
};

/**
 * Fixed part of a data-type record: u32 kind, u32 record length, u32 type class, u32 size, u16 name length.
 *
 * A type continues with its name (nameLength bytes, terminating zero included) and, depending on its class, with:
 * - array: u32 element type number, u32 number of dimensions, 8 bytes for each dimension
 * - structure and classes 13 and 23: 4 bytes
 *
 * Types are numbered from 0 in the order of the file, placeholders included.
 */
struct TypeRecord {
    std::uint32_t kind = 0;
    std::uint32_t length = 0; ///< a type: from the record's start to the next; else: from the end of the fixed part
    std::uint32_t typeClass = 0;
    std::uint32_t size = 0; ///< bytes of a value of this type
    std::uint16_t nameLength = 0;

    [[nodiscard]] bool isPlaceholder() const noexcept { return kind != kTypeRecordKind; }
};

/**
 * Fixed part of a variable record: u32 kind, u32 record length, u32 type number, u32 unused, 2 bytes of flags, u16
 * area, u32 offset, u16 name length. A variable continues with its name (nameLength bytes, terminating zero included).
 */
struct VariableRecord {
    std::uint32_t kind = 0;
    std::uint32_t length = 0; ///< from the record's start to the next; a variable without a gap ends with its name
    std::uint32_t typeNumber = 0;
    std::array<std::uint8_t, 2> flags{};
    std::uint16_t area = 0;
    std::uint32_t offset = 0; ///< bytes from the start of the area
    std::uint16_t nameLength = 0;

    [[nodiscard]] bool isPlaceholder() const noexcept { return kind != kVariableRecordKind; }

    /**
     * Whether there are two bytes before the name: when the record is more than 28 bytes longer than its name. This
     * includes a name longer than its record, because the difference is unsigned.
     */
    [[nodiscard]] bool hasGapBeforeName() const noexcept { return length - nameLength > kLongestOverheadWithoutGap; }
};

SymbolFileHeader parseSymbolFileHeader(std::span<std::uint8_t const, kSymbolFileHeaderSize> bytes) noexcept;
SectionHeader parseSectionHeader(std::span<std::uint8_t const, kSectionHeaderSize> bytes) noexcept;
TypeRecord parseTypeRecord(std::span<std::uint8_t const, kTypeRecordSize> bytes) noexcept;
VariableRecord parseVariableRecord(std::span<std::uint8_t const, kVariableRecordSize> bytes) noexcept;

/** The element type number and the number of dimensions of an array. */
struct ArrayExtra {
    std::uint32_t elementType = 0;
    std::uint32_t dimensionCount = 0;
};

ArrayExtra parseArrayExtra(std::span<std::uint8_t const, kArrayExtraSize> bytes) noexcept;

} // namespace _VELK
