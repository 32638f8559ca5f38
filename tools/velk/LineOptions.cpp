#include "tools/velk/LineOptions.h"

#include "tools/velk/Context.h"

namespace velk {
namespace {

constexpr char const* kLineGroup = "Line";
constexpr char const* kStationGroup = "Station";

void addTheLine(CLI::App& command, LineOptions& options) {
    command.add_option("-p,--port", options.port, "Serial port: /dev/ttyUSB0, com1 ...")->group(kLineGroup);
    command.add_option("-b,--baud", options.baud, "Line speed in bit/s")->group(kLineGroup);
    command.add_option("--parity", options.parity, "none, even, odd or mark")->group(kLineGroup);
    command.add_option("--stopbits", options.stopBits, "1 or 2")->group(kLineGroup);
    command.add_option("--mode", options.mode, "RS-232 or RS-485")->group(kLineGroup);
    command.add_option("--framing", options.framing, "bare, or routed through couplers")->group(kLineGroup);
    command.add_option("--storage", options.storage, "Folder of the stored symbol files")->group(kLineGroup);
}

void addTheStation(CLI::App& command, LineOptions& options) {
    command
        .add_option("-n,--node", options.station,
                    "The station that is meant: its number, or its name in the project file")
        ->group(kStationGroup);
    command.add_option("--byte-order", options.byteOrder, "big or little")->group(kStationGroup);
    command.add_option("--block-size", options.blockSize, "Bytes of a block, 128 to 1460")->group(kStationGroup);
    command.add_option("--timeout", options.timeoutMs, "Milliseconds to wait for an answer, 100 to 20000")
        ->group(kStationGroup);
    command.add_option("--repeat", options.repeat, "Attempts for one request")->group(kStationGroup);
}

} // namespace

void addProjectOptions(CLI::App& command, Context& context) {
    command.add_option("-f,--file", context.options.file,
                       "Project file; velk.toml in the current folder when there is one");
    command.add_flag("-q,--quiet", context.options.quiet, "No settings in effect and no progress on standard error");
}

void addLineOptions(CLI::App& command, Context& context) {
    addProjectOptions(command, context);
    addTheLine(command, context.options);
    addTheStation(command, context.options);
}

} // namespace velk
