#include "tools/velk/commands/TraceCommand.h"

#include "tools/velk/Context.h"
#include "tools/velk/Terminal.h"
#include "tools/velk/trace/TraceOutput.h"

#include <memory>
#include <string>
#include <vector>

namespace velk {
namespace {

using trace::TraceOptions;

std::vector<std::string> const& formats() {
    static std::vector<std::string> const names{"text", "jsonl", "pcapng"};
    return names;
}

void addFormat(CLI::App& command, std::string const& flag, std::shared_ptr<TraceOptions> const& options) {
    command
        .add_option_function<std::string>(
            flag, [options](std::string const& format) { options->format = format; },
            "Format of the trace, when the file's ending does not tell")
        ->transform(CLI::IsMember(formats(), CLI::ignore_case));
}

} // namespace

void addTraceCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand(
        "trace", "Show every frame that another command exchanges with the PLC, on standard error or in a file");
    auto const options = std::make_shared<TraceOptions>();
    auto const words = std::make_shared<std::vector<std::string>>();
    command
        ->add_option_function<std::string>(
            "-o,--output", [options](std::string const& file) { options->file = file; },
            "File for the trace: .txt, .jsonl, or .pcapng for packet analysers")
        ->type_name("FILE");
    addFormat(*command, "--format", options);
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

void addTraceOption(CLI::App& command, Context& context) {
    auto const options = std::make_shared<TraceOptions>();
    command
        .add_option_function<std::string>(
            "--trace",
            [&context, options](std::string const& file) {
                options->file = file;
                wantTrace(context, options);
            },
            "File for a trace of every frame: .txt, .jsonl, or .pcapng for packet analysers")
        ->type_name("FILE")
        ->group("Trace");
    addFormat(command, "--trace-format", options);
    command.get_option("--trace-format")->needs("--trace")->group("Trace");
}

} // namespace velk
