#include "tools/velk/commands/TraceCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addTraceCommand(CLI::App& /*app*/, Context& /*context*/) {}

void addTraceOption(CLI::App& /*command*/, Context& /*context*/) {}

} // namespace velk
