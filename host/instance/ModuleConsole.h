#pragma once

#include <string>

class IProtocol;

namespace host {

/** What the module's console replied to a line. */
struct ConsoleReply {
    enum class Kind {
        Answer,         ///< the requested output
        Complaint,      ///< the line is incomplete or wrong; the text says why
        DriverFailed,   ///< see driverFailure() for the reason
        UnknownCommand, ///< there is no text
    };

    Kind kind = Kind::Answer;
    std::string text; ///< lines
};

/** Whether a line uses the PLC and therefore needs the port. */
bool asksPlc(std::string const& line);

/** Runs one line of the module's console. */
ConsoleReply runConsoleLine(IProtocol& module, std::string const& line);

} // namespace host
