#pragma once

#include "plc/program/DataTypes.h"
#include "plc/program/ProgramDescription.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace plc {

/// The place and the type of a variable, a member or an element.
struct Place {
    TypeKind kind = TypeKind::kBool;
    std::size_t type = 0; ///< position in the program's type table
    std::uint32_t size = 0;
    std::uint16_t area = 0;
    std::uint32_t offset = 0; ///< in bytes; in bits when the kind is kBit
    bool listedOnly = false;
};

/// A line of the symbol file: a variable, or a member of a structure variable.
struct Symbol {
    std::string name{};
    Place place{};
    std::uint16_t flags = 0;
};

/// A program made from its description: every variable with its type and its place in memory.
class Program {
public:
    /// Throws DescriptionError: unknown types, names that occur twice, variables beyond their area's end.
    explicit Program(ProgramDescription const& description);

    [[nodiscard]] std::uint32_t projectId() const { return projectId_; }
    [[nodiscard]] TypeTable const& types() const { return types_; }
    /// Every variable in the order of the description, the members of a structure directly after it.
    [[nodiscard]] std::vector<Symbol> const& symbols() const { return symbols_; }

    /// A variable, member or element, `PLC_PRG.Pumps[1].Speed`, not case-sensitive; nothing when there is none.
    [[nodiscard]] std::optional<Place> find(std::string_view path) const;

    /// A member of a place by its name, or an element by its positions counted from 0: one for each dimension, or a
    /// single one for all of them, the last dimension fastest. Nothing when there is none.
    [[nodiscard]] std::optional<Place> partOf(Place const& place, std::span<PartStep const> steps) const;

    /// What is at a place of the memory: a variable, a part of one, or else the place in numbers. A size of 0 is a
    /// single bit, whose offset counts bits.
    [[nodiscard]] std::string describe(std::uint32_t area, std::uint32_t offset, std::uint32_t size) const;

private:
    void addSymbols(std::string const& name, Place const& place, std::uint16_t flags, int line);
    [[nodiscard]] Place part(Place const& whole, std::size_t type, std::uint64_t offset) const;
    [[nodiscard]] std::optional<Place> memberOf(Place const& place, std::string_view name) const;
    [[nodiscard]] std::optional<Place> elementOf(Place const& place, std::string_view indexes) const;

    std::uint32_t projectId_;
    TypeTable types_;
    std::vector<Symbol> symbols_;
    std::map<std::string, std::size_t, std::less<>> byName_; ///< in upper case, to the position in the symbols
};

} // namespace plc
