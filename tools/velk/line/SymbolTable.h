#pragma once

#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velk {

/** A variable of a PLC program, as described in its symbol file. */
struct Variable {
    std::string name;
    std::string type; ///< the PLC's: "INT", "STRING(20)", "ARRAY [0..9] OF INT", "DATA" for structures
    std::uint16_t area = 0;
    std::uint32_t offset = 0; ///< bytes from the start of the area; of a single bit: bits
    std::uint32_t size = 0;   ///< bytes

    bool operator==(Variable const&) const = default;
};

/** The variables of one PLC program, in the order of its symbol file. */
class SymbolTable {
public:
    /** Reads a symbol file. */
    static base::Result<SymbolTable> load(std::filesystem::path const& file);

    /** The same from variables that are known already. */
    SymbolTable(std::uint32_t projectId, std::vector<Variable> variables);

    [[nodiscard]] std::uint32_t projectId() const { return projectId_; }
    [[nodiscard]] std::vector<Variable> const& variables() const { return variables_; }

    /** The variable of a name, whatever the case of its letters, or null. */
    [[nodiscard]] Variable const* find(std::string_view name) const;

    /** The variables whose names match a pattern (see Names.h); a variable with exactly that name comes alone. */
    [[nodiscard]] std::vector<Variable const*> matching(std::string_view pattern) const;

private:
    std::uint32_t projectId_;
    std::vector<Variable> variables_;
    std::map<std::string, std::size_t, std::less<>> byName_; ///< by name in upper case
};

/** The message about an unknown variable, with similar names. */
base::Failure missingVariable(SymbolTable const& table, std::string_view name);

/** The message about a pattern that finds nothing. */
base::Failure nothingMatches(SymbolTable const& table, std::string_view pattern);

/** The name of a memory area in tag addresses: "M", "I", "Q", "3", "4", "5"; its number for any other. */
std::string areaName(std::uint16_t area);

} // namespace velk
