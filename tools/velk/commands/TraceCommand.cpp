#include "tools/velk/commands/TraceCommand.h"

#include "tools/velk/commands/flags/TraceFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/trace/TraceOutput.h"

#include <memory>
#include <string>
#include <vector>

namespace velk {

Command traceCommand(Context& context) {
    auto const options = std::make_shared<trace::TraceOptions>();
    auto const words = std::make_shared<std::vector<std::string>>();
    auto const run = [&context, options, words] {
        auto const isTraced = wantTrace(context, options);
        ExitCode const code = context.runCommandLine(*words);
        if (!isTraced() && code != ExitCode::Usage) { // else the reason was printed
            context.terminal.complain("there is no trace: no line was used");
        }
        return code;
    };
    return {.name = "trace",
            .description =
                "Show every frame that another command exchanges with the PLC, on standard error or in a file",
            .words = {word("COMMAND", Offer::CommandLine, "The command, after --: velk trace -- read Motor.Speed",
                           into(*words), {.required = true, .repeats = true})},
            .flags = {flag("-o,--output", {"FILE", Offer::Files},
                           "File for the trace: .txt, .jsonl, or .pcapng for packet analysers", into(options->file)),
                      traceFormatFlag("--format", options)},
            .action = run};
}

} // namespace velk
