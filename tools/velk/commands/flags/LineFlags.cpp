#include "tools/velk/commands/flags/LineFlags.h"

#include "host/instance/ConfigText.h"
#include "host/ports/LineSettings.h"
#include "tools/velk/commands/flags/TraceFlags.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/project/ProjectFile.h"

#include <fmt/format.h>

namespace velk {
namespace {

constexpr char const* kLineGroup = "Line";
constexpr char const* kStationGroup = "Station";
constexpr char const* kCouplerGroup = "Couplers";

/** Refuses a line speed that no serial port knows. */
std::string checkBaud(std::string const& text) {
    constexpr int kDataBits = 8;
    int baud = 0;
    if (!CLI::detail::lexical_cast(text, baud)) {
        return "'" + text + "' is no line speed";
    }
    auto const settings = host::lineSettings(baud, 0, kDataBits, 1);
    return settings.ok() ? std::string() : settings.failure().text;
}

std::string checkFolder(std::string const& text) {
    return text.empty() ? "a folder has to have a name" : "";
}

CLI::Validator oneOf(std::vector<std::string> const& words) {
    return CLI::IsMember(words, CLI::ignore_case);
}

/** What counts when neither a flag nor the project file says anything else. */
template <typename Value>
std::string withDefault(std::string const& description, Value const& value) {
    return fmt::format("{}; {} by default", description, value);
}

void addTheLine(CLI::App& command, LineOptions& options) {
    host::DriverConfig const usual;
    command.add_option("-p,--port", options.port, "Serial port, such as /dev/ttyUSB0 or com1")
        ->type_name("PORT")
        ->group(kLineGroup);
    command.add_option("-b,--baud", options.baud, withDefault("Line speed in bit/s", usual.baudrate))
        ->type_name("BAUD")
        ->check(CLI::Validator(checkBaud, ""))
        ->group(kLineGroup);
    command.add_option("--parity", options.parity, withDefault("Parity of the characters", usual.parity))
        ->transform(oneOf(parities()))
        ->group(kLineGroup);
    command.add_option("--stopbits", options.stopBits, withDefault("Stop bits of the characters", usual.stopbits))
        ->check(CLI::Range(1, kMostStopBits))
        ->type_name("")
        ->group(kLineGroup);
    command.add_option("--mode", options.mode, withDefault("What the port drives", usual.mode))
        ->transform(oneOf(modes()))
        ->group(kLineGroup);
    command
        .add_option("--framing", options.framing,
                    withDefault("Frames as they are, or routed through couplers", framingWord(usual.protType)))
        ->transform(oneOf(framings()))
        ->group(kLineGroup);
    command.add_option("--storage", options.storage, "Folder where symbol files are kept")
        ->type_name("DIR")
        ->check(CLI::Validator(checkFolder, ""))
        ->group(kLineGroup);
}

void addTheStation(CLI::App& command, LineOptions& options) {
    host::NodeSettings const usual;
    command
        .add_option("-n,--node", options.station,
                    "The station that is meant: its node number, or its name in the project file")
        ->type_name("STATION")
        ->group(kStationGroup);
    command
        .add_option("--byte-order", options.byteOrder,
                    withDefault("Order of the bytes in a number", byteOrderWord(usual.model)))
        ->transform(oneOf(byteOrders()))
        ->group(kStationGroup);
    command.add_option("--block-size", options.blockSize, withDefault("Bytes of a block", usual.blockSize))
        ->check(CLI::Range(kLeastBlockSize, kMostBlockSize))
        ->type_name("")
        ->group(kStationGroup);
    command
        .add_option("--timeout", options.timeoutMs, withDefault("Milliseconds to wait for an answer", usual.timeoutMs))
        ->check(CLI::Range(kLeastTimeoutMs, kMostTimeoutMs))
        ->type_name("")
        ->group(kStationGroup);
    command.add_option("--repeat", options.repeat, withDefault("Attempts for one request", usual.repeat))
        ->check(CLI::Range(1, kMostRepeats))
        ->type_name("")
        ->group(kStationGroup);
}

void addTheCouplers(CLI::App& command, LineOptions& options) {
    host::NodeSettings const usual;
    command
        .add_option("--routing-levels", options.routingLevels,
                    withDefault("Levels of couplers on the way, with routed framing", usual.routingLevels))
        ->check(CLI::Range(0, kMostRoutingLevels))
        ->type_name("")
        ->group(kCouplerGroup);
    for (std::size_t i = 0; i < options.couplers.size(); ++i) {
        CouplerOptions& coupler = options.couplers[i];
        std::string const level = std::to_string(i + 1);
        std::string const what = " of level " + level;
        command.add_option("--coupler" + level, coupler.coupler, withDefault("Coupler" + what, usual.coupler1))
            ->check(CLI::Range(0, kMostCoupler))
            ->type_name("")
            ->group(kCouplerGroup);
        command
            .add_option("--channel" + level, coupler.channel,
                        withDefault("Channel of the coupler" + what, usual.channel1))
            ->check(CLI::Range(0, kMostChannel))
            ->type_name("")
            ->group(kCouplerGroup);
        command
            .add_option("--address" + level, coupler.address,
                        withDefault("Address behind the coupler" + what, usual.address1))
            ->check(CLI::Validator([](std::string& text) { return addressFault(text); }, ""))
            ->type_name("ADDRESS")
            ->group(kCouplerGroup);
    }
}

} // namespace

void addProjectOptions(CLI::App& command, Context& context) {
    command
        .add_option("-f,--file", context.options.file,
                    "Project file; velk.toml in the current folder when there is one")
        ->type_name("FILE");
    command.add_flag("-q,--quiet", context.options.quiet,
                     "Show no settings in effect and no progress on standard error");
}

void addSettingOptions(CLI::App& command, Context& context) {
    addProjectOptions(command, context);
    addTheLine(command, context.options);
    addTheStation(command, context.options);
    addTheCouplers(command, context.options);
}

void addLineOptions(CLI::App& command, Context& context) {
    addSettingOptions(command, context);
    addTraceOption(command, context);
}

} // namespace velk
