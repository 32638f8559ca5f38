#include "tests/module/LoadedModule.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <link.h>
#include <string>
#include <vector>

/** The symbols that the module's file exports. */
namespace {

std::vector<char> FileBytes() {
    std::ifstream file(VELK_MODULE_PATH, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <typename Record>
Record RecordAt(std::vector<char> const& file, std::size_t offset) {
    Record record{};
    if (offset + sizeof record > file.size()) {
        throw std::out_of_range("the file ends before this record");
    }
    std::memcpy(&record, file.data() + offset, sizeof record);
    return record;
}

/** The names in the dynamic symbol table that the file itself defines. */
std::vector<std::string> DefinedSymbols(std::vector<char> const& file) {
    std::vector<std::string> names;
    auto const header = RecordAt<ElfW(Ehdr)>(file, 0);
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
        auto const section = RecordAt<ElfW(Shdr)>(file, header.e_shoff + i * header.e_shentsize);
        if (section.sh_type != SHT_DYNSYM) {
            continue;
        }
        auto const strings = RecordAt<ElfW(Shdr)>(file, header.e_shoff + section.sh_link * header.e_shentsize);
        for (std::size_t at = 0; at < section.sh_size; at += section.sh_entsize) {
            auto const symbol = RecordAt<ElfW(Sym)>(file, section.sh_offset + at);
            // Some linkers list sections there, too; they are local, and no loader finds them.
            if (symbol.st_shndx != SHN_UNDEF && ELF32_ST_BIND(symbol.st_info) != STB_LOCAL) {
                names.emplace_back(file.data() + strings.sh_offset + symbol.st_name);
            }
        }
    }
    return names;
}

TEST(ExportedSymbols, EntryPointIsTheOnlyOne) {
    EXPECT_EQ(DefinedSymbols(FileBytes()), (std::vector<std::string>{"GetInterfaceFactory"}));
}

TEST(ExportedSymbols, EntryPointIsFoundByName) {
    velktest::LoadedModule const module;
    EXPECT_NE(module.Symbol("GetInterfaceFactory"), nullptr);
    for (char const* name : {"CreateProtocol_VELK", "_Z19CreateProtocol_VELKv", "GetXml_VELK", "piMultiTask", "itoa"}) {
        EXPECT_EQ(module.Symbol(name), nullptr) << name;
    }
}

TEST(ExportedSymbols, ModuleLeavesTheMemoryWhenItIsUnloaded) {
    EXPECT_FALSE(velktest::LoadedModule::IsResident());
    {
        velktest::LoadedModule const module;
        EXPECT_TRUE(velktest::LoadedModule::IsResident());
    }
    EXPECT_FALSE(velktest::LoadedModule::IsResident());
}

} // namespace
