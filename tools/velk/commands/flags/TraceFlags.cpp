#include "tools/velk/commands/flags/TraceFlags.h"

#include "tools/velk/context/Context.h"

namespace velk {

std::vector<Argument> traceFlags(Context& context) {
    auto const options = std::make_shared<trace::TraceOptions>();
    auto const take = [&context, options](std::string const& file) {
        options->file = file;
        wantTrace(context, options);
        return std::string();
    };
    Argument format = traceFormatFlag("--trace-format", options);
    format.rules.needs = "--trace";
    return {flag("--trace", {"FILE", Offer::Files},
                 "File for a trace of every frame: .txt, .jsonl, or .pcapng for packet analysers", take),
            format};
}

Argument traceFormatFlag(std::string const& name, std::shared_ptr<trace::TraceOptions> const& options) {
    auto const take = [options](std::string const& format) {
        options->format = trace::traceKindNamed(format);
        return std::string();
    };
    return flag(name, std::vector<std::string>{"text", "jsonl", "pcapng"},
                "Format of the trace, if the file name does not say", take);
}

} // namespace velk
