#pragma once

#include "base/FailureKind.h"
#include "tools/velk/commands/check/CheckSteps.h"
#include "tools/velk/commands/check/LineProgress.h"

#include <array>
#include <string>
#include <vector>

namespace velk {

/** The settings of the line that can cause a failure. */
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
    PortNoHardware, ///< the name exists, but no hardware
    NotAPort,       ///< the file of that name is something else
    PortRefused,    ///< this user may not open it
    PortBusy,       ///< another program uses it
    PortFault,      ///< it cannot be opened or failed, for another reason
    Silence,        ///< nothing was received
    Echo,           ///< the sent bytes came back
    Garbage,        ///< bytes that are not a frame were received
    OtherFraming,   ///< routed frames were received where bare ones are expected, or the reverse
    OtherByteOrder, ///< frames were received in the other byte order
    Routing,        ///< a coupler could not pass the frame on
    Damaged,        ///< received frames have errors
    FellSilent,     ///< the PLC answered and then stopped
    Refused,        ///< the PLC answered with an unexpected status word
    NoSymbolFile,   ///< the PLC does not provide its symbol file
    BadSymbolFile,  ///< it provides one that cannot be used
    BadQuality,     ///< the PLC says that the value is bad
    BadValue,       ///< the requested variable is not good
    Unclear,        ///< none of these
};

/** The step that failed: the first one that was not reached. */
CheckStep failedStep(LineProgress const& progress, bool portOpen);

/** The cause for a failure of the port. */
Symptom portSymptom(base::FailureKind kind);

/** From the kind of the failure, and from the frames. */
Symptom symptomOf(CheckStep failed, LastWords const& lastWords, base::FailureKind kind,
                  CheckedSettings const& settings);

/** The three most likely causes, the most likely first, each a sentence without a full stop. */
std::array<std::string, 3> likelyCauses(CheckStep failed, Symptom symptom, CheckedSettings const& settings);

/** The last sent frame and the replies, as lines with hexadecimal bytes. */
std::vector<std::string> lastWordsText(LastWords const& lastWords, CheckedSettings const& settings);

} // namespace velk
