#include "tools/velk/line/SymbolTable.h"

#include "symbols/RtsSym.h"
#include "tools/velk/text/Names.h"

#include <array>
#include <utility>

namespace velk {
namespace {

/** The array that a name such as PUMPS[1].SPEED is an element of, or null. */
Variable const* arrayOf(SymbolTable const& table, std::string_view name) {
    std::size_t const bracket = name.find('[');
    return bracket == std::string_view::npos ? nullptr : table.find(name.substr(0, bracket));
}

base::Failure onlyWithTheArray(Variable const& array) {
    return {base::FailureKind::Missing,
            "the elements of an array can only be read with the whole array, " + array.name};
}

} // namespace

base::Result<SymbolTable> SymbolTable::load(std::filesystem::path const& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        return base::Failure{base::FailureKind::NoStoredSymbols, "there is no symbol file " + file.string()};
    }
    _VELK::RtsSym symbols(1);
    std::uint32_t projectId = 0;
    if (symbols.SymLoadSymbolsFromFile(0, file.c_str(), &projectId) == 0) {
        return base::Failure{base::FailureKind::StoredSymbolsBroken,
                             "the symbol file " + file.string() + " is corrupted or cannot be read"};
    }
    std::vector<Variable> variables;
    for (_VELK::Symbol const& symbol : symbols.symbols().all()) {
        if (*symbol.name != '\0') { // else the record does not describe a variable
            variables.push_back({symbol.name, symbol.typeName, symbol.area, symbol.offset, symbol.size});
        }
    }
    return SymbolTable(projectId, std::move(variables));
}

SymbolTable::SymbolTable(std::uint32_t projectId, std::vector<Variable> variables)
    : projectId_(projectId), variables_(std::move(variables)) {
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        byName_.emplace(upperCase(variables_[i].name), i);
    }
}

Variable const* SymbolTable::find(std::string_view name) const {
    auto const found = byName_.find(upperCase(name));
    return found == byName_.end() ? nullptr : &variables_[found->second];
}

std::vector<Variable const*> SymbolTable::matching(std::string_view pattern) const {
    if (Variable const* const exact = find(pattern)) {
        return {exact};
    }
    std::vector<Variable const*> found;
    for (Variable const& variable : variables_) {
        if (matches(pattern, variable.name)) {
            found.push_back(&variable);
        }
    }
    return found;
}

base::Failure missingVariable(SymbolTable const& table, std::string_view name) {
    if (Variable const* const array = arrayOf(table, name)) {
        return onlyWithTheArray(*array);
    }
    std::vector<std::string> names;
    for (Variable const& variable : table.variables()) {
        names.push_back(variable.name);
    }
    return {base::FailureKind::Missing, "the PLC program has no such variable" + didYouMean(name, names)};
}

base::Failure nothingMatches(SymbolTable const& table, std::string_view pattern) {
    if (Variable const* const array = arrayOf(table, pattern)) {
        return onlyWithTheArray(*array);
    }
    return {base::FailureKind::Missing, "no variable of the PLC program matches the pattern"};
}

std::string areaName(std::uint16_t area) {
    constexpr std::array<char const*, 6> kNames{"M", "I", "Q", "3", "4", "5"};
    return area < kNames.size() ? kNames[area] : std::to_string(area);
}

} // namespace velk
