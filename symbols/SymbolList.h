#pragma once

#include "symbols/NameIndex.h"
#include "symbols/TextPool.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace _VELK {

/**
 * One variable of the PLC program, or a placeholder: a record of the file that describes no variable.
 *
 * The texts are zero-terminated, never null, and belong to the list that holds the symbol.
 */
struct Symbol {
    char const* name = "";        ///< as in the file; empty for a placeholder
    char const* typeName = "";    ///< "DATA" for a structure or an array of structures or arrays; "NONE" without a type
    std::uint32_t typeNumber = 0; ///< number of the data-type record in the file; 29 for a placeholder
    std::uint16_t area = 0;       ///< memory area in the PLC, normally 0 to 5, but not checked; 0 for a placeholder
    std::uint32_t offset = 0;     ///< bytes from the start of the area; 0 for a placeholder
    std::uint32_t size = 0;       ///< bytes of a value; 0 for a placeholder
    std::array<std::uint8_t, 2> flags{}; ///< as in the file; 0x6E 0x00 for a placeholder
};

/** The symbols of one symbol file. Owns their texts and the name index. */
struct SymbolListTag {
    std::uint8_t loaded = 0;           ///< 1 after a successful load, 0 after clear()
    std::uint32_t count = 0;           ///< number of symbols
    std::unique_ptr<Symbol[]> symbols; ///< in the order of the file; null after clear()
    std::unique_ptr<RtsHashTag> index; ///< from name to Symbol; null while nothing is loaded
    std::uint32_t reserved = 0;
    std::uint32_t projectId = 0; ///< identifies the PLC program that the file describes

    TextPool texts; ///< names and type names of the symbols

    /** All symbols, for tools that list them. */
    [[nodiscard]] std::span<Symbol const> all() const noexcept { return {symbols.get(), count}; }

    /** Releases the symbols, their texts and the index; count and loaded become 0, projectId stays. */
    void clear() noexcept;
};

} // namespace _VELK
