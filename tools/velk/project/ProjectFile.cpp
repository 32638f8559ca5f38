#include "tools/velk/project/ProjectFile.h"

#include "base/TomlSection.h"
#include "base/WholeFile.h"
#include "host/ports/LineSettings.h"
#include "host/ports/PortNames.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/project/DriverType.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <utility>

namespace velk {
namespace {

/** Whether a text has the form of 192.168.0.1. */
bool isAddress(std::string_view text) {
    int parts = 0;
    while (true) {
        std::size_t const dot = text.find('.');
        std::string_view const part = text.substr(0, dot);
        bool const digits = !part.empty() && part.size() <= 3 && part.find_first_not_of("0123456789") == part.npos;
        constexpr int kMost = 255;
        if (!digits || std::atoi(std::string(part).c_str()) > kMost) {
            return false;
        }
        ++parts;
        if (dot == std::string_view::npos) {
            constexpr int kParts = 4;
            return parts == kParts;
        }
        text.remove_prefix(dot + 1);
    }
}

using base::TomlSection;

/** Reads one project file; reports what is wrong and continues. */
class Reader {
public:
    explicit Reader(std::filesystem::path folder) : folder_(std::move(folder)) {
        project_.config.uart.clear(); // no port but the one that the file or a flag names
    }

    Project read(TomlSection& top) {
        top.section("line", [&](TomlSection& line) { readLine(line); });
        top.sections("station", [&](TomlSection& station) { readStation(station); });
        top.section("defaults", [&](TomlSection& defaults) { readDefaults(defaults); });
        top.section("storage", [&](TomlSection& storage) { readStorage(storage); });
        top.sections("tag", [&](TomlSection& tag) { readTag(tag); });
        return std::move(project_);
    }

private:
    void readLine(TomlSection& line);
    void readBaud(TomlSection& line);
    void readDefaults(TomlSection& defaults);
    void readStation(TomlSection& station);
    void readStationName(TomlSection& section, Station& station);
    void readStorage(TomlSection& storage);
    void readTag(TomlSection& section);
    void readTagType(TomlSection& section, NamedTag& tag);
    void readTagPlace(TomlSection& section, NamedTag& tag);

    std::optional<std::string> address(TomlSection& section, char const* key);
    host::NodeOverrides nodeSettings(TomlSection& section);
    std::optional<int> stationNode(TomlSection& section);

