#include "tools/velk/context/ExitCode.h"

#include <algorithm>
#include <array>

namespace velk {
namespace {

using base::FailureKind;

/** From the least to the most important. */
constexpr std::array kRanking{ExitCode::Good,  ExitCode::ItemNotGood, ExitCode::Refused,    ExitCode::Silent,
                              ExitCode::Usage, ExitCode::Port,        ExitCode::Interrupted};

std::ptrdiff_t rank(ExitCode code) {
    return std::find(kRanking.begin(), kRanking.end(), code) - kRanking.begin();
}

} // namespace

ExitCode exitCodeFor(FailureKind kind) {
    switch (kind) {
    case FailureKind::Unreachable:
    case FailureKind::Missing:
    case FailureKind::BadQuality:
    case FailureKind::Conversion:
        return ExitCode::ItemNotGood;
    case FailureKind::PortMissing:
    case FailureKind::NotAPort:
    case FailureKind::PortDenied:
    case FailureKind::PortBusy:
    case FailureKind::PortNoHardware:
    case FailureKind::PortSettings:
    case FailureKind::PortFault:
    case FailureKind::PortDied:
        return ExitCode::Port;
    case FailureKind::Timeout:
        return ExitCode::Silent;
    case FailureKind::Coupler:
    case FailureKind::Garbled:
    case FailureKind::WrongReply:
    case FailureKind::WrongSize:
    case FailureKind::WrongLength:
    case FailureKind::LoginRefused:
    case FailureKind::ReadRefused:
    case FailureKind::WriteRefused:
    case FailureKind::OtherProject:
    case FailureKind::NoSymbolFile:
    case FailureKind::SymbolFileBroken:
        return ExitCode::Refused;
    case FailureKind::Interrupted:
        return ExitCode::Interrupted;
    case FailureKind::Internal:
    case FailureKind::Usage:
    case FailureKind::Configuration:
    case FailureKind::Request:
    case FailureKind::Value:
    case FailureKind::TooLarge:
    case FailureKind::NotPossible:
    case FailureKind::LeftOut:
    case FailureKind::Module:
    case FailureKind::Memory:
    case FailureKind::File:
    case FailureKind::FileExists:
    case FailureKind::Storage:
    case FailureKind::NoStoredSymbols:
    case FailureKind::StoredSymbolsBroken:
        break;
    }
    return ExitCode::Usage;
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
