#include "plc/program/DataTypes.h"

#include "base/Names.h"
#include "plc/frames/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace plc {

namespace {

constexpr std::uint64_t kLargestType = 0x7FFFFFFF;

struct Elementary {
    std::string_view word;
    TypeKind kind;
    std::uint32_t size;
};

constexpr std::array<Elementary, 16> kElementary{{
    {"BOOL", TypeKind::kBool, 1},
    {"BYTE", TypeKind::kByte, 1},
    {"SINT", TypeKind::kSint, 1},
    {"USINT", TypeKind::kUsint, 1},
    {"INT", TypeKind::kInt, 2},
    {"UINT", TypeKind::kUint, 2},
    {"WORD", TypeKind::kWord, 2},
    {"DINT", TypeKind::kDint, 4},
    {"UDINT", TypeKind::kUdint, 4},
    {"DWORD", TypeKind::kDword, 4},
    {"REAL", TypeKind::kReal, 4},
    {"LREAL", TypeKind::kLreal, 8},
    {"LINT", TypeKind::kLint, 8},
    {"ULINT", TypeKind::kUlint, 8},
    {"TIME", TypeKind::kTime, 4},
    {"BIT", TypeKind::kBit, 1},
}};

Elementary const* elementaryNamed(std::string_view word) {
    auto const* const found = std::find_if(kElementary.begin(), kElementary.end(),
                                           [word](Elementary const& type) { return base::sameName(type.word, word); });
    return found == kElementary.end() ? nullptr : found;
}

std::uint64_t aligned(std::uint64_t offset, std::uint32_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

std::uint32_t checkedSize(std::uint64_t size, std::string const& name, int line) {
    if (size > kLargestType) {
        throw DescriptionError(textOf("type ", name, " is too large"), line);
    }
    return static_cast<std::uint32_t>(size);
}

void refuseBit(DataType const& part, std::string_view where, int line) {
    if (part.kind == TypeKind::kBit) {
        throw DescriptionError(textOf("a BIT cannot lie in ", where), line);
    }
}

void checkStructure(StructureDescription const& structure) {
    if (structure.name.empty() || elementaryNamed(structure.name) != nullptr || parseStringText(structure.name) ||
        isArrayText(structure.name)) {
        throw DescriptionError(textOf("\"", structure.name, "\" cannot be the name of a structure"), structure.line);
    }
    if (structure.members.empty()) {
        throw DescriptionError(textOf("structure ", structure.name, " has no members"), structure.line);
    }
    for (auto member = structure.members.begin(); member != structure.members.end(); ++member) {
        bool const again = std::any_of(structure.members.begin(), member, [&](MemberDescription const& other) {
            return base::sameName(other.name, member->name);
        });
        if (member->name.empty() || again) {
            throw DescriptionError(textOf("structure ", structure.name, ": member \"", member->name,
                                          again ? "\" occurs twice" : "\" has no name"),
                                   structure.line);
        }
    }
}

} // namespace

TypeTable::TypeTable(std::vector<StructureDescription> structures) {
    for (StructureDescription& structure : structures) {
        checkStructure(structure);
        if (knownStructure(structure.name) != nullptr) {
            throw DescriptionError(textOf("structure ", structure.name, " occurs twice"), structure.line);
        }
        structures_.push_back({.description = std::move(structure)});
    }
}

std::size_t TypeTable::typeOf(std::string_view text, int line) {
    text = trimmed(text);
    if (isArrayText(text)) {
        return arrayType(text, line);
    }
    if (Known* const known = knownStructure(text)) {
        return structureType(*known, line);
    }
    return elementaryType(text, line);
}

/// The position of an equal existing type, or that of the new one.
std::size_t TypeTable::add(DataType type) {
    auto const found = std::find_if(types_.begin(), types_.end(), [&](DataType const& known) {
        return known.kind == type.kind && known.name == type.name;
    });
    if (found != types_.end()) {
        return static_cast<std::size_t>(found - types_.begin());
    }
    types_.push_back(std::move(type));
    return types_.size() - 1;
}

std::size_t TypeTable::elementaryType(std::string_view text, int line) {
    if (auto const length = parseStringText(text)) {
        return add({.kind = TypeKind::kString, .name = textOf("STRING(", *length, ")"), .size = *length + 1});
    }
    Elementary const* const type = elementaryNamed(text);
    if (type == nullptr) {
        throw DescriptionError(textOf("there is no type \"", text, "\""), line);
    }
    // To readers of the symbol file, a single bit is a BOOL.
    std::string_view const name = type->kind == TypeKind::kBit ? "BOOL" : type->word;
    return add({.kind = type->kind, .name = std::string(name), .size = type->size, .alignment = type->size});
}

std::size_t TypeTable::arrayType(std::string_view text, int line) {
    auto array = parseArrayText(text);
    if (!array) {
        throw DescriptionError(textOf("\"", text, "\" is not written as ARRAY [low..high] OF type"), line);
    }
    std::size_t const element = typeOf(array->element, line);
    refuseBit(types_[element], "an array", line);
    DataType type{.kind = TypeKind::kArray,
                  .name = arrayText(array->dimensions, types_[element].name),
                  .alignment = types_[element].alignment,
                  .element = element};
    std::uint64_t size = types_[element].size;
    for (Dimension const& dimension : array->dimensions) {
        size = checkedSize(size * dimension.count(), type.name, line);
    }
    type.size = static_cast<std::uint32_t>(size);
    type.dimensions = std::move(array->dimensions);
    return add(std::move(type));
}

std::size_t TypeTable::structureType(Known& known, int line) {
    StructureDescription const& description = known.description;
    if (known.underWay) {
        throw DescriptionError(textOf("structure ", description.name, " contains itself"), description.line);
    }
    known.underWay = true;
    DataType type{.kind = TypeKind::kStructure, .name = description.name};
    std::uint64_t size = 0;
    for (MemberDescription const& member : description.members) {
        std::size_t const position = typeOf(member.type, description.line);
        refuseBit(types_[position], textOf("structure ", description.name), description.line);
        size = aligned(size, types_[position].alignment);
        type.members.push_back(
            {.name = member.name, .type = position, .offset = checkedSize(size, type.name, description.line)});
        size += types_[position].size;
        type.alignment = std::max(type.alignment, types_[position].alignment);
    }
    known.underWay = false;
    type.size = checkedSize(aligned(size, type.alignment), type.name, line);
    return add(std::move(type));
}

TypeTable::Known* TypeTable::knownStructure(std::string_view name) {
    auto const found = std::find_if(structures_.begin(), structures_.end(), [name](Known const& known) {
        return base::sameName(known.description.name, name);
    });
    return found == structures_.end() ? nullptr : &*found;
}

} // namespace plc
