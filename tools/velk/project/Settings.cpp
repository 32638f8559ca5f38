#include "tools/velk/project/Settings.h"

#include "host/services/PermanentStorage.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>

namespace velk {
namespace {

constexpr char const* kUsualProjectFile = "velk.toml";

/** Empty without a home directory. */
std::filesystem::path usualStorage() {
    if (char const* const state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state == '/') {
        return std::filesystem::path(state) / "velk";
    }
    if (char const* const home = std::getenv("HOME"); home != nullptr && *home == '/') {
        return std::filesystem::path(home) / ".local/state/velk";
    }
    return {};
}

std::optional<std::filesystem::path> projectFile(LineOptions const& options) {
    if (options.file) {
        return *options.file;
    }
    std::error_code ignored;
    bool const there = std::filesystem::exists(kUsualProjectFile, ignored);
    return there ? std::optional<std::filesystem::path>(kUsualProjectFile) : std::nullopt;
}

Project readProject(std::optional<std::filesystem::path> const& file) {
    if (!file) {
        Project nothing;
        nothing.config.uart.clear();
        return nothing;
    }
    return readProjectFile(*file);
}

/** A hash of a text, as eight digits (FNV-1a). */
std::string fingerprint(std::string const& text) {
    constexpr std::uint32_t kBasis = 0x811C9DC5;
    constexpr std::uint32_t kPrime = 0x01000193;
    std::uint32_t hash = kBasis;
    for (char const each : text) {
        hash = (hash ^ static_cast<unsigned char>(each)) * kPrime;
    }
    return fmt::format("{:08x}", hash);
}

/** Each project has its own symbol files, and so has each port without a project. */
std::string instanceName(Settings const& settings) {
    if (!settings.projectFile) {
        return std::filesystem::path(settings.config.uart).filename().string();
    }
    std::error_code error;
    std::filesystem::path const file = std::filesystem::weakly_canonical(*settings.projectFile, error);
    constexpr std::size_t kLongestName = 40;
    return file.parent_path().filename().string().substr(0, kLongestName) + "-" + fingerprint(file.string());
}

/** A flag applies to every station, also to one with its own setting in the project file. */
template <typename Value>
void overrideAll(std::optional<Value> const& flag, Value host::NodeSettings::*general,
                 std::optional<Value> host::NodeOverrides::*own, host::DriverConfig& config) {
    if (!flag) {
        return;
    }
    config.nodes.*general = *flag;
    for (host::NodeOverrides& node : config.nodeOverrides) {
        (node.*own).reset();
    }
}

std::optional<std::string> asText(std::optional<int> const& number) {
    return number ? std::optional(std::to_string(*number)) : std::nullopt;
}

void overrideCouplers(host::DriverConfig& config, LineOptions const& options) {
    using All = host::NodeSettings;
    using Own = host::NodeOverrides;
    auto const& [first, second] = options.couplers;
    overrideAll(options.routingLevels, &All::routingLevels, &Own::routingLevels, config);
    overrideAll(asText(first.coupler), &All::coupler1, &Own::coupler1, config);
    overrideAll(first.channel, &All::channel1, &Own::channel1, config);
    overrideAll(first.address, &All::address1, &Own::address1, config);
    overrideAll(asText(second.coupler), &All::coupler2, &Own::coupler2, config);
    overrideAll(second.channel, &All::channel2, &Own::channel2, config);
    overrideAll(second.address, &All::address2, &Own::address2, config);
}

void overrideStations(host::DriverConfig& config, LineOptions const& options) {
    std::optional<std::string> const model =
        options.byteOrder ? std::optional(modelName(*options.byteOrder)) : std::nullopt;
    overrideAll(options.blockSize, &host::NodeSettings::blockSize, &host::NodeOverrides::blockSize, config);
    overrideAll(options.timeoutMs, &host::NodeSettings::timeoutMs, &host::NodeOverrides::timeoutMs, config);
    overrideAll(options.repeat, &host::NodeSettings::repeat, &host::NodeOverrides::repeat, config);
    overrideAll(model, &host::NodeSettings::model, &host::NodeOverrides::model, config);
    overrideCouplers(config, options);
}

void overrideLine(host::DriverConfig& config, LineOptions const& options) {
    config.uart = options.port.value_or(config.uart);
    config.baudrate = options.baud.value_or(config.baudrate);
    config.parity = options.parity.value_or(config.parity);
    config.stopbits = options.stopBits.value_or(config.stopbits);
    config.mode = options.mode.value_or(config.mode);
    config.protType = options.framing ? protocolType(*options.framing) : config.protType;
}

/** Determines the default station, and ensures that there is one. */
void chooseStation(Settings& settings, Project const& project, LineOptions const& options) {
    int const first = settings.stations.empty() ? 0 : settings.stations.front().node;
    settings.node = project.defaultNode.value_or(first);
    if (options.station) {
        std::optional<int> const node = settings.findStation(*options.station);
        if (!node) {
            throw CommandError(ExitCode::Usage, settings.noSuchStation(*options.station));
        }
        settings.node = *node;
    }
    bool const known = std::any_of(settings.stations.begin(), settings.stations.end(),
                                   [&](Station const& each) { return each.node == settings.node; });
    if (!known) {
        settings.stations.push_back({settings.node, ""});
    }
}

void requireNoContradiction(Settings const& settings) {
    if (settings.passesCouplers() && framingWord(settings.config.protType) != "routed") {
        throw CommandError(ExitCode::Usage, "couplers need the framing routed, and it is bare: give --framing routed, "
                                            "or --routing-levels 0");
    }
}

template <typename Value>
void take(Value& target, std::optional<Value> const& own) {
    target = own.value_or(target);
}

std::string stationLine(Settings const& settings, Station const& station) {
    host::NodeSettings const own = settings.nodeSettings(station.node);
    std::string const called = station.name.empty() ? std::string() : " \"" + station.name + "\"";
    std::string const routing =
        own.routingLevels == 0 ? std::string() : ", " + counted(own.routingLevels, "routing level", "routing levels");
    return fmt::format("  station {}{}: {}-endian, blocks of {} bytes, time-out {} ms, {}{}", station.node, called,
                       byteOrderWord(own.model), own.blockSize, own.timeoutMs,
                       counted(own.repeat, "attempt", "attempts"), routing);
}

} // namespace

std::optional<int> Settings::findStation(std::string const& text) const {
    for (Station const& station : stations) {
        bool const named = !station.name.empty() && sameName(station.name, text);
        if (named || (onlyThese && std::to_string(station.node) == text)) {
            return station.node;
        }
    }
    if (onlyThese) {
        return std::nullopt;
    }
    int number = -1;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isNode = error == std::errc() && end == text.data() + text.size() && number >= 0 && number <= kMostNode;
    return isNode ? std::optional(number) : std::nullopt;
}

std::string Settings::noSuchStation(std::string const& text) const {
    std::vector<std::string> names;
    for (Station const& station : stations) {
        names.push_back(station.name.empty() ? std::to_string(station.node) : station.name);
    }
    return "there is no station '" + text + "'" +
           (names.empty() ? "; give a node number, 0 to " + std::to_string(kMostNode) : "; there is " + orList(names));
}

std::string Settings::stationName(int wanted) const {
    for (Station const& station : stations) {
        if (station.node == wanted && !station.name.empty()) {
            return station.name;
        }
    }
    return std::to_string(wanted);
}

bool Settings::passesCouplers() const {
    return std::any_of(stations.begin(), stations.end(),
                       [&](Station const& each) { return nodeSettings(each.node).routingLevels > 0; });
}

host::NodeSettings Settings::nodeSettings(int wanted) const {
    host::NodeSettings settings = config.nodes;
    for (host::NodeOverrides const& own : config.nodeOverrides) {
        if (own.node != wanted) {
            continue;
        }
        take(settings.blockSize, own.blockSize);
        take(settings.timeoutMs, own.timeoutMs);
        take(settings.repeat, own.repeat);
        take(settings.model, own.model);
        take(settings.routingLevels, own.routingLevels);
        take(settings.coupler1, own.coupler1);
        take(settings.channel1, own.channel1);
        take(settings.address1, own.address1);
        take(settings.coupler2, own.coupler2);
        take(settings.channel2, own.channel2);
        take(settings.address2, own.address2);
    }
    return settings;
}

Settings mergeSettings(Project const& project, LineOptions const& options) {
    Settings settings;
    settings.config = project.config;
    settings.stations = project.stations;
    settings.onlyThese = !project.stations.empty();
    settings.tags = project.tags;
    overrideLine(settings.config, options);
    overrideStations(settings.config, options);
    chooseStation(settings, project, options);
    requireNoContradiction(settings);
    settings.storage = options.storage ? std::filesystem::absolute(*options.storage) : project.storage.value_or("");
    return settings;
}

std::filesystem::path storedSymbolFile(Settings const& settings, int node) {
    return settings.storage / host::instanceFolder(settings.instance).value_or("velk") /
           fmt::format("PLCSymbols_{}.sdb", node);
}

Settings loadSettings(LineOptions const& options) {
    std::optional<std::filesystem::path> const file = projectFile(options);
    Settings settings = mergeSettings(readProject(file), options);
    settings.projectFile = file;
    settings.storage = settings.storage.empty() ? usualStorage() : settings.storage;
    settings.instance = instanceName(settings);
    return settings;
}

Settings readSettings(Context const& context) {
    Settings settings = loadSettings(context.options);
    if (settings.config.uart.empty()) {
        throw CommandError(ExitCode::Usage,
                           "no serial port is given: name it with --port, or in a project file (velk init writes one, "
                           "velk ports lists the ports)");
    }
    if (settings.storage.empty()) {
        throw CommandError(ExitCode::Usage, "there is no home directory for the symbol files: give --storage");
    }
    return settings;
}

std::vector<std::string> settingsText(Settings const& settings) {
    host::DriverConfig const& config = settings.config;
    std::vector<std::string> lines;
    lines.push_back(fmt::format(
        "{}{}: {} bit/s, parity {}, {}, {}, {} framing",
        settings.projectFile ? settings.projectFile->string() + ": " : std::string(), config.uart, config.baudrate,
        config.parity, counted(config.stopbits, "stop bit", "stop bits"), config.mode, framingWord(config.protType)));
    for (Station const& station : settings.stations) {
        lines.push_back(stationLine(settings, station));
    }
    return lines;
}

void echoSettings(Settings const& settings, Context& context) {
    for (std::string const& line : settingsText(settings)) {
        context.terminal.note(context.terminal.colouredError(Colour::Dim, line));
    }
}

} // namespace velk
