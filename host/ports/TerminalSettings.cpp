#include "host/ports/TerminalSettings.h"

#include "host/ports/LineSettings.h"
#include "host/ports/PortDiagnosis.h"

#include <cerrno>

namespace host {
namespace {

/**
 * The C library reports an invalid argument when a terminal accepted no new setting, so its current settings are read
 * instead.
 */
bool isSet(int descriptor, termios const& wanted) {
    return tcsetattr(descriptor, TCSANOW, &wanted) == 0 || errno == EINVAL;
}

} // namespace

base::Outcome applyTermios(int descriptor, std::string const& path, termios const& wanted, bool pseudoTerminal) {
    termios actual{};
    if (!isSet(descriptor, wanted) || tcgetattr(descriptor, &actual) != 0) {
        return settingFailure(path, errno);
    }
    std::string const refused = refusedSetting(wanted, actual, pseudoTerminal);
    return refused.empty()
               ? base::Outcome{}
               : base::Failure{base::FailureKind::PortSettings,
                               "the serial port " + path + " does not take over " + refused + " that is configured"};
}

} // namespace host
