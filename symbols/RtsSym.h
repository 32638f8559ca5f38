#pragma once

#include "symbols/NameIndex.h"
#include "symbols/SymbolList.h"
#include "symbols/TypeTable.h"
#include "symbols/YieldHook.h"

#include <cstdint>
#include <cstdio>
#include <memory>

namespace _VELK {

/**
 * The symbols of the PLC programs: the content of one symbol file, an index of its names, and for each node a flag
 * that says whether symbols are active for it.
 *
 * The list is shared: loading a file for one node replaces the symbols for all nodes, but only the flag of the loading
 * node changes. A flag says that its node requested and obtained symbols, not that the list still holds them.
 *
 * Failures show in the results only; running out of memory is a failure like any other. Only the constructor throws.
 * What the yield hook throws passes through a load, which then counts as failed. For use from one thread.
 */
class RtsSym {
public:
    /**
     * @param nodeCount node numbers are 0 to nodeCount - 1
     * @param yieldToHost called regularly during a load, or null
     *
     * Throws std::bad_alloc.
     */
    explicit RtsSym(int nodeCount, YieldHook yieldToHost = nullptr);

    RtsSym(RtsSym const&) = delete;
    RtsSym& operator=(RtsSym const&) = delete;
    RtsSym(RtsSym&&) = delete;
    RtsSym& operator=(RtsSym&&) = delete;
    ~RtsSym() = default;

    /** Sets the flag of a node; an unknown node is ignored. */
    void SetSymIsActive(std::uint16_t node) noexcept;

    /** Resets the flag of a node; an unknown node is ignored. */
    void ResetSymIsActive(std::uint16_t node) noexcept;

    /** The flag of a node, false for an unknown one. */
    [[nodiscard]] bool SymIsActive(std::uint16_t node) const noexcept;

    /**
     * Loads a symbol file into the list, indexes it and sets the node's flag.
     *
     * Yields after every 100th variable record, the first included, and after every second symbol that is indexed.
     *
     * @param file name of the file; null: "Symbols.sdb" when that can be opened, else "DOWNLOAD.SDB", both in the
     *        current directory
     * @param projectId receives the file's project identifier on success, unless it is null
     * @return 1, or 0 on failure: an unknown node or a file that cannot be opened leave everything unchanged; a
     *         corrupted file or one without symbols leaves the node's flag reset and the index without names
     */
    short SymLoadSymbolsFromFile(std::uint16_t node, char const* file, std::uint32_t* projectId);

    /** The symbol of a name, whatever its case, or null. Valid until the list is loaded or cleared again. */
    Symbol const* SymGetSymbol(char const* name) const noexcept;

    /** Releases the symbols and the index of a list and resets the node's flag. A null list is ignored. */
    void SymClearSymbolList(std::uint16_t node, SymbolListTag* list) noexcept;

    /** Clears the list for every node. */
    void SymExit() noexcept;

    /**
     * Parses an open file, from its start, into an empty list; builds no index. The file stays open.
     *
     * @return 1, or 0 when the file is corrupted (the symbols read so far stay in the list until it is cleared)
     */
    int SymParseBinaryFile(std::FILE* file, SymbolListTag* list) const;

    /** Releases a table of data types. */
    static void SymClearSDB(SDBTag& types) noexcept;

    /** RtsHashTag::add(); false without a table. */
    static bool UtlHashAdd(RtsHashTag* table, char const* key, void* value) noexcept;

    /** RtsHashTag::find(); null without a table. */
    static RtsHashNode* UtlHashGet(RtsHashTag* table, char const* key) noexcept;

    /** The list, for tools that show it. */
    [[nodiscard]] SymbolListTag const& symbols() const noexcept { return list_; }

private:
    [[nodiscard]] bool isKnown(std::uint16_t node) const noexcept { return node < nodeCount_; }
    bool makeIndex();

    std::unique_ptr<std::uint8_t[]> nodeFlags_; ///< one for each node: 1 active, 0 not
    SymbolListTag list_;
    int nodeCount_; ///< negative: no nodes
    YieldHook yieldToHost_;
};

} // namespace _VELK
