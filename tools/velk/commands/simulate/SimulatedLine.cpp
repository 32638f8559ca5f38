#include "tools/velk/commands/simulate/SimulatedLine.h"

#include "base/Complaints.h"
#include "host/ports/LineSettings.h"
#include "plc/files/LineFile.h"
#include "plc/frames/PlcRouting.h"
#include "tools/velk/context/Choices.h"
#include "tools/velk/context/CommandError.h"
#include "tools/velk/text/Names.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace velk::simulation {
namespace {

using plc::FaultKind;
using plc::FaultRule;

constexpr std::uint32_t kUsualBaud = 19'200;

[[noreturn]] void refuse(std::string const& text) {
    throw CommandError(ExitCode::Usage, text);
}

/** A mistake in a description file is a usage error. */
template <typename Read>
auto reading(Read&& read) {
    try {
        return std::forward<Read>(read)();
    } catch (plc::DescriptionError const& error) {
        refuse(error.what());
    }
}

plc::LineDescription lineOfOneProgram(std::string_view text, std::string const& name) {
    plc::StationDescription station;
    station.byteOrder = plc::ByteOrder::kBig;
    station.program = plc::readProgramText(text, name);
    plc::LineDescription line;
    line.framing = plc::Framing::kRouted;
    line.speed.baud = kUsualBaud;
    line.stations.push_back(std::move(station));
    return line;
}

/** Recognises the project file of the other commands, which is easily confused with a description. */
void refuseProjectFile(std::string const& text, std::string const& file) {
    bool const described = plc::hasAnyKey(text, file, {"framing", "variable"});
    if (!described && plc::hasAnyKey(text, file, {"line", "defaults"})) {
        refuse(file + ": this is a project file, which tells velk where the PLCs are; to simulate them, they must be "
                      "described: see simulated-plc.md of the documents");
    }
}

plc::LineDescription readProject(std::string const& file) {
    std::string const text = plc::readDescription(file);
    refuseProjectFile(text, file);
    if (plc::isLineText(text, file)) {
        return plc::readLineText(text, file, std::filesystem::path(file).parent_path());
    }
    return lineOfOneProgram(text, file);
}

void overrideStations(plc::LineDescription& line, PlcOptions const& options) {
    if (options.framing) {
        line.framing = plc::framingNamed(protocolType(*options.framing)).value_or(line.framing);
    }
    for (std::size_t i = 0; i < line.stations.size(); ++i) {
        plc::StationDescription& station = line.stations[i];
        if (options.byteOrder) {
            bool const big = byteOrderWord(modelName(*options.byteOrder)) == "big";
            station.byteOrder = big ? plc::ByteOrder::kBig : plc::ByteOrder::kLittle;
        }
        station.blockSize = options.blockSize ? static_cast<std::size_t>(*options.blockSize) : station.blockSize;
        station.faultSeed = options.seed ? *options.seed + static_cast<std::uint32_t>(i) : station.faultSeed;
    }
}

/** Frames take time: a panel that is still sending or receiving is not silent. */
void allowForFrames(plc::LineDescription& line) {
    for (plc::StationDescription& station : line.stations) {
        station.exchangeTimeout += plc::timeOf(2 * (plc::kRoutingHeaderSize + station.blockSize), line.speed);
    }
}

/** A pseudo-terminal simulates any speed; a real port knows the usual ones. */
void checkBaud(int baud, bool realPort) {
    constexpr int kDataBits = 8;
    if (realPort) {
        auto const settings = host::lineSettings(baud, 0, kDataBits, 1);
        if (!settings.ok()) {
            refuse("--baud: " + settings.failure().text);
        }
    } else if (baud < static_cast<int>(plc::kLeastBaud) || baud > static_cast<int>(plc::kMostBaud)) {
        refuse(
            fmt::format("--baud: {} is not a line speed from {} to {} bit/s", baud, plc::kLeastBaud, plc::kMostBaud));
    }
}

void overrideSpeed(plc::LineDescription& line, PlcOptions const& options) {
    plc::LineSpeed& speed = line.speed;
    if (options.baud) {
        checkBaud(*options.baud, options.port.has_value());
    }
    bool const asked = options.baud || options.parity || options.stopBits || options.port;
    speed.baud = options.baud ? static_cast<std::uint32_t>(*options.baud) : speed.baud;
    if (asked && speed.baud == 0) {
        speed.baud = kUsualBaud;
    }
    if (options.parity) {
        speed.parity = plc::parityNamed(*options.parity).value_or(speed.parity);
    }
    speed.stopBits = options.stopBits.value_or(speed.stopBits);
    if (asked || line.bytesPerSecond == 0) {
        line.bytesPerSecond = plc::bytesPerSecond(speed);
    }
    line.portPaces = options.port.has_value();
    allowForFrames(line);
}

// ---- which stations

std::vector<std::size_t> chosenStations(plc::LineDescription const& line, PlcOptions const& options) {
    std::vector<std::size_t> chosen;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < line.stations.size(); ++i) {
        names.push_back(line.stations[i].name);
        if (!options.station || sameName(*options.station, names.back())) {
            chosen.push_back(i);
        }
    }
    if (chosen.empty()) {
        refuse(
            fmt::format("--only: there is no station '{}'; there is {}", options.station.value_or(""), orList(names)));
    }
    return chosen;
}

// ---- faults

FaultRule withShare(FaultKind kind, double share) {
    return {.kind = kind, .when = plc::Trigger::with(share)};
}

