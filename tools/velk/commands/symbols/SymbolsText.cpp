#include "tools/velk/commands/symbols/SymbolsText.h"

#include "tools/common/TextTable.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <map>
#include <vector>

namespace velk {
namespace {

constexpr std::uint32_t kBitsPerByte = 8;

std::string tableText(std::span<Variable const* const> variables) {
    tools::TextTable table({"name", "type", "area", "offset", "size"});
    for (Variable const* const variable : variables) {
        table.add({displayable(variable->name), displayable(variable->type), areaName(variable->area),
                   offsetText(*variable), std::to_string(variable->size)});
    }
    return table.text();
}

std::string csvText(std::span<Variable const* const> variables) {
    std::string text = "name,type,area,offset,size\n";
    for (Variable const* const variable : variables) {
        text += fmt::format("{},{},{},{},{}\n", csvField(toUtf8(variable->name)), csvField(toUtf8(variable->type)),
                            areaName(variable->area), variable->offset, variable->size);
    }
    return text;
}

std::string jsonText(std::span<Variable const* const> variables, std::uint32_t projectId) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (Variable const* const variable : variables) {
        list.push_back({{"name", toUtf8(variable->name)},
                        {"type", toUtf8(variable->type)},
                        {"area", areaName(variable->area)},
                        {"offset", variable->offset},
                        {"size", variable->size}});
    }
    nlohmann::ordered_json const document{{"project", projectId}, {"variables", std::move(list)}};
    return document.dump(2) + '\n';
}

/** A part of a name between dots, with what is below it. */
struct Branch {
    std::string label;
    Variable const* variable = nullptr;    ///< null for a part that is not a variable itself
    std::map<std::string, Branch> below{}; ///< by label in upper case
};

/** Deeper than real programs nest; a deeper name keeps its rest in one piece. */
constexpr int kMostDepth = 32;

Branch makeTree(std::span<Variable const* const> variables) {
    Branch root;
    for (Variable const* const variable : variables) {
        Branch* branch = &root;
        int depth = 1;
        for (std::size_t begin = 0; begin <= variable->name.size(); ++depth) {
            std::size_t const dot = depth < kMostDepth ? variable->name.find('.', begin) : std::string::npos;
            std::size_t const end = std::min(dot, variable->name.size());
            std::string const label = variable->name.substr(begin, end - begin);
            branch = &branch->below.try_emplace(upperCase(label), Branch{label}).first->second;
            begin = end + 1;
        }
        branch->variable = variable;
    }
    return root;
}

void appendTree(std::string& text, Branch const& branch, std::string const& indent) {
    std::size_t left = branch.below.size();
    for (auto const& [key, below] : branch.below) {
        bool const last = --left == 0;
        text += indent + (last ? "└─ " : "├─ ") + displayable(below.label);
        if (below.variable != nullptr) {
            text += fmt::format("  {}  {}:{}", displayable(below.variable->type), areaName(below.variable->area),
                                offsetText(*below.variable));
        }
        text += '\n';
        appendTree(text, below, indent + (last ? "   " : "│  "));
    }
}

} // namespace

std::string offsetText(Variable const& variable) {
    return sameName(variable.type, "BIT")
               ? fmt::format("{}.{}", variable.offset / kBitsPerByte, variable.offset % kBitsPerByte)
               : std::to_string(variable.offset);
}

std::string symbolsText(std::span<Variable const* const> variables, std::uint32_t projectId, SymbolsFormat format) {
    switch (format) {
    case SymbolsFormat::Tree: {
        std::string text;
        appendTree(text, makeTree(variables), "");
        return text;
    }
    case SymbolsFormat::Json:
        return jsonText(variables, projectId);
    case SymbolsFormat::Csv:
        return csvText(variables);
    case SymbolsFormat::Table:
        break;
    }
    return tableText(variables);
}

} // namespace velk
