#include "tools/velk/commands/CompletionsCommand.h"

#include "tools/velk/Context.h"

namespace velk {

void addCompletionsCommand(CLI::App& /*app*/, Context& /*context*/) {}

} // namespace velk
