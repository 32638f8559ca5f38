#include "tools/velk/commands/PortsCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addPortsCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
