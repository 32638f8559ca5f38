#pragma once

#include "host/services/Clock.h"
#include "tools/velk/context/ExitCode.h"
#include "tools/velk/context/LineOptions.h"
#include "tools/velk/context/Observers.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace base {
class Signals;
}

namespace velk {

class Terminal;
struct Settings;

/** What a command has around it. */
struct Context {
    Terminal& terminal;
    base::Signals& interrupt;
    host::Clock& clock;

    LineOptions options{}; ///< as given on the command line
    Observers observers{}; ///< they see every port that the command opens

    /** Set when a trace is wanted: makes the observer of a session, which ends with it. */
    std::function<std::unique_ptr<host::PortObserver>(Settings const&)> makeTracer{};

    bool tracesToError = false; ///< a trace goes to standard error, among what the command shows

    /** Runs another command line in this context, the program's name left out. */
    std::function<ExitCode(std::vector<std::string> const&)> runCommandLine{};
};

} // namespace velk
