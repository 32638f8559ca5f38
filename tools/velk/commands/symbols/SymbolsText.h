#pragma once

#include "tools/velk/line/SymbolTable.h"

#include <cstdint>
#include <span>
#include <string>

namespace velk {

enum class SymbolsFormat { Table, Tree, Json, Csv };

/**
 * A list of variables as text.
 *
 * @param projectId identifier of their program; in JSON only
 */
std::string symbolsText(std::span<Variable const* const> variables, std::uint32_t projectId, SymbolsFormat format);

/** Bytes of a byte area, or "byte.bit" of a single bit: "20", "3.5". */
std::string offsetText(Variable const& variable);

} // namespace velk
