#include "symbols/RtsSym.h"

#include "symbols/SymbolFileParser.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace _VELK {

namespace {

constexpr char const* kPreferredFile = "Symbols.sdb";
constexpr char const* kUploadedFile = "DOWNLOAD.SDB";

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};
using OpenFile = std::unique_ptr<std::FILE, FileCloser>;

OpenFile openForReading(char const* name) {
    return OpenFile(std::fopen(name, "rb"));
}

OpenFile openSymbolFile(char const* name) {
    if (name != nullptr) {
        return openForReading(name);
    }
    OpenFile preferred = openForReading(kPreferredFile);
    return preferred != nullptr ? std::move(preferred) : openForReading(kUploadedFile);
}

} // namespace

RtsSym::RtsSym(int nodeCount, YieldHook yieldToHost)
    : nodeFlags_(std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(std::max(nodeCount, 0)))),
      nodeCount_(nodeCount), yieldToHost_(yieldToHost) {}

void RtsSym::SetSymIsActive(std::uint16_t node) noexcept {
    if (isKnown(node)) {
        nodeFlags_[node] = 1;
    }
}

void RtsSym::ResetSymIsActive(std::uint16_t node) noexcept {
    if (isKnown(node)) {
        nodeFlags_[node] = 0;
    }
}

bool RtsSym::SymIsActive(std::uint16_t node) const noexcept {
    return isKnown(node) && nodeFlags_[node] != 0;
}

short RtsSym::SymLoadSymbolsFromFile(std::uint16_t node, char const* file, std::uint32_t* projectId) {
    if (!isKnown(node)) {
        return 0;
    }
    OpenFile symbolFile = openSymbolFile(file);
    if (symbolFile == nullptr) {
        return 0;
    }
    SymClearSymbolList(node, &list_);
    bool const parsed = SymParseBinaryFile(symbolFile.get(), &list_) != 0;
    symbolFile.reset();
    if (!parsed || list_.count == 0 || !makeIndex()) {
        return 0;
    }
    list_.loaded = 1;
    SetSymIsActive(node);
    if (projectId != nullptr) {
        *projectId = list_.projectId;
    }
    return 1;
}

Symbol const* RtsSym::SymGetSymbol(char const* name) const noexcept {
    RtsHashNode const* const node = UtlHashGet(list_.index.get(), name);
    return node != nullptr ? static_cast<Symbol const*>(node->value) : nullptr;
}

void RtsSym::SymClearSymbolList(std::uint16_t node, SymbolListTag* list) noexcept {
    if (list != nullptr) {
        list->clear();
    }
    ResetSymIsActive(node);
}

void RtsSym::SymExit() noexcept {
    for (int node = 0; node < nodeCount_; ++node) {
        SymClearSymbolList(static_cast<std::uint16_t>(node), &list_);
    }
}

int RtsSym::SymParseBinaryFile(std::FILE* file, SymbolListTag* list) const {
    if (list == nullptr) {
        return 0;
    }
    try {
        return SymbolFileParser(file, yieldToHost_).parse(*list) ? 1 : 0;
    } catch (std::bad_alloc const&) {
        return 0;
    } catch (std::length_error const&) { // larger than any memory
        return 0;
    }
}

void RtsSym::SymClearSDB(SDBTag& types) noexcept {
    types.clear();
}

bool RtsSym::UtlHashAdd(RtsHashTag* table, char const* key, void* value) noexcept {
    return table != nullptr && table->add(key, value);
}

RtsHashNode* RtsSym::UtlHashGet(RtsHashTag* table, char const* key) noexcept {
    return table != nullptr ? table->find(key) : nullptr;
}

bool RtsSym::makeIndex() {
    std::uint64_t const bucketCount = std::uint64_t{list_.count} * 3 / 2;
    if (bucketCount > std::uint64_t{std::numeric_limits<int>::max()}) {
        return false;
    }
    try {
        auto index = std::make_unique<RtsHashTag>(static_cast<int>(bucketCount), false, list_.count);
        for (std::uint32_t i = 0; i < list_.count; ++i) {
            Symbol& symbol = list_.symbols[i];
            // The first symbol of a name wins. When the name is still not in the index, there was no memory.
            if (!UtlHashAdd(index.get(), symbol.name, &symbol) && UtlHashGet(index.get(), symbol.name) == nullptr) {
                return false;
            }
            if (i % 2 == 1 && yieldToHost_ != nullptr) {
                yieldToHost_();
            }
        }
        list_.index = std::move(index);
        return true;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

} // namespace _VELK
