#include "tools/velk/commands/TraceCommand.h"

#include "tools/velk/commands/flags/TraceFlags.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/trace/TraceOutput.h"

#include <memory>
#include <string>
#include <vector>

namespace velk {
void addTraceCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand(
        "trace", "Show every frame that another command exchanges with the PLC, on standard error or in a file");
    auto const options = std::make_shared<trace::TraceOptions>();
    auto const words = std::make_shared<std::vector<std::string>>();
    command
        ->add_option_function<std::string>(
            "-o,--output", [options](std::string const& file) { options->file = file; },
            "File for the trace: .txt, .jsonl, or .pcapng for packet analysers")
        ->type_name("FILE");
    addTraceFormatOption(*command, "--format", options);
    command->add_option("COMMAND", *words, "The command, behind --: velk trace -- read Motor.Speed")
        ->required()
        ->type_name("");
    command->callback([&context, options, words] {
        context.action = [&context, options, words] {
            auto const isTraced = wantTrace(context, options);
            ExitCode const code = context.runCommandLine(*words);
            if (!isTraced() && code != ExitCode::Usage) { // else the reason was told
                context.terminal.complain("nothing is traced: no line was used");
            }
            return code;
        };
    });
}

} // namespace velk
