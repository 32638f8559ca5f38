#include "tools/velk/commands/WriteCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addWriteCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
