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

/** What a command works with. */
struct Context {
    Terminal& terminal;
    base::Signals& interrupt;
    host::Clock& clock;

    LineOptions options{}; ///< as given on the command line
    Observers observers{}; ///< they see every port that the command opens

    /** Set when a trace is requested: makes the observer of a session, which lives as long as the session. */
    std::function<std::unique_ptr<host::PortObserver>(Settings const&)> makeTracer{};

    bool tracesToError = false; ///< a trace goes to standard error, between the command's own lines

    /** Runs another command line in this context, given without the program's name. */
    std::function<ExitCode(std::vector<std::string> const&)> runCommandLine{};
};

} // namespace velk
