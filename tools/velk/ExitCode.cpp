#include "tools/velk/ExitCode.h"

#include <algorithm>
#include <array>

namespace velk {
namespace {

// The driver's own codes.
constexpr int kPortFault = 0;
constexpr int kConfiguration = -1; // and addresses, buffers, symbols
constexpr int kNotPossible = -3;   // not started, not supported, local files
constexpr int kTimeout = -4;
constexpr int kRefused = -6;
constexpr int kConversion = -9;

/** From the least to the most telling. */
constexpr std::array kRanking{ExitCode::Good,  ExitCode::ItemNotGood, ExitCode::Refused,    ExitCode::Silent,
                              ExitCode::Usage, ExitCode::Port,        ExitCode::Interrupted};

std::ptrdiff_t rank(ExitCode code) {
    return std::find(kRanking.begin(), kRanking.end(), code) - kRanking.begin();
}

} // namespace

ExitCode exitCodeFor(host::Failure const& failure, PortState port) {
    if (port == PortState::Interrupted) {
        return ExitCode::Interrupted;
    }
    if (port == PortState::Dead) {
        return ExitCode::Port;
    }
    switch (failure.code) {
    case kPortFault:
        return ExitCode::Port;
    case kTimeout:
        return ExitCode::Silent;
    case kRefused:
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

} // namespace velk
