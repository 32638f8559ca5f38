#include "plc/files/ProgramTable.h"

#include "plc/files/BehaviourTable.h"
#include "plc/program/LoadedProgram.h"

#include <algorithm>
#include <array>
#include <optional>
#include <type_traits>
#include <utility>

namespace plc {

namespace {

using base::TomlNode;

constexpr std::array<std::string_view, kAreaCount> kAreaNames{"M", "I", "Q", "3", "4", "5"};
constexpr std::int64_t kMost16 = 0xFFFF;
constexpr std::int64_t kLargestOffset = 0xFFFFFFFF;
constexpr std::int64_t kLargestArea = 0x100'0000;
constexpr std::int64_t kMostHeaderExtra = 1024;

std::optional<std::uint16_t> areaNamed(std::string_view name) {
    auto const* const found = std::find(kAreaNames.begin(), kAreaNames.end(), name);
    return found == kAreaNames.end() ? std::nullopt
                                     : std::optional(static_cast<std::uint16_t>(found - kAreaNames.begin()));
}

/// An area by name, or by number for a variable that is only listed.
std::uint16_t readArea(base::TomlSection& table) {
    TomlNode const* const area = table.node("area");
    if (area != nullptr && area->as<std::int64_t>() != nullptr) {
        return table.number<std::uint16_t>("area", 0, kMost16).value_or(0);
    }
    return table.named("area", areaNamed, "M, I, Q, 3, 4 or 5").value_or(0);
}

/// A boolean, a number or a text.
std::optional<Value> scalar(TomlNode const& node) {
    auto const toValue = [](auto const& value) -> std::optional<Value> {
        if constexpr (std::is_constructible_v<Value, decltype(value)>) {
            return Value(value);
        }
        return std::nullopt;
    };
    return std::visit(toValue, node.value);
}

/// A single value beside a list would be placed in the middle of that list.
void requireOneDepth(base::TomlSection& table, TomlNode::List const& elements) {
    auto const isList = [](TomlNode const& node) { return node.as<TomlNode::List>() != nullptr; };
    bool const first = !elements.empty() && isList(elements.front());
    auto const other =
        std::find_if(elements.begin(), elements.end(), [&](TomlNode const& each) { return isList(each) != first; });
    if (other != elements.end()) {
        table.complaints().add(other->place, "either all elements of a list are lists, or none is");
    }
}

/// The initial values in a list of elements or a table of members, at any depth.
void readParts(base::TomlSection& table, TomlNode const& node, std::vector<PartStep> const& way,
               std::vector<PartValue>& parts) {
    auto const readPart = [&](PartStep step, TomlNode const& part) {
        std::vector<PartStep> there = way;
        there.push_back(std::move(step));
        readParts(table, part, there, parts);
    };
    if (auto const* const elements = node.as<TomlNode::List>()) {
        requireOneDepth(table, *elements);
        for (std::size_t i = 0; i < elements->size(); ++i) {
            readPart(i, (*elements)[i]);
        }
    } else if (auto const* const members = node.as<TomlNode::Table>()) {
        for (base::TomlEntry const& member : *members) {
            readPart(member.key, member.value);
        }
    } else if (auto value = scalar(node)) {
        parts.push_back({.way = way, .value = std::move(*value)});
    } else {
        table.complaints().add(node.place, "a value is a number, true, false, a text, or a list or table of them");
    }
}

void readValue(base::TomlSection& table, VariableDescription& variable) {
    TomlNode const* const node = table.node("value");
    if (node == nullptr) {
        return;
    }
    readParts(table, *node, {}, variable.parts);
    if (variable.parts.size() == 1 && variable.parts.front().way.empty()) {
        variable.value = std::move(variable.parts.front().value);
        variable.parts.clear();
    } else if (variable.parts.empty() && table.complaints().empty()) {
        table.complain("value", "'value' holds no value");
    }
}

void readVariable(base::TomlSection& table, ProgramDescription& program) {
    VariableDescription variable;
    variable.line = table.place().line;
    variable.name = table.neededText("name");
    variable.type = table.neededText("type");
    variable.area = readArea(table);
    variable.offset = table.number<std::uint32_t>("offset", 0, kLargestOffset);
    readValue(table, variable);
    variable.flags = table.number<std::uint16_t>("flags", 0, kMost16).value_or(0);
    variable.listedOnly = table.truth("listed_only").value_or(false);
    table.section("behaviour", [&](base::TomlSection& behaviour) {
        program.behaviours.push_back(readBehaviour(behaviour, variable.name));
    });
    program.variables.push_back(std::move(variable));
}

std::optional<MemberDescription> memberOf(TomlNode const& node) {
    auto const* const pair = node.as<TomlNode::List>();
    if (pair == nullptr || pair->size() != 2) {
        return std::nullopt;
    }
    auto const* const name = pair->front().as<std::string>();
    auto const* const type = pair->back().as<std::string>();
    return name == nullptr || type == nullptr ? std::nullopt
                                              : std::optional(MemberDescription{.name = *name, .type = *type});
}

StructureDescription readStructure(base::TomlSection& table) {
    StructureDescription structure{.name = table.neededText("name"), .line = table.place().line};
    TomlNode const* const node = table.node("members");
    auto const* const members = node == nullptr ? nullptr : node->as<TomlNode::List>();
    if (members == nullptr) {
        table.complain("members", R"('members' must be a list of ["name", "type"])");
        return structure;
    }
    for (TomlNode const& each : *members) {
        if (auto const member = memberOf(each)) {
            structure.members.push_back(*member);
        } else {
            table.complaints().add(each.place, R"(a member is written as ["name", "type"])");
        }
    }
    return structure;
}

void readAreaSizes(base::TomlSection& sizes, ProgramDescription& program) {
    for (std::size_t i = 0; i < kAreaCount; ++i) {
        std::uint32_t& size = program.areaSizes[i];
        size = sizes.number<std::uint32_t>(kAreaNames[i], 0, kLargestArea).value_or(size);
    }
}

void readForm(base::TomlSection& file, SymbolFileForm& form) {
    form.variant = file.number<std::uint32_t>("variant", 0, 1).value_or(form.variant);
    form.headerExtra = file.number<std::uint32_t>("header_extra", 0, kMostHeaderExtra).value_or(form.headerExtra);
    form.foreignSections = file.truth("foreign_sections").value_or(form.foreignSections);
    form.placeholders = file.truth("placeholders").value_or(form.placeholders);
    form.spacedNames = file.truth("spaced_names").value_or(form.spacedNames);
}

/// Builds the program once, so that errors are found and reported with their line.
void tryOut(base::Complaints& complaints, ProgramDescription const& program) {
    try {
        static_cast<void>(loadProgram(program, ByteOrder::kLittle));
    } catch (DescriptionError const& fault) {
        complaints.add({.line = fault.line()}, fault.what());
    }
}

} // namespace

ProgramDescription readProgramTable(base::TomlSection& table) {
    using base::TomlSection;
    ProgramDescription program;
    program.projectId = table.number<std::uint32_t>("project_id", 0, kLargestOffset).value_or(program.projectId);
    table.section("area_sizes", [&](TomlSection& sizes) { readAreaSizes(sizes, program); });
    table.section("symbol_file", [&](TomlSection& file) { readForm(file, program.symbolFile); });
    table.sections("structure", [&](TomlSection& one) { program.structures.push_back(readStructure(one)); });
    table.sections("variable", [&](TomlSection& one) { readVariable(one, program); });
    table.sections("behaviour", [&](TomlSection& one) {
        program.behaviours.push_back(readBehaviour(one, one.neededText("variable")));
    });
    if (table.complaints().empty()) {
        tryOut(table.complaints(), program);
    }
    return program;
}

} // namespace plc
