#include "driver/session/SymbolStore.h"

#include "driver/errors/ErrorSink.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/tag/TagList.h"
#include "interfaces/ErrorCodes.h"
#include "interfaces/HostServices.h"
#include "protlib/protocol/HostServiceVariables.h"

#include <cstdio>

namespace _VELK {

StoredFile storedFileOf(std::uint16_t node, char const* ident) {
    StoredFile file;
    file.node = node;
    std::array<char, StoredFile::kPathLength> name{};
    std::snprintf(name.data(), name.size(), "PLCSymbols_%d.sdb", static_cast<int>(node));
    IInterface* const storage =
        piPermanentStorage != nullptr ? piPermanentStorage->ConvertTo("IPermanentStorage2") : nullptr;
    bool const hasPath = storage != nullptr && static_cast<IPermanentStorage2*>(storage)->GetFullPath(
                                                   ident, name.data(), file.path.data(), StoredFile::kPathLength);
    file.path.back() = '\0';
    if (!hasPath || file.path.front() == '\0') {
        file.path = name;
    }
    return file;
}

SymbolStore::SymbolStore(ErrorSink& errors) : errors_(errors), table_(kNodeCount, &yieldToHost) {}

void SymbolStore::declareProject(int node, std::uint32_t identifier) {
    if (!isKnownNode(node) || identifier == 0) {
        return;
    }
    NodeState& state = stateOf(node);
    state.projectIdentifier = identifier;
    state.confirmedProjectIdentifier = identifier;
    state.useDefaultAddresses = true;
}

bool SymbolStore::areReady(StoredFile const& file) {
    NodeState& state = stateOf(file.node);
    if (state.projectIdentifier != 0) {
        table_.SetSymIsActive(file.node);
    }
    if (!table_.SymIsActive(file.node) && !state.downloadRequested && !loadNew(file)) {
        state.projectIdentifier = 0;
        errors_.fail(kErrorReply, kSymbolFileCorrupted);
    }
    if (state.projectIdentifier != 0) {
        table_.SetSymIsActive(file.node);
    }
    return table_.SymIsActive(file.node) && !state.downloadRequested;
}

bool SymbolStore::takeFetched(StoredFile const& file, bool fetched) {
    NodeState& state = stateOf(file.node);
    if (!fetched) {
        return fallBack(state, kSymbolFileMissing);
    }
    if (!loadNew(file)) {
        return fallBack(state, kSymbolFileCorrupted);
    }
    state.downloadRequested = false;
    return true;
}

bool SymbolStore::fallBack(NodeState& state, char const* reason) {
    errors_.fail(kErrorReply, reason);
    if (state.confirmedProjectIdentifier == 0) {
        errors_.noteFault();
        return false;
    }
    state.projectIdentifier = state.confirmedProjectIdentifier;
    state.useDefaultAddresses = true;
    return true;
}

bool SymbolStore::load(StoredFile const& file) {
    tableNode_ = kNoNode;
    if (table_.SymLoadSymbolsFromFile(file.node, file.path.data(), &stateOf(file.node).projectIdentifier) == 0) {
        return false;
    }
    tableNode_ = file.node;
    return true;
}

/** Loads a file in which the node's tags have not been looked up yet. */
bool SymbolStore::loadNew(StoredFile const& file) {
    if (!load(file)) {
        return false;
    }
    stateOf(file.node).generation = ++generations_;
    return true;
}

/**
 * Tags are bound against the file of their own node only: with another node's addresses a write would go to the wrong
 * place.
 */
bool SymbolStore::provideTable(StoredFile const& file, std::span<ITag const* const> tags) {
    NodeState& state = stateOf(file.node);
    if (tableNode_ == file.node || !needsLookup(state, tags)) {
        return true;
    }
    std::uint32_t const identifier = state.projectIdentifier;
    if (load(file)) {
        // When the same file is loaded again, its missing variables are not searched again.
        if (state.projectIdentifier != identifier) {
            state.generation = ++generations_;
        }
        return true;
    }
    state.projectIdentifier = 0;
    table_.ResetSymIsActive(file.node);
    return errors_.fault(kErrorReply, kSymbolFileCorrupted);
}

bool SymbolStore::needsLookup(NodeState const& state, std::span<ITag const* const> tags) {
    if (state.useDefaultAddresses) {
        return false;
    }
    for (ITag const* const tag : tags) {
        Tag_VELK const& each = velkTag(*tag);
        if (!each.isProjectIdentifier() && !each.isBoundTo(state.projectIdentifier) &&
            !each.isMissingIn(state.generation)) {
            return true;
        }
    }
    return false;
}

bool SymbolStore::bind(Tag_VELK const& tag, int node) {
    NodeState const& state = stateOf(node);
    if (tag.isMissingIn(state.generation)) {
        return false;
    }
    if (tag.UpdateTagData(table_, state.projectIdentifier) == 0 && tag.areaRow() != nullptr) {
        return true;
    }
    tag.setMissingIn(state.generation);
    return false;
}

bool SymbolStore::giveUpProject(int node) {
    NodeState& state = stateOf(node);
    table_.ResetSymIsActive(static_cast<std::uint16_t>(node));
    state.projectIdentifier = 0;
    bool const fromFile = !state.useDefaultAddresses;
    state.useDefaultAddresses = false;
    return fromFile;
}

void SymbolStore::clearTable() {
    table_.SymExit();
    tableNode_ = kNoNode;
}

SymbolStore::NodeState const* SymbolStore::find(int node) const {
    return isKnownNode(node) ? &nodes_[static_cast<std::size_t>(node)] : nullptr;
}

std::uint32_t SymbolStore::projectIdentifier(int node) const {
    NodeState const* const state = find(node);
    return state != nullptr ? state->projectIdentifier : 0;
}

std::uint32_t SymbolStore::confirmedProjectIdentifier(int node) const {
    NodeState const* const state = find(node);
    return state != nullptr ? state->confirmedProjectIdentifier : 0;
}

bool SymbolStore::usesDefaultAddresses(int node) const {
    NodeState const* const state = find(node);
    return state != nullptr && state->useDefaultAddresses;
}

} // namespace _VELK
