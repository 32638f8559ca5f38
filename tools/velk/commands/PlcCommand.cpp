#include "tools/velk/commands/PlcCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addPlcCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
