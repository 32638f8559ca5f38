#include "tools/velk/commands/WatchCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addWatchCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
