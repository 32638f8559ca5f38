#include "tools/velk/commands/flags/TraceFlags.h"

#include "tools/velk/context/Context.h"

#include <vector>

namespace velk {
namespace {

using trace::TraceOptions;

std::vector<std::string> const& formats() {
    static std::vector<std::string> const names{"text", "jsonl", "pcapng"};
    return names;
}

} // namespace

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
    addTraceFormatOption(command, "--trace-format", options);
    command.get_option("--trace-format")->needs("--trace")->group("Trace");
}

void addTraceFormatOption(CLI::App& command, std::string const& flag, std::shared_ptr<TraceOptions> const& options) {
    command
        .add_option_function<std::string>(
            flag, [options](std::string const& format) { options->format = format; },
            "Format of the trace, when the file's ending does not tell")
        ->transform(CLI::IsMember(formats(), CLI::ignore_case));
}

} // namespace velk
