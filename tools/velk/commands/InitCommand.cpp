#include "tools/velk/commands/InitCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addInitCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
