#pragma once

#include "base/FailureKind.h"
#include "tools/velk/commands/check/CheckSteps.h"
#include "tools/velk/commands/check/LineProgress.h"

#include <array>
#include <string>
#include <vector>

namespace velk {

/** What the line is set to, as far as it can be the cause of a failure. */
struct CheckedSettings {
    int baud = 0;
    std::string parity;
    bool routed = false;
    bool bigEndian = false;
    int blockSize = 0;
    int timeoutMs = 0;
    bool couplers = false; ///< on the way to the station
};

/** Why a check failed. */
enum class Symptom {
    PortMissing,    ///< there is no such port
    PortNoHardware, ///< there is a name for it, and nothing behind
    NotAPort,       ///< what has that name is something else
    PortRefused,    ///< it may not be opened
    PortBusy,       ///< somebody else holds it
    PortFault,      ///< it cannot be opened or died, for another reason
    Silence,        ///< nothing came at all
    Echo,           ///< what was sent came back
    Garbage,        ///< bytes came that are no frame
    OtherFraming,   ///< frames came, routed where they have to be bare or the other way round
    OtherByteOrder, ///< frames came in the other byte order
    Routing,        ///< a coupler could not pass the frame on
    Damaged,        ///< frames came, and something in them is wrong
    FellSilent,     ///< the PLC answered and then did not any more
    Refused,        ///< the PLC answered with another status word than wanted
    NoSymbolFile,   ///< the PLC does not give its symbol file
    BadSymbolFile,  ///< it gives one that cannot be used
    BadQuality,     ///< the PLC says that the value is bad
    BadValue,       ///< the variable was asked for and is not good
    Unclear,        ///< none of these
};

/** The step that failed: the first one that was not reached. */
CheckStep failedStep(LineProgress const& progress, bool portOpen);

/** What a failure of the port comes to. */
Symptom portSymptom(base::FailureKind kind);

/** What the kind of the failure says, and the frames. */
Symptom symptomOf(CheckStep failed, LastWords const& lastWords, base::FailureKind kind,
                  CheckedSettings const& settings);

/** The three likeliest causes, the likeliest first, each a sentence without a full stop. */
std::array<std::string, 3> likelyCauses(CheckStep failed, Symptom symptom, CheckedSettings const& settings);

/** What was sent last and what came, as lines with hexadecimal bytes. */
std::vector<std::string> lastWordsText(LastWords const& lastWords, CheckedSettings const& settings);

} // namespace velk
