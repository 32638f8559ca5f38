#include "tools/velk/line/Advice.h"

namespace velk {
namespace {

using base::FailureKind;

std::string silenceAdvice(bool somethingWasReceived) {
    return somethingWasReceived
               ? "Bytes were received, then nothing more: likely there is noise on the line, the time-out is too "
                 "short, or the PLC was stopped. `velk check` walks the line step by step."
               : "Nothing was received: likely the cable (crossed, unplugged, the wrong port), a PLC that is off, or "
                 "another line speed, parity, framing or byte order. `velk check --scan` tries the usual ones.";
}

} // namespace

std::string advice(FailureKind kind, bool somethingWasReceived) {
    switch (kind) {
    case FailureKind::Timeout:
        return silenceAdvice(somethingWasReceived);
    case FailureKind::Coupler:
        return "Likely the coupler number, the channel or the address of a level is wrong, or the device behind "
               "the coupler is off.";
    case FailureKind::LoginRefused:
        return "The line works: likely another panel or the programming tool is logged in, or the PLC is starting or "
               "stopped.";
    case FailureKind::Garbled:
        return "Something answers: likely the line speed, the parity, the framing or the byte order is wrong. "
               "`velk check` walks the line step by step.";
    case FailureKind::OtherProject:
        return "The PLC's program was replaced a moment ago: try again.";
    case FailureKind::ReadRefused:
        return "The line works: likely the PLC has restarted, or is stopped. Try again.";
    case FailureKind::WriteRefused:
        return "The line works: likely the PLC has restarted, is stopped, or does not allow this write.";
    case FailureKind::NoSymbolFile:
        return "The line works: likely the project was loaded into the PLC without its symbol configuration.";
    case FailureKind::WrongLength:
        return "The line works: the PLC's response is shorter than what was asked for, or much longer.";
    case FailureKind::WrongSize:
        return "The line works: the variable has another size than the type that was given.";
    case FailureKind::WrongReply:
    case FailureKind::SymbolFileBroken:
        return "`velk check` walks the line step by step.";
    default:
        return "";
    }
}

} // namespace velk
