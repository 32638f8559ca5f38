#pragma once

#include "tools/velk/commands/symbols/SymbolsText.h"
#include "tools/velk/context/ExitCode.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace velk {

struct Context;

struct SymbolsOptions {
    std::vector<std::string> patterns;
    SymbolsFormat format = SymbolsFormat::Table;
    bool stored = false; ///< nothing on the line
    bool fetch = false;  ///< in any case
};

/** Lists the variables of a PLC's program. */
ExitCode runSymbols(SymbolsOptions const& options, Context& context);

void addSymbolsCommand(CLI::App& app, Context& context);

} // namespace velk
