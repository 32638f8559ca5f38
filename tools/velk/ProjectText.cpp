#include "tools/velk/ProjectText.h"

#include "tools/velk/Choices.h"

#include <fmt/format.h>

#include <algorithm>

namespace velk {
namespace {

std::string lineSection(host::DriverConfig const& config) {
    return fmt::format(R"([line]
port = {}              # the port; a name under /dev/serial/by-id stays the same when an adapter is plugged in again
baud = {}              # bit/s
parity = {}            # "none", "even", "odd" or "mark"
stopbits = {}          # 1 or 2
mode = {}              # "RS-232", or "RS-485" where the port has it
framing = {}           # "bare": frames as they are; "routed": each behind a header that leads it through couplers
)",
                       tomlText(config.uart), config.baudrate, tomlText(config.parity), config.stopbits,
                       tomlText(config.mode), tomlText(framingWord(config.protType)));
}

std::string defaultsSection(host::NodeSettings const& nodes) {
    return fmt::format(R"(# For every station; a [[station]] can have its own.
[defaults]
byte_order = {}        # "big" or "little": the order of the bytes in the PLC's numbers
block_size = {}        # bytes of a block, 128 to 1460; as the PLC has it
timeout_ms = {}        # how long to wait for an answer, 100 to 20000
repeat = {}            # attempts for one request
)",
                       tomlText(byteOrderWord(nodes.model)), nodes.blockSize, nodes.timeoutMs, nodes.repeat);
}

std::string stationSection(NewProject const& project) {
    bool const named = !project.stationName.empty();
    return fmt::format(R"([[station]]
node = {}              # the number of the PLC, 0 to 256
{}name = {}            # what to call it: velk read {}:PLC_PRG.Counter
)",
                       project.node, named ? "" : "# ", tomlText(named ? project.stationName : "press"),
                       named ? project.stationName : "press");
}

constexpr char const* kRouting = R"(# Through couplers, with the framing "routed", in one or two levels:
# routing_levels = 1
# coupler1 = 0         # 0 to 6
# channel1 = 0         # 0 to 19
# address1 = "0.0.0.0"
)";

constexpr char const* kTags =
    R"(# Names of your own for variables. The type comes from the PLC's symbol file unless it is given:
# boolean, byte, short, int, unsignedByte, unsignedShort, unsignedInt, float, double, string-20, arrays such as
# short-10, and "bit" for a BOOL in a single bit. Conversions: swap2, swap4, swap8, swapnibble, bcd, inv, neg.
#
# [[tag]]
# name = "speed"
# variable = "PLC_PRG.Motor.Speed"
#
# [[tag]]
# name = "serial"
# variable = "PLC_PRG.Serial"
# type = "unsignedShort"
# conversions = ["bcd"]

# Where the PLC's symbol files are kept; without it in your home directory.
# [storage]
# directory = "symbols"
)";

/** Brings the comments behind the values into one column. */
std::string withAlignedComments(std::string const& text) {
    constexpr std::size_t kColumn = 24;
    std::string aligned;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const end = text.find('\n', at);
        std::string line = text.substr(at, end - at);
        std::size_t const comment = line.rfind("  #");
        if (comment != std::string::npos) {
            std::string const behind = line.substr(line.find('#', comment));
            line.erase(line.find_last_not_of(' ', comment) + 1);
            line.resize(std::max(line.size() + 1, kColumn), ' ');
            line += behind;
        }
        aligned += line + "\n";
        at = end + 1;
    }
    return aligned;
}

} // namespace

std::string tomlText(std::string const& text) {
    std::string quoted = "\"";
    for (char const each : text) {
        auto const byte = static_cast<unsigned char>(each);
        constexpr unsigned char kDelete = 0x7F;
        if (each == '"' || each == '\\') {
            quoted += std::string("\\") + each;
        } else if (byte < ' ' || byte == kDelete) {
            quoted += fmt::format("\\u{:04X}", byte);
        } else {
            quoted += each;
        }
    }
    return quoted + "\"";
}

std::string projectText(NewProject const& project) {
    std::string const text =
        "# The serial line to a PLC, for velk. `velk config check` checks this file, `man velk.toml` explains it.\n\n" +
        lineSection(project.config) + "\n" + defaultsSection(project.config.nodes) + "\n" + stationSection(project) +
        "\n" + kRouting + "\n" + kTags;
    return withAlignedComments(text);
}

} // namespace velk