void addLostFrames(std::vector<FaultRule>& rules, double share) {
    for (FaultKind const kind :
         {FaultKind::kSilent, FaultKind::kAckMissing, FaultKind::kBlockMissing, FaultKind::kClosingMissing}) {
        rules.push_back(withShare(kind, share));
    }
}

bool hasVariable(plc::StationDescription const& station, std::string const& name) {
    return plc::Program(station.program).find(name).has_value();
}

void checkVariable(std::string const& flag, std::string const& name, plc::LineDescription const& line,
                   std::vector<std::size_t> const& chosen) {
    bool const known = std::any_of(chosen.begin(), chosen.end(),
                                   [&](std::size_t station) { return hasVariable(line.stations[station], name); });
    if (!known) {
        refuse(fmt::format("{}: there is no variable {}", flag, name));
    }
}

std::vector<FaultRule> faultRules(PlcOptions const& options, plc::LineDescription const& line,
                                  std::vector<std::size_t> const& chosen) {
    std::vector<FaultRule> rules;
    if (options.drop) {
        addLostFrames(rules, *options.drop);
    }
    if (options.flip) {
        rules.push_back(withShare(FaultKind::kFlippedBits, *options.flip));
    }
    if (options.refuseLogin) {
        rules.push_back({.kind = FaultKind::kStatusWord, .service = plc::ServiceKind::kLogin});
    }
    for (plc::TimeWindow const& window : options.silent) {
        rules.push_back({.kind = FaultKind::kSilent, .when = {.window = window}});
    }
    for (std::string const& name : options.badQuality) {
        checkVariable("--bad-quality", name, line, chosen);
        rules.push_back({.kind = FaultKind::kBadQuality, .variable = name});
    }
    for (std::string const& text : options.faults) {
        rules.push_back(plc::readFaultText(text, "--fault"));
        if (std::string const& variable = rules.back().variable; !variable.empty()) {
            checkVariable("--fault", variable, line, chosen);
        }
    }
    return rules;
}

// ---- timed events

/** The same program as after a new download: everything in its place, with another identifier. */
plc::ProgramDescription downloadedAgain(plc::ProgramDescription program) {
    ++program.projectId;
    return program;
}

plc::ProgramDescription replacingProgram(std::string const& file) {
    try {
        return plc::readProgramFile(file);
    } catch (base::FileError const& error) {
        refuse(fmt::format("--replace-program: {}", error.what()));
    }
}

std::vector<Happening> happeningsOf(PlcOptions const& options, plc::LineDescription const& line,
                                    std::vector<std::size_t> const& chosen) {
    std::vector<Happening> happenings;
    std::vector<plc::ProgramDescription> programs;
    for (plc::StationDescription const& station : line.stations) {
        programs.push_back(station.program);
    }
    for (Replacement const& replacement : options.replaceProgram) {
        for (std::size_t const station : chosen) {
            programs[station] =
                replacement.file.empty() ? downloadedAgain(programs[station]) : replacingProgram(replacement.file);
            happenings.push_back({.at = replacement.after,
                                  .kind = Happening::Kind::ReplaceProgram,
                                  .station = station,
                                  .program = programs[station]});
        }
    }
    for (plc::Micros const after : options.restart) {
        for (std::size_t const station : chosen) {
            happenings.push_back({.at = after, .kind = Happening::Kind::Restart, .station = station});
        }
    }
    std::stable_sort(happenings.begin(), happenings.end(),
                     [](Happening const& left, Happening const& right) { return left.at < right.at; });
    return happenings;
}

std::string speedText(plc::LineDescription const& line) {
    if (line.speed.baud != 0) {
        return fmt::format("{} bit/s, {} bytes/s", line.speed.baud, line.bytesPerSecond);
    }
    return line.bytesPerSecond == 0 ? std::string("no line speed") : fmt::format("{} bytes/s", line.bytesPerSecond);
}

std::string stationText(plc::StationDescription const& station) {
    std::string text = fmt::format("  station {}: {}-endian, blocks of {} bytes, {} variables, project {:08X}",
                                   station.name, station.byteOrder == plc::ByteOrder::kBig ? "big" : "little",
                                   station.blockSize, station.program.variables.size(), station.program.projectId);
    if (!station.faults.empty()) {
        text += ", " + counted(station.faults.size(), "fault rule", "fault rules");
    }
    return text;
}

} // namespace

Plan makePlan(PlcOptions const& options) {
    return reading([&] {
        Plan plan{.line = readProject(options.project), .happenings = {}};
        overrideStations(plan.line, options);
        overrideSpeed(plan.line, options);
        plc::checkLine(plan.line);
        std::vector<std::size_t> const chosen = chosenStations(plan.line, options);
        std::vector<FaultRule> const rules = faultRules(options, plan.line, chosen);
        for (std::size_t const station : chosen) {
            auto& faults = plan.line.stations[station].faults;
            faults.insert(faults.end(), rules.begin(), rules.end());
        }
        plan.happenings = happeningsOf(options, plan.line, chosen);
        return plan;
    });
}

std::vector<std::string> planText(Plan const& plan, PlcOptions const& options) {
    plc::LineDescription const& line = plan.line;
    std::vector<std::string> lines{fmt::format("{}: {} framing, {}", options.project,
                                               line.framing == plc::Framing::kRouted ? "routed" : "bare",
                                               speedText(line))};
    for (plc::StationDescription const& station : line.stations) {
        lines.push_back(stationText(station));
    }
    return lines;
}

} // namespace velk::simulation
