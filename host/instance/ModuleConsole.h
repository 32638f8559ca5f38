#pragma once

#include <string>

class IProtocol;

namespace host {

/** What the module's console replied to a line. */
struct ConsoleReply {
    enum class Kind {
        Answer,         ///< what was asked for
        Complaint,      ///< the line is not complete or not right; the text says why
        DriverFailed,   ///< the driver has the reason, see driverFailure()
        UnknownCommand, ///< there is no text
    };

    Kind kind = Kind::Answer;
    std::string text; ///< lines
};

/** Whether a line asks the PLC, and so needs the port. */
bool asksPlc(std::string const& line);

/** Runs one line in the module. */
ConsoleReply runConsoleLine(IProtocol& module, std::string const& line);

} // namespace host
