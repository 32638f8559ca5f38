#include "tools/velk/context/ExitCode.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velk {
namespace {

// The driver's own codes and texts.
constexpr int kNoText = 1; // only a refused login or logout leaves nothing behind
constexpr int kPortFault = 0;
constexpr int kConfiguration = -1; // and addresses, buffers, symbols
constexpr int kNotPossible = -3;   // not started, not supported, local files
constexpr int kTimeout = -4;
constexpr int kRefused = -6;
constexpr int kConversion = -9;
constexpr std::string_view kBadQuality = "One of the values has bad quality";
constexpr std::string_view kWrongLength = "Rx Buffer dimension exceeded"; // of a response; its code is -1 all the same
constexpr std::string_view kMissing = " not present in Symbols files";

/** From the least to the most telling. */
constexpr std::array kRanking{ExitCode::Good,  ExitCode::ItemNotGood, ExitCode::Refused,    ExitCode::Silent,
                              ExitCode::Usage, ExitCode::Port,        ExitCode::Interrupted};

std::ptrdiff_t rank(ExitCode code) {
    return std::find(kRanking.begin(), kRanking.end(), code) - kRanking.begin();
}

} // namespace

ExitCode exitCodeFor(base::Failure const& failure, PortState port) {
    if (port == PortState::Interrupted) {
        return ExitCode::Interrupted;
    }
    if (port == PortState::Dead) {
        return ExitCode::Port;
    }
    if (failure.text == kBadQuality || failure.text.ends_with(kMissing)) {
        return ExitCode::ItemNotGood;
    }
    if (failure.text == kWrongLength) {
        return ExitCode::Refused;
    }
    switch (failure.code) {
    case kPortFault:
        return ExitCode::Port;
    case kTimeout:
        return ExitCode::Silent;
    case kRefused:
    case kNoText:
        return ExitCode::Refused;
    case kConversion:
        return ExitCode::ItemNotGood;
    case kConfiguration:
    case kNotPossible:
    default:
        return ExitCode::Usage;
    }
}

ExitCode worse(ExitCode one, ExitCode other) {
    return rank(one) >= rank(other) ? one : other;
}

ExitCode exitCodeOfItems(std::span<ExitCode const> items) {
    ExitCode worst = ExitCode::Good;
    bool someGood = false;
    for (ExitCode const each : items) {
        worst = worse(worst, each);
        someGood = someGood || each == ExitCode::Good;
    }
    bool const lineWorks = someGood && worst != ExitCode::Good;
    bool const lineEnded = worst == ExitCode::Interrupted || worst == ExitCode::Port;
    return lineWorks && !lineEnded ? ExitCode::ItemNotGood : worst;
}

} // namespace velk
