#include "tools/velk/commands/CheckCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addCheckCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
