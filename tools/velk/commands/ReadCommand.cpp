#include "tools/velk/commands/ReadCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addReadCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
