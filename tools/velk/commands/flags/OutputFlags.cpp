#include "tools/velk/commands/flags/OutputFlags.h"

namespace velk {

void addFormatOptions(CLI::App& command, OutputFormat& format) {
    CLI::Option* const json = command.add_flag_callback(
        "--json", [&format] { format = OutputFormat::Json; }, "As JSON");
    CLI::Option* const csv = command.add_flag_callback(
        "--csv", [&format] { format = OutputFormat::Csv; }, "As comma-separated values");
    json->excludes(csv);
}

} // namespace velk
