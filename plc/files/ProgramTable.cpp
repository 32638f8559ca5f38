#include "plc/files/ProgramTable.h"

#include "plc/files/BehaviourTable.h"
#include "plc/frames/Text.h"
#include "plc/program/LoadedProgram.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace plc {

namespace {

constexpr std::array<std::string_view, kAreaCount> kAreaNames{"M", "I", "Q", "3", "4", "5"};
constexpr std::int64_t kMost16 = 0xFFFF;
constexpr std::int64_t kLargestOffset = 0xFFFFFFFF;
constexpr std::int64_t kLargestArea = 0x100'0000;
constexpr std::int64_t kMostHeaderExtra = 1024;

/// An area by name, or by number for a variable that is only listed.
std::uint16_t readArea(TomlTable& table) {
    toml::node const* const area = table.node("area");
    if (area != nullptr && area->is_integer()) {
        return static_cast<std::uint16_t>(table.number("area", 0, kMost16).value_or(0));
    }
    std::string const name = table.text("area").value_or("M");
    auto const* const found = std::find(kAreaNames.begin(), kAreaNames.end(), name);
    if (found == kAreaNames.end()) {
        table.refuseKey("area", "must be M, I, Q, 3, 4 or 5");
    }
    return static_cast<std::uint16_t>(found - kAreaNames.begin());
}

/// The initial values in a list of elements or a table of members, as deep as they go.
void readParts(TomlTable const& table, toml::node const& node, std::vector<PartStep> const& way,
               std::vector<PartValue>& parts) {
    auto const readPart = [&](PartStep step, toml::node const& part) {
        std::vector<PartStep> there = way;
        there.push_back(std::move(step));
        readParts(table, part, there, parts);
    };
    if (toml::array const* const elements = node.as_array()) {
        for (std::size_t i = 0; i < elements->size(); ++i) {
            readPart(i, *elements->get(i));
        }
    } else if (toml::table const* const members = node.as_table()) {
        for (auto const& [name, member] : *members) {
            readPart(std::string(name.str()), member);
        }
    } else if (auto value = TomlTable::scalar(node)) {
        parts.push_back({.way = way, .value = std::move(*value)});
    } else {
        table.refuse(TomlTable::lineOf(node), "a value is a number, true, false, a text, or a list or table of them");
    }
}

void readValue(TomlTable& table, VariableDescription& variable) {
    toml::node const* const node = table.node("value");
    if (node == nullptr || (!node->is_array() && !node->is_table())) {
        variable.value = table.value("value");
        return;
    }
    readParts(table, *node, {}, variable.parts);
    if (variable.parts.empty()) {
        table.refuseKey("value", "holds no value");
    }
}

void readVariable(TomlTable& table, ProgramDescription& program) {
    VariableDescription variable;
    variable.line = table.line();
    variable.name = table.neededText("name");
    variable.type = table.neededText("type");
    variable.area = readArea(table);
    if (auto const offset = table.number("offset", 0, kLargestOffset)) {
        variable.offset = static_cast<std::uint32_t>(*offset);
    }
    readValue(table, variable);
    variable.flags = static_cast<std::uint16_t>(table.number("flags", 0, kMost16).value_or(0));
    variable.listedOnly = table.truth("listed_only").value_or(false);
    if (auto behaviour = table.table("behaviour")) {
        program.behaviours.push_back(readBehaviour(*behaviour, variable.name));
    }
    program.variables.push_back(std::move(variable));
}

MemberDescription readMember(TomlTable const& table, toml::node const& node) {
    toml::array const* const pair = node.as_array();
    if (pair == nullptr || pair->size() != 2 || !pair->get(0)->is_string() || !pair->get(1)->is_string()) {
        table.refuse(TomlTable::lineOf(node), R"(a member is written as ["name", "type"])");
    }
    return {.name = pair->get(0)->as_string()->get(), .type = pair->get(1)->as_string()->get()};
}

StructureDescription readStructure(TomlTable& table) {
    StructureDescription structure{.name = table.neededText("name"), .line = table.line()};
    toml::node const* const members = table.node("members");
    if (members == nullptr || !members->is_array()) {
        table.refuseKey("members", R"(must be a list of ["name", "type"])");
    }
    for (toml::node const& member : *members->as_array()) {
        structure.members.push_back(readMember(table, member));
    }
    return structure;
}

void readAreaSizes(TomlTable& table, ProgramDescription& program) {
    auto sizes = table.table("area_sizes");
    if (!sizes) {
        return;
    }
    for (std::size_t i = 0; i < kAreaCount; ++i) {
        if (auto const size = sizes->number(kAreaNames[i], 0, kLargestArea)) {
            program.areaSizes[i] = static_cast<std::uint32_t>(*size);
        }
    }
    sizes->finish();
}

void readForm(TomlTable& table, SymbolFileForm& form) {
    auto file = table.table("symbol_file");
    if (!file) {
        return;
    }
    form.variant = static_cast<std::uint32_t>(file->number("variant", 0, 1).value_or(form.variant));
    form.headerExtra =
        static_cast<std::uint32_t>(file->number("header_extra", 0, kMostHeaderExtra).value_or(form.headerExtra));
    form.foreignSections = file->truth("foreign_sections").value_or(form.foreignSections);
    form.placeholders = file->truth("placeholders").value_or(form.placeholders);
    form.spacedNames = file->truth("spaced_names").value_or(form.spacedNames);
    file->finish();
}

/// Builds the program once, so that what makes no sense is found with its line.
void tryOut(TomlTable const& table, ProgramDescription const& program) {
    try {
        static_cast<void>(loadProgram(program, ByteOrder::kLittle));
    } catch (DescriptionError const& fault) {
        table.refuse(fault.line(), fault.what());
    }
}

} // namespace

ProgramDescription readProgramTable(TomlTable& table) {
    ProgramDescription program;
    program.projectId =
        static_cast<std::uint32_t>(table.number("project_id", 0, kLargestOffset).value_or(program.projectId));
    readAreaSizes(table, program);
    readForm(table, program.symbolFile);
    table.eachTable("structure", [&](TomlTable& one) { program.structures.push_back(readStructure(one)); });
    table.eachTable("variable", [&](TomlTable& one) { readVariable(one, program); });
    table.eachTable("behaviour", [&](TomlTable& one) {
        program.behaviours.push_back(readBehaviour(one, one.neededText("variable")));
    });
    tryOut(table, program);
    return program;
}

} // namespace plc
