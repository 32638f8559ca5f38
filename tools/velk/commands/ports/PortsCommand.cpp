#include "tools/velk/commands/ports/PortsCommand.h"

#include "tools/velk/commands/ports/PortList.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"

#include <memory>

namespace velk {
namespace {

ExitCode runPorts(bool json, Context& context) {
    std::vector<PortInfo> const ports = listPorts();
    if (json) {
        context.terminal.out(portsJson(ports));
        return ExitCode::Good;
    }
    if (ports.empty()) {
        context.terminal.note("This machine has no serial port; a pseudo-terminal can be named by its path");
        return ExitCode::Good;
    }
    context.terminal.out(portsTable(ports));
    for (PortInfo const& port : ports) {
        if (!port.mayNot.empty()) {
            context.terminal.note(port.mayNot);
        }
    }
    return ExitCode::Good;
}

} // namespace

Command portsCommand(Context& context) {
    auto const json = std::make_shared<bool>(false);
    return {.name = "ports",
            .description = "List the serial ports, the programs that use them, and whether you may open them",
            .flags = {flag("--json", {}, "As a JSON document", into(*json))},
            .action = [json, &context] { return runPorts(*json, context); }};
}

} // namespace velk
