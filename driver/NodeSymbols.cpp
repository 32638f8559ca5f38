#include "driver/ListCall.h"
#include "interfaces/HostServices.h"
#include "protlib/HostServiceVariables.h"

#include <algorithm>

namespace {

constexpr char const* kPlcSymbolFile = "DOWNLOAD.SDB";
constexpr char const* kSymbolFileCorrupted = "Symbol file is corrupted";
constexpr char const* kSymbolFileMissing = "Symbol file not present";

} // namespace

void Protocol_VELK::findSymbolFile(ListCall& call) const {
    std::array<char, ListCall::kPathLength> name{};
    std::snprintf(name.data(), name.size(), "PLCSymbols_%d.sdb", static_cast<int>(call.node));
    IInterface* const storage =
        piPermanentStorage != nullptr ? piPermanentStorage->ConvertTo("IPermanentStorage2") : nullptr;
    bool const hasPath =
        storage != nullptr && static_cast<IPermanentStorage2*>(storage)->GetFullPath(
                                  GetIdent(), name.data(), call.symbolFile.data(), ListCall::kPathLength);
    call.symbolFile.back() = '\0';
    if (!hasPath || call.symbolFile.front() == '\0') {
        call.symbolFile = name;
    }
}

bool Protocol_VELK::provideSymbols(ListCall const& call) {
    NodeState& state = *call.state;
    if (state.projectIdentifier != 0) {
        symbolTable_->SetSymIsActive(call.node);
    }
    if (!symbolTable_->SymIsActive(call.node) && !state.downloadRequested && !loadSymbols(call)) {
        state.projectIdentifier = 0;
        SetError(kErrorReply, kSymbolFileCorrupted);
    }
    if (state.projectIdentifier != 0) {
        symbolTable_->SetSymIsActive(call.node);
    }
    if (symbolTable_->SymIsActive(call.node) && !state.downloadRequested) {
        return true;
    }
    if (readFileFromPLC(kPlcSymbolFile, call.symbolFile.data(), call.params, call.params->isBigEndian()) == 0) {
        return fallBackToConfirmedProject(call, kSymbolFileMissing);
    }
    if (!loadSymbols(call)) {
        return fallBackToConfirmedProject(call, kSymbolFileCorrupted);
    }
    state.downloadRequested = false;
    return true;
}

bool Protocol_VELK::loadSymbols(ListCall const& call) {
    tableNode_ = kNoNode;
    if (symbolTable_->SymLoadSymbolsFromFile(call.node, call.symbolFile.data(), &call.state->projectIdentifier) == 0) {
        return false;
    }
    tableNode_ = call.node;
    ++symbolLoads_;
    return true;
}

bool Protocol_VELK::fallBackToConfirmedProject(ListCall const& call, char const* reason) {
    SetError(kErrorReply, reason);
    if (call.state->confirmedProjectIdentifier == 0) {
        communicationFault_ = true;
        return false;
    }
    call.state->projectIdentifier = call.state->confirmedProjectIdentifier;
    call.state->useDefaultAddresses = true;
    return true;
}

/**
 * The one symbol table holds the file of the node that loaded last. Tags are bound against the file of their own
 * node only: with another node's addresses a write would land in a wrong place.
 */
bool Protocol_VELK::provideSymbolTable(ListCall const& call) {
    if (tableNode_ == call.node || !needsLookup(call)) {
        return true;
    }
    std::uint32_t const loads = symbolLoads_;
    std::uint32_t const identifier = call.state->projectIdentifier;
    if (loadSymbols(call)) {
        // The same file again makes no new search for the variables that it lacks.
        symbolLoads_ = call.state->projectIdentifier == identifier ? loads : symbolLoads_;
        return true;
    }
    call.state->projectIdentifier = 0;
    symbolTable_->ResetSymIsActive(call.node);
    return fault(kErrorReply, kSymbolFileCorrupted);
}

bool Protocol_VELK::needsLookup(ListCall const& call) const {
    if (call.state->useDefaultAddresses) {
        return false;
    }
    std::uint32_t const identifier = call.state->projectIdentifier;
    return std::any_of(call.tags, call.tags + call.count, [&](ITag const* tag) {
        Tag_VELK const& each = velkTag(*tag);
        return !each.isProjectIdentifier() && !each.isBoundTo(identifier) && !each.isMissing(symbolLoads_, identifier);
    });
}

/** The PLC runs another program than the symbols are of. The next call loads what is fetched here. */
void Protocol_VELK::recoverFromOtherProject(ListCall const& call) {
    SetError(kErrorReply, "Project ID mismatch");
    if (call.state->useDefaultAddresses) {
        call.state->useDefaultAddresses = false;
    } else {
        communicationFault_ = true;
        if (readFileFromPLC(kPlcSymbolFile, call.symbolFile.data(), call.params, call.params->isBigEndian()) != 0) {
            symbolTable_->SymExit();
            tableNode_ = kNoNode;
        } else {
            SetError(kErrorReply, kSymbolFileMissing);
        }
    }
    symbolTable_->ResetSymIsActive(call.node);
    call.state->projectIdentifier = 0;
}
