#include "tools/velk/Advice.h"

namespace velk {

std::string advice(ExitCode code, bool somethingWasReceived) {
    switch (code) {
    case ExitCode::Silent:
        return somethingWasReceived
                   ? "Bytes came, then nothing more: likely the line is disturbed, the time-out is too short, or the "
                     "PLC was stopped. `velk check` walks the line step by step."
                   : "Nothing came at all: likely the cable (crossed, unplugged, the wrong port), a PLC that is off, "
                     "or another line speed, parity, framing or byte order. `velk check --scan` tries the usual ones.";
    case ExitCode::Refused:
        return "Something answers: likely the line speed, the parity, the framing or the byte order is another one. "
               "`velk check` walks the line step by step.";
    default:
        return "";
    }
}

std::string loginAdvice() {
    return "The line works: likely another panel or the programming tool is logged in, or the PLC is starting or "
           "stopped.";
}

} // namespace velk