    std::filesystem::path folder_;
    Project project_;
};

template <typename Value>
void assign(Value& target, std::optional<Value> const& value) {
    if (value) {
        target = *value;
    }
}

void Reader::readLine(TomlSection& line) {
    host::DriverConfig& config = project_.config;
    std::optional<std::string> const port = line.text("port");
    assign(config.uart, port);
    if (std::string const fault = port ? portFault(*port) : std::string(); !fault.empty()) {
        line.complain("port", fault);
    }
    readBaud(line);
    assign(config.parity, line.choice("parity", parities()));
    assign(config.stopbits, line.number("stopbits", 1, kMostStopBits));
    assign(config.mode, line.choice("mode", modes()));
    if (auto const framing = line.choice("framing", framings())) {
        config.protType = protocolType(*framing);
    }
}

void Reader::readBaud(TomlSection& line) {
    constexpr int kFastest = 4'000'000;
    constexpr int kDataBits = 8;
    std::optional<int> const baud = line.number("baud", 1, kFastest);
    if (!baud) {
        return;
    }
    auto const possible = host::lineSettings(*baud, 0, kDataBits, 1);
    if (!possible.ok()) {
        line.complain("baud", possible.failure().text);
    }
    project_.config.baudrate = *baud;
}

std::optional<std::string> Reader::address(TomlSection& section, char const* key) {
    std::optional<std::string> text = section.text(key);
    if (std::string const fault = text ? addressFault(*text) : std::string(); !fault.empty()) {
        section.complain(key, fault);
        return std::nullopt;
    }
    return text;
}

host::NodeOverrides Reader::nodeSettings(TomlSection& section) {
    auto const coupler = [&](char const* key) -> std::optional<std::string> {
        std::optional<int> const number = section.number(key, 0, kMostCoupler);
        return number ? std::optional(std::to_string(*number)) : std::nullopt;
    };
    host::NodeOverrides settings;
    settings.blockSize = section.number("block_size", kLeastBlockSize, kMostBlockSize);
    settings.timeoutMs = section.number("timeout_ms", kLeastTimeoutMs, kMostTimeoutMs);
    settings.repeat = section.number("repeat", 1, kMostRepeats);
    if (auto const order = section.choice("byte_order", byteOrders())) {
        settings.model = modelName(*order);
    }
    settings.routingLevels = section.number("routing_levels", 0, kMostRoutingLevels);
    if (settings.routingLevels.value_or(0) > 0 && framingWord(project_.config.protType) != "routed") {
        section.complain("routing_levels", "couplers need the framing routed, and it is bare");
    }
    settings.coupler1 = coupler("coupler1");
    settings.channel1 = section.number("channel1", 0, kMostChannel);
    settings.address1 = address(section, "address1");
    settings.coupler2 = coupler("coupler2");
    settings.channel2 = section.number("channel2", 0, kMostChannel);
    settings.address2 = address(section, "address2");
    return settings;
}

void Reader::readDefaults(TomlSection& defaults) {
    host::NodeOverrides const given = nodeSettings(defaults);
    host::NodeSettings& all = project_.config.nodes;
    assign(all.blockSize, given.blockSize);
    assign(all.timeoutMs, given.timeoutMs);
    assign(all.repeat, given.repeat);
    assign(all.model, given.model);
    assign(all.routingLevels, given.routingLevels);
    assign(all.coupler1, given.coupler1);
    assign(all.channel1, given.channel1);
    assign(all.address1, given.address1);
    assign(all.coupler2, given.coupler2);
    assign(all.channel2, given.channel2);
    assign(all.address2, given.address2);
    project_.defaultNode = stationNode(defaults);
}

void Reader::readStationName(TomlSection& section, Station& station) {
    assign(station.name, section.text("name"));
    if (std::string const fault = stationNameFault(station.name); !fault.empty()) {
        section.complain("name", fault);
        return;
    }
    auto const same = [&](Station const& other) { return !station.name.empty() && sameName(other.name, station.name); };
    if (std::any_of(project_.stations.begin(), project_.stations.end(), same)) {
        section.complain("name", "there is another station called '" + station.name + "'");
    }
}

void Reader::readStation(TomlSection& section) {
    Station station;
    if (!section.has("node")) {
        section.complain("node", "the station has no 'node', the number that it has on the line");
    }
    std::optional<int> const node = section.number("node", 0, kMostNode);
    readStationName(section, station);
    host::NodeOverrides settings = nodeSettings(section);
    if (!node) {
        return;
    }
    auto const same = [&](Station const& other) { return other.node == *node; };
    if (std::any_of(project_.stations.begin(), project_.stations.end(), same)) {
        section.complain("node", "there is another station with node " + std::to_string(*node));
        return;
    }
    station.node = *node;
    settings.node = *node;
    project_.stations.push_back(station);
    project_.config.nodeOverrides.push_back(std::move(settings));
}

void Reader::readStorage(TomlSection& storage) {
    std::optional<std::string> const directory = storage.text("directory");
    if (directory && directory->empty()) {
        storage.complain("directory", "'directory' is empty");
    } else if (directory) {
        char const* const home = std::getenv("HOME");
        bool const inHome = directory->starts_with("~/") && home != nullptr;
        project_.storage = inHome ? std::filesystem::path(home) / directory->substr(2) : folder_ / *directory;
    }
}

/** The node of the station that "station" names or numbers. */
std::optional<int> Reader::stationNode(TomlSection& section) {
    std::optional<std::string> const wanted = section.textOrNumber("station");
    if (!wanted) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (Station const& station : project_.stations) {
        if (sameName(station.name, *wanted) || std::to_string(station.node) == *wanted) {
            return station.node;
        }
        names.push_back(station.name.empty() ? std::to_string(station.node) : station.name);
    }
    section.complain("station", "there is no station '" + *wanted + "'" +
                                    (names.empty() ? std::string() : "; there is " + orList(names)));
    return std::nullopt;
}

void Reader::readTagType(TomlSection& section, NamedTag& tag) {
    assign(tag.type, section.text("type"));
    auto const conversions = section.texts("conversions");
    bool const bit = tag.type == "bit";
    if (section.has("type") && !bit) {
        if (base::Result<DriverType> const type = parseDriverType(tag.type); !type.ok()) {
            section.complain("type", type.failure().text);
            return; // a missing type needs no message
        }
    }
    if (!conversions || conversions->empty()) {
        return;
    }
    if (tag.type.empty() || bit) {
        section.complain("conversions", "'conversions' need a 'type' of the driver");
        return;
    }
    std::string list;
    for (std::string const& each : *conversions) {
        list += (list.empty() ? "" : ",") + each;
    }
    tag.type += "(" + list + ")";
    if (base::Result<DriverType> const type = parseDriverType(tag.type); !type.ok()) {
        section.complain("conversions", type.failure().text);
    }
}

void Reader::readTagPlace(TomlSection& section, NamedTag& tag) {
    tag.node = stationNode(section);
    tag.area = section.choice("area", areas());
    tag.offset = section.textOrNumber("offset");
    if (tag.offset &&
        (tag.offset->empty() || tag.offset->find_first_not_of("0123456789.xXabcdefABCDEF") != std::string::npos)) {
        section.complain("offset", "'offset' is '" + *tag.offset + "'; it must be like 12, or 12.3 with a subindex");
    }
    if (tag.offset && !tag.area) {
        section.complain("offset", "'offset' needs an 'area'");
    }
    if (tag.area == "PROJ_ID" && !tag.offset) {
        section.complain("area", "the offset of a PROJ_ID tag is the project identifier, and it is missing");
    }
}

void Reader::readTag(TomlSection& section) {
    NamedTag tag;
    assign(tag.name, section.text("name"));
    tag.variable = tag.name;
    assign(tag.variable, section.text("variable"));
    readTagType(section, tag);
    readTagPlace(section, tag);
    if (tag.name.empty() || tag.name.find_first_of(":=*?[") != std::string::npos) {
        section.complain("name", "a tag needs a 'name' without ':', '=', '*', '?' and '['");
    }
    if (displayable(tag.name) != toUtf8(tag.name)) {
        section.complain("name", "the name of a tag must not contain control characters");
    }
    if (section.has("variable") && (tag.variable.empty() || tag.variable.find_first_of("?:=") != std::string::npos)) {
        section.complain("variable", "'variable' must be the name of a PLC variable");
    }
    auto const same = [&](NamedTag const& other) { return sameName(other.name, tag.name); };
    if (std::any_of(project_.tags.begin(), project_.tags.end(), same)) {
        section.complain("name", "there is another tag called '" + tag.name + "'");
    }
    project_.tags.push_back(std::move(tag));
}

} // namespace

std::string addressFault(std::string_view address) {
    return isAddress(address) ? "" : "'" + std::string(address) + "' is not an address such as 192.168.0.1";
}

std::string portFault(std::string const& port) {
    return host::PortNames().path(port) ? ""
                                        : "no serial port is called '" + displayable(port) +
                                              "': give the path of a device such as /dev/ttyUSB0, or com1 to com16";
}

std::string stationNameFault(std::string const& name) {
    bool const isNumber = !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
    bool const hasMark = name.find_first_of(":=") != std::string::npos;
    if (isNumber || hasMark) {
        return "the name of a station must not be a number or contain ':' or '='";
    }
    bool const shownAsItIs = displayable(name) == name;
    return shownAsItIs ? "" : "the name of a station must be UTF-8 without control characters";
}

Project readProjectText(std::string_view text, std::string const& name, std::filesystem::path const& folder) {
    return base::readToml(text, base::Complaints(name), "the project file",
                          [&](TomlSection& top) { return Reader(folder).read(top); });
}

Project readProjectFile(std::filesystem::path const& file) {
    constexpr std::size_t kMostBytes = 16UL * 1024 * 1024;
    base::Result<std::string> const text = base::readWholeFile(file, kMostBytes);
    if (!text.ok()) {
        throw base::FileError({file.string() + ": the project file cannot be read: " + text.failure().text});
    }
    std::error_code error;
    return readProjectText(text.value(), file.string(), std::filesystem::absolute(file, error).parent_path());
}

} // namespace velk
