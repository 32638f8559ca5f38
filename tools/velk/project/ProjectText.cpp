#include "tools/velk/project/ProjectText.h"

#include "tools/common/TextTable.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace velk {
namespace {

/** "key = value", with its comment in the column of all comments. */
std::string entry(std::string const& key, std::string const& value, std::string const& comment) {
    constexpr std::size_t kColumn = 24;
    std::string const line = key + " = " + value;
    std::size_t const width = tools::characterCount(line);
    return line + std::string(std::max(width + 1, kColumn) - width, ' ') + "# " + comment + "\n";
}

std::string entry(std::string const& key, int value, std::string const& comment) {
    return entry(key, std::to_string(value), comment);
}

std::string lineSection(host::DriverConfig const& config) {
    return "[line]\n" +
           entry("port", tomlText(config.uart),
                 "the port; a name under /dev/serial/by-id stays the same when an adapter is plugged in again") +
           entry("baud", config.baudrate, "bit/s") +
           entry("parity", tomlText(config.parity), R"("none", "even", "odd" or "mark")") +
           entry("stopbits", config.stopbits, "1 or 2") +
           entry("mode", tomlText(config.mode), R"("RS-232", or "RS-485" where the port has it)") +
           entry("framing", tomlText(framingWord(config.protType)),
                 R"("bare": frames as they are; "routed": each with a header that routes it through couplers)");
}

std::string defaultsSection(host::NodeSettings const& nodes) {
    return "# For every station; a [[station]] can have its own.\n[defaults]\n" +
           entry("byte_order", tomlText(byteOrderWord(nodes.model)),
                 R"("big" or "little": the order of the bytes in the PLC's numbers)") +
           entry("block_size", nodes.blockSize,
                 fmt::format("bytes of a block, {} to {}; must match the PLC", kLeastBlockSize, kMostBlockSize)) +
           entry("timeout_ms", nodes.timeoutMs,
                 fmt::format("how long to wait for an answer, {} to {}", kLeastTimeoutMs, kMostTimeoutMs)) +
           entry("repeat", nodes.repeat, "attempts for one request");
}

std::string stationSection(NewProject const& project) {
    bool const named = !project.stationName.empty();
    std::string const name = named ? project.stationName : "press";
    return "[[station]]\n" + entry("node", project.node, fmt::format("the number of the PLC, 0 to {}", kMostNode)) +
           entry(named ? "name" : "# name", tomlText(name),
                 "its name, as in: velk read " + shellWord(name + ":PLC_PRG.Counter"));
}

/** The keys of one routing level, @p mark before each. */
std::string levelEntries(std::string const& mark, char const* level, std::string const& coupler, int channel,
                         std::string const& address) {
    return entry(mark + "coupler" + level, coupler, fmt::format("0 to {}", kMostCoupler)) +
           entry(mark + "channel" + level, channel, fmt::format("0 to {}", kMostChannel)) +
           entry(mark + "address" + level, tomlText(address), "the one behind the coupler");
}

/** Belongs to the station above it; what is not needed is written as a comment. */
std::string routingEntries(host::NodeSettings const& nodes) {
    std::string const mark = nodes.routingLevels == 0 ? "# " : "";
    std::string text =
        "# Through couplers, with the framing \"routed\", in one or two levels:\n" +
        entry(mark + "routing_levels", std::max(1, nodes.routingLevels), fmt::format("0 to {}", kMostRoutingLevels)) +
        levelEntries(mark, "1", nodes.coupler1, nodes.channel1, nodes.address1);
    return nodes.routingLevels < 2 ? text
                                   : text + levelEntries("", "2", nodes.coupler2, nodes.channel2, nodes.address2);
}

constexpr char const* kTags =
    R"(# Your own names for variables. The type comes from the PLC's symbol file unless it is given:
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
)";

std::string storageSection(std::string const& directory) {
    std::string const mark = directory.empty() ? "# " : "";
    return "# Where the PLC's symbol files are kept; without it in your home directory.\n" + mark + "[storage]\n" +
           mark + "directory = " + tomlText(directory.empty() ? "symbols" : directory) + "\n";
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
    return "# The serial line to a PLC, for velk. `velk config check` checks this file, `man velk.toml` explains "
           "it.\n\n" +
           lineSection(project.config) + "\n" + defaultsSection(project.config.nodes) + "\n" + stationSection(project) +
           "\n" + routingEntries(project.config.nodes) + "\n" + kTags + "\n" + storageSection(project.storage);
}

} // namespace velk
