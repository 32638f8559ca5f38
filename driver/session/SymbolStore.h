#pragma once

#include "driver/config/NodeParams.h"
#include "symbols/RtsSym.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

class ITag;
class Tag_VELK;

namespace _VELK {

class ErrorSink;

/** The file in which a node's symbols are kept between runs. */
struct StoredFile {
    static constexpr std::size_t kPathLength = 260;

    std::uint16_t node = 0;
    std::array<char, kPathLength> path{};
};

/**
 * Where the host keeps the symbol file of @p node for the instance @p ident; in the current folder when it keeps none.
 */
StoredFile storedFileOf(std::uint16_t node, char const* ident);

/**
 * The driver's knowledge of each node's variables: the symbols, and the project that they belong to.
 *
 * There is one symbol table for all nodes; it holds the file that was loaded last. Node numbers must be known ones.
 */
class SymbolStore {
public:
    /** Makes the symbol table. May throw std::bad_alloc. */
    explicit SymbolStore(ErrorSink& errors);

    /**
     * Declares that the configured addresses of a node were resolved against the project @p identifier: its tags are
     * sent with them, and no symbol file is needed until the PLC reports another project. 0 and an unknown node are
     * ignored.
     */
    void declareProject(int node, std::uint32_t identifier);

    /** Makes the symbols of the file's node known, unless they already are. False: the file must be fetched. */
    bool areReady(StoredFile const& file);

    /** After the fetch: loads the file, or falls back to the declared project. False when there is none. */
    bool takeFetched(StoredFile const& file, bool fetched);

    /** Makes sure that the table holds the file of the tags' node when one of them must be looked up. */
    bool provideTable(StoredFile const& file, std::span<ITag const* const> tags);

    /** Binds a tag of @p node to its variable in the table; false when the node's file has no usable one. */
    bool bind(Tag_VELK const& tag, int node);

    /**
     * The PLC runs another project than the node's symbols belong to: discards them and the declared addresses.
     *
     * @return whether the symbols came from a file, which must then be fetched again
     */
    bool giveUpProject(int node);

    /** After that fetch: clears the table for all nodes. */
    void clearTable();

    [[nodiscard]] std::uint32_t projectIdentifier(int node) const; ///< of the node's symbols, or declared; 0 for none
    [[nodiscard]] std::uint32_t confirmedProjectIdentifier(int node) const; ///< the declared one; 0 for none
    [[nodiscard]] bool usesDefaultAddresses(int node) const;                ///< tags use their configured addresses
    RtsSym& table() { return table_; }

private:
    static constexpr int kNoNode = -1;

    struct NodeState {
        bool downloadRequested = false; ///< not set anywhere yet: requests another fetch of the symbol file
        bool useDefaultAddresses = false;
        std::uint32_t confirmedProjectIdentifier = 0;
        std::uint32_t projectIdentifier = 0;
        std::uint32_t generation = 0; ///< a new number with every new file of the node; 0: no file yet
    };

    NodeState& stateOf(int node) { return nodes_[static_cast<std::size_t>(node)]; }
    [[nodiscard]] NodeState const* find(int node) const;
    bool load(StoredFile const& file);
    bool loadNew(StoredFile const& file);
    bool fallBack(NodeState& state, char const* reason);
    static bool needsLookup(NodeState const& state, std::span<ITag const* const> tags);

    ErrorSink& errors_;
    RtsSym table_;
    std::uint32_t generations_ = 0; ///< of all nodes: no two files have the same number
    int tableNode_ = kNoNode;       ///< the node whose file the table holds
    std::array<NodeState, kNodeCount> nodes_{};
};

} // namespace _VELK
