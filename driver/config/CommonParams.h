#pragma once

#include <string>

class CfgParser;

namespace _VELK {

/**
 * Parameters of the serial line. The members are named after their keys, none of which is allowed for a single node.
 */
struct CommonParams {
    std::string uart;     ///< name of the serial port, for example "com1"
    std::string parity;   ///< "none", "even", "odd" or "mark"; not checked here
    int baudrate = 0;     ///< bit/s
    int stopbits = 0;     ///< 1 or 2; not checked here
    std::string mode;     ///< "RS-485" exactly, anything else means RS-232
    std::string protType; ///< framing: "Serial_RS232" or "ABB_RS232_AC"; checked by every exchange

    /** Stops at the first failure with the whole message in @p error; the values read until then are kept. */
    bool parse(CfgParser& parser, std::string& error);
};

} // namespace _VELK
