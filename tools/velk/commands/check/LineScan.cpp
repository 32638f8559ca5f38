#include "tools/velk/commands/check/LineScan.h"

#include "tools/velk/context/Choices.h"
#include "tools/velk/project/ProjectText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace velk {
namespace {

constexpr std::array kSpeeds{115'200, 38'400, 19'200, 57'600, 9'600};
constexpr std::array kParities{"none", "even", "odd"};
constexpr std::array kFramings{"bare", "routed"};
constexpr std::array kByteOrders{"big", "little"};

/** Both framings and byte orders at one speed and parity. */
std::vector<LineCandidate> candidatesAt(int baud, std::string const& parity) {
    std::vector<LineCandidate> candidates;
    for (char const* const framing : kFramings) {
        for (char const* const order : kByteOrders) {
            candidates.push_back({baud, parity, framing, order});
        }
    }
    return candidates;
}

} // namespace

LineCandidate candidateOf(Settings const& settings) {
    return {settings.config.baudrate, settings.config.parity, framingWord(settings.config.protType),
            byteOrderWord(settings.nodeSettings(settings.node).model)};
}

std::vector<LineCandidate> scanCandidates(LineCandidate const& present) {
    std::vector<LineCandidate> all{present};
    auto const add = [&](int baud, std::string const& parity) {
        for (LineCandidate const& candidate : candidatesAt(baud, parity)) {
            if (std::find(all.begin(), all.end(), candidate) == all.end()) {
                all.push_back(candidate);
            }
        }
    };
    add(present.baud, present.parity);
    for (int const baud : kSpeeds) {
        for (char const* const parity : kParities) {
            add(baud, parity);
        }
    }
    return all;
}

Settings settingsFor(Settings settings, LineCandidate const& candidate, int timeoutMs) {
    settings.config.baudrate = candidate.baud;
    settings.config.parity = candidate.parity;
    settings.config.protType = protocolType(candidate.framing);
    settings.config.nodes.model = modelName(candidate.byteOrder);
    settings.config.nodes.timeoutMs = timeoutMs;
    settings.config.nodes.repeat = 1;
    for (host::NodeOverrides& own : settings.config.nodeOverrides) {
        own.model.reset();
        own.timeoutMs.reset();
        own.repeat.reset();
    }
    return settings;
}

std::string candidateText(LineCandidate const& candidate) {
    return fmt::format("{} bit/s, parity {}, {} framing, {}-endian", candidate.baud, candidate.parity,
                       candidate.framing, candidate.byteOrder);
}

std::string projectLines(Settings const& settings, LineCandidate const& candidate) {
    return fmt::format("[line]\n"
                       "port = {}\n"
                       "baud = {}\n"
                       "parity = \"{}\"\n"
                       "framing = \"{}\"\n"
                       "\n"
                       "[[station]]\n"
                       "node = {}\n"
                       "byte_order = \"{}\"\n",
                       tomlText(settings.config.uart), candidate.baud, candidate.parity, candidate.framing,
                       settings.node, candidate.byteOrder);
}

} // namespace velk
