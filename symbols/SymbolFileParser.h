#pragma once

#include "symbols/SymbolFileFormat.h"
#include "symbols/SymbolFileReader.h"
#include "symbols/SymbolList.h"
#include "symbols/TypeTable.h"
#include "symbols/YieldHook.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>

namespace _VELK {

/**
 * Turns a symbol file (SymbolFileFormat.h) into a list of symbols, one for each variable record, in one pass.
 *
 * The file may come from anywhere, so nothing in it is trusted. The file is corrupted if it has: a short or unknown
 * header, a missing section, a skipped section shorter than its header, anything that ends after the file, more records
 * or dimensions than the rest of the file could hold, a record without progress to the next one, records that overlap
 * so much that together they have more bytes than the file, and a variable whose type, or whose type's element type, is
 * not in the file.
 */
class SymbolFileParser {
public:
    /** @p yield is called after the variable records 0, 100, 200 and so on. */
    SymbolFileParser(std::FILE* file, YieldHook yield);

    /**
     * Fills @p list, which loses its previous content: count, symbols, texts and projectId.
     *
     * False when the file is corrupted; the symbols read so far stay in the list. Throws std::bad_alloc and what
     * the yield hook throws, with the list in the same state.
     */
    bool parse(SymbolListTag& list);

private:
    bool readFileHeader(SymbolListTag& list);
    std::optional<SectionHeader> findSection(std::uint32_t kind); ///< searches from here on; skips the others

    bool readTypes(SectionHeader const& section);
    bool readTypeRecord(SdbType& type);
    bool readType(TypeRecord const& record, SdbType& type);
    bool readArrayExtra(SdbType& type);
    bool readExtra(std::size_t length, SdbType& type);

    bool readVariables(SectionHeader const& section, SymbolListTag& list);
    bool readVariableRecord(Symbol& symbol, TextPool& texts);
    bool readVariableName(VariableRecord const& record, std::uint64_t start, Symbol& symbol, TextPool& texts);
    bool describeType(Symbol& symbol, TextPool& texts); ///< fills in the fields that follow from the variable's type

    [[nodiscard]] bool canHold(std::uint64_t count,
                               std::uint64_t bytesEach) const noexcept; ///< whether the file is long enough
    std::optional<std::span<char const>> readBytes(std::size_t length, TextPool& pool); ///< a zero follows the bytes
    char const* readText(std::size_t length, TextPool& pool);                           ///< null when it cannot be read

    SymbolFileReader reader_;
    YieldHook yield_;
    SDBTag types_;
    std::uint64_t bytesToKeep_; ///< how many bytes of names and extras may still be read from the file
};

} // namespace _VELK
