#include "symbols/RtsSym.h"
#include "symbols/SymbolFileParser.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/MemoryBudget.h"
#include "tests/support/TempDir.h"

#include <cctype>
#include <cstring>

/**
 * A stored symbol file, loaded as the driver does it. The first byte chooses the look-ups afterwards, the rest is the
 * file.
 */
namespace {

using namespace velktest;

constexpr std::size_t kMostMemoryForAByte = 12; ///< a record of 18 bytes becomes a type, one of 26 a symbol
constexpr std::size_t kOtherMemory = 60'000;

TempDir const& Folder() {
    static TempDir const folder;
    return folder;
}

std::string WithOtherCase(std::string name) {
    for (char& character : name) {
        auto const byte = static_cast<unsigned char>(character);
        character = static_cast<char>(std::islower(byte) != 0 ? std::toupper(byte) : std::tolower(byte));
    }
    return name;
}

/** Every text is terminated, and every name finds the first symbol that has it. */
void CheckSymbols(_VELK::RtsSym const& table, std::size_t fileSize) {
    std::size_t characters = 0;
    for (_VELK::Symbol const& symbol : table.symbols().all()) {
        characters += std::strlen(symbol.name);
        Require(std::strlen(symbol.typeName) <= fileSize, "a type's name comes from the file");
        _VELK::Symbol const* const found = table.SymGetSymbol(symbol.name);
        Require(found != nullptr && found <= &symbol, "a name leads to the first symbol that has it");
        Require(table.SymGetSymbol(WithOtherCase(symbol.name).c_str()) == found, "case is not looked at");
    }
    Require(characters <= fileSize, "the names are not longer than the file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzInput input(data, size);
    auto const node = static_cast<std::uint16_t>(input.Below(4));
    std::size_t const fileSize = size > 0 ? size - 1 : 0;
    Folder().Put("file", input.Take(fileSize));
    std::string const path = Folder().Path("file");

    MemoryBudget const budget(fileSize * kMostMemoryForAByte + kOtherMemory);
    _VELK::RtsSym table(3);
    for (int round = 0; round < 2; ++round) { // the first load must not leave anything that disturbs the second
        std::uint32_t project = 0xDEAD;
        bool const loaded = table.SymLoadSymbolsFromFile(node, path.c_str(), &project) == 1;
        Require(loaded == table.SymIsActive(node), "a node is active when its file was loaded");
        Require(loaded || project == 0xDEAD, "a failure delivers no identifier");
        if (loaded) {
            Require(project == table.symbols().projectId && table.symbols().count != 0, "what was loaded is there");
            CheckSymbols(table, fileSize);
        } else {
            Require(table.SymGetSymbol("A") == nullptr, "nothing is found in what was not loaded");
            for (_VELK::Symbol const& symbol : table.symbols().all()) {
                Require(std::strlen(symbol.name) + std::strlen(symbol.typeName) <= 2 * fileSize + 8, "texts end");
            }
        }
    }
    table.SymExit();
    Require(table.symbols().all().empty(), "everything is released");
    return 0;
}
