#include "tools/velk/Settings.h"

#include "tools/velk/CommandError.h"
#include "tools/velk/Context.h"
#include "tools/velk/Terminal.h"

#include <cstdlib>

namespace velk {
namespace {

constexpr char const* kUsualProjectFile = "velk.toml";

std::filesystem::path usualStorage() {
    if (char const* const state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state == '/') {
        return std::filesystem::path(state) / "velk";
    }
    char const* const home = std::getenv("HOME");
    return std::filesystem::path(home != nullptr ? home : "/tmp") / ".local/state/velk";
}

std::optional<std::filesystem::path> projectFile(LineOptions const& options) {
    if (options.file) {
        return *options.file;
    }
    std::error_code ignored;
    return std::filesystem::exists(kUsualProjectFile, ignored) ? std::optional<std::filesystem::path>(kUsualProjectFile)
                                                               : std::nullopt;
}

} // namespace

std::optional<int> Settings::findStation(std::string const& text) const {
    for (Station const& station : stations) {
        if (station.name == text || std::to_string(station.node) == text) {
            return station.node;
        }
    }
    return std::nullopt;
}

std::string Settings::stationName(int wanted) const {
    for (Station const& station : stations) {
        if (station.node == wanted && !station.name.empty()) {
            return station.name;
        }
    }
    return std::to_string(wanted);
}

host::NodeSettings Settings::nodeSettings(int /*node*/) const {
    return config.nodes;
}

Settings readSettings(Context const& context) {
    LineOptions const& options = context.options;
    Settings settings;
    settings.projectFile = projectFile(options);
    settings.storage = usualStorage();
    settings.instance = "velk";
    if (!options.port) {
        throw CommandError(ExitCode::Usage, "no serial port: give --port, or write a project file with velk init");
    }
    settings.config.uart = *options.port;
    settings.config.baudrate = options.baud.value_or(settings.config.baudrate);
    settings.config.protType = options.framing.value_or("bare") == "bare" ? "Serial_RS232" : "ABB_RS232_AC";
    settings.config.nodes.blockSize = options.blockSize.value_or(settings.config.nodes.blockSize);
    settings.config.nodes.timeoutMs = options.timeoutMs.value_or(settings.config.nodes.timeoutMs);
    settings.config.nodes.repeat = options.repeat.value_or(settings.config.nodes.repeat);
    settings.config.nodes.model = options.byteOrder.value_or("big") == "big" ? "Motorola" : "Intel";
    settings.node = options.station ? std::atoi(options.station->c_str()) : 0;
    settings.stations.push_back({settings.node, ""});
    return settings;
}

void echoSettings(Settings const& settings, Context& context) {
    context.terminal.note(settings.config.uart);
}

} // namespace velk
