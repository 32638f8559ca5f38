#include "tools/velk/commands/SymbolsCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addSymbolsCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
