#include "tools/velk/commands/flags/LineFlags.h"

#include "host/instance/ConfigText.h"
#include "host/ports/LineSettings.h"
#include "tools/velk/commands/flags/TraceFlags.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/project/ProjectFile.h"

namespace velk {
namespace {

std::string folderFault(std::string const& text) {
    return text.empty() ? "a folder must have a name" : "";
}

std::vector<Argument> projectFlags(LineOptions& options) {
    return {flag("-f,--file", {"FILE", Offer::Files}, "Project file; velk.toml in the current folder when there is one",
                 into(options.file)),
            flag("-q,--quiet", {}, "Print no settings and no progress on standard error", into(options.quiet))};
}

std::vector<Argument> theLine(LineOptions& options) {
    host::DriverConfig const usual;
    return {
        flag("-p,--port", {"PORT", Offer::Ports}, "Serial port, such as /dev/ttyUSB0 or com1", into(options.port)),
        flag("-b,--baud", "BAUD", "Line speed in bit/s", into(options.baud, baudFault),
             {.byDefault = std::to_string(usual.baudrate)}),
        flag("--parity", parities(), "Parity of the characters", into(options.parity), {.byDefault = usual.parity}),
        flag("--stopbits", Range{1, kMostStopBits}, "Stop bits of the characters", into(options.stopBits),
             {.byDefault = std::to_string(usual.stopbits)}),
        flag("--mode", modes(), "Type of the line", into(options.mode), {.byDefault = usual.mode}),
        flag("--framing", framings(), "Frames as they are, or routed through couplers", into(options.framing),
             {.byDefault = framingWord(usual.protType)}),
        flag("--storage", {"DIR", Offer::Folders}, "Folder for the symbol files", into(options.storage, folderFault))};
}

std::vector<Argument> theStation(LineOptions& options) {
    host::NodeSettings const usual;
    return {flag("-n,--node", {"STATION", Offer::Stations},
                 "The station: its node number, or its name in the project file", into(options.station)),
            flag("--byte-order", byteOrders(), "Order of the bytes in a number", into(options.byteOrder),
                 {.byDefault = byteOrderWord(usual.model)}),
            flag("--block-size", Range{kLeastBlockSize, kMostBlockSize}, "Bytes of a block", into(options.blockSize),
                 {.byDefault = std::to_string(usual.blockSize)}),
            flag("--timeout", Range{kLeastTimeoutMs, kMostTimeoutMs}, "Milliseconds to wait for an answer",
                 into(options.timeoutMs), {.byDefault = std::to_string(usual.timeoutMs)}),
            flag("--repeat", Range{1, kMostRepeats}, "Attempts for one request", into(options.repeat),
                 {.byDefault = std::to_string(usual.repeat)})};
}

std::vector<Argument> theCouplers(LineOptions& options) {
    host::NodeSettings const usual;
    std::vector<Argument> flags{flag("--routing-levels", Range{0, kMostRoutingLevels},
                                     "Levels of couplers on the route, with routed framing",
                                     into(options.routingLevels), {.byDefault = std::to_string(usual.routingLevels)})};
    int number = 0;
    for (CouplerOptions& coupler : options.couplers) {
        std::string const level = std::to_string(++number);
        flags.push_back(flag("--coupler" + level, Range{0, kMostCoupler}, "Coupler of level " + level,
                             into(coupler.coupler), {.byDefault = usual.coupler1}));
        flags.push_back(flag("--channel" + level, Range{0, kMostChannel}, "Channel of the coupler of level " + level,
                             into(coupler.channel), {.byDefault = std::to_string(usual.channel1)}));
        flags.push_back(flag("--address" + level, "ADDRESS", "Address behind the coupler of level " + level,
                             into(coupler.address, addressFault), {.byDefault = usual.address1}));
    }
    return flags;
}

} // namespace

std::string baudFault(std::string const& text) {
    constexpr int kDataBits = 8;
    std::optional<int> const baud = wholeNumber<int>(text);
    if (!baud) {
        return "'" + text + "' is not a line speed";
    }
    auto const settings = host::lineSettings(*baud, 0, kDataBits, 1);
    return settings.ok() ? std::string() : settings.failure().text;
}

std::vector<Argument> settingFlags(Context& context) {
    std::vector<Argument> flags = projectFlags(context.options);
    appendFlags(flags, theLine(context.options), "Line");
    appendFlags(flags, theStation(context.options), "Station");
    appendFlags(flags, theCouplers(context.options), "Couplers");
    return flags;
}

std::vector<Argument> lineFlags(Context& context) {
    std::vector<Argument> flags = settingFlags(context);
    appendFlags(flags, traceFlags(context), "Trace");
    return flags;
}

std::vector<Argument> withLineFlags(std::vector<Argument> own, Context& context) {
    appendFlags(own, lineFlags(context));
    return own;
}

} // namespace velk
