#include "tools/velk/line/Advice.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velk {
namespace {

/** The driver's code of a refused login or logout, which leaves no text. */
constexpr int kNothingRecorded = 1;

struct TextAdvice {
    std::string_view part; ///< of the driver's text
    std::string_view advice;
};

constexpr std::string_view kOtherSettings =
    "Something answers: likely the line speed, the parity, the framing or the byte order is another one. "
    "`velk check` walks the line step by step.";

/** What the driver's texts of refusals and wrong answers stand for. */
constexpr std::array kAdvice{
    TextAdvice{"Ack message", kOtherSettings},
    TextAdvice{"Protocol ID received", kOtherSettings},
    TextAdvice{"Too short message", kOtherSettings},
    TextAdvice{"checksum", kOtherSettings},
    TextAdvice{"Project ID mismatch", "The PLC has got another program a moment ago: ask again."},
    TextAdvice{"Command not acknowledged", "The line works: likely the PLC has restarted, or is stopped. Ask again."},
    TextAdvice{"in WriteData operation",
               "The line works: likely the PLC has restarted, is stopped, or does not let this be written."},
    TextAdvice{"Symbol file not present",
               "The line works: likely the project was loaded into the PLC without its symbol configuration."},
    TextAdvice{"Rx Buffer dimension exceeded",
               "The line works: the PLC's response is shorter than what was asked for, or "
               "much longer."},
    TextAdvice{"Wrong number of bytes", "The line works: the variable has another size than the type that was given."},
};

std::string silenceAdvice(bool somethingWasReceived) {
    return somethingWasReceived
               ? "Bytes came, then nothing more: likely the line is disturbed, the time-out is too short, or the PLC "
                 "was stopped. `velk check` walks the line step by step."
               : "Nothing came at all: likely the cable (crossed, unplugged, the wrong port), a PLC that is off, or "
                 "another line speed, parity, framing or byte order. `velk check --scan` tries the usual ones.";
}

std::string refusalAdvice(base::Failure const& failure) {
    if (failure.code == kNothingRecorded) {
        return "The line works: likely another panel or the programming tool is logged in, or the PLC is starting or "
               "stopped.";
    }
    auto const* const found = std::find_if(kAdvice.begin(), kAdvice.end(), [&](TextAdvice const& each) {
        return failure.text.find(each.part) != std::string::npos;
    });
    return found == kAdvice.end() ? "`velk check` walks the line step by step." : std::string(found->advice);
}

} // namespace

std::string advice(ExitCode code, base::Failure const& failure, bool somethingWasReceived) {
    switch (code) {
    case ExitCode::Silent:
        return silenceAdvice(somethingWasReceived);
    case ExitCode::Refused:
        return refusalAdvice(failure);
    default:
        return "";
    }
}

} // namespace velk
