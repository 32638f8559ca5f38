#include "driver/config/CommonParams.h"

#include "protlib/config/ConfigParser.h"

namespace _VELK {

namespace {

template <typename Value>
bool readLine(CfgParser& parser, char const* name, Value& value, bool optional, std::string& error) {
    return readParam(parser, name, CfgParser::kAnyNode, value, CfgParser::kGeneralOnly, optional, error);
}

} // namespace

bool CommonParams::parse(CfgParser& parser, std::string& error) {
    if (!readLine(parser, "uart", uart, false, error) || !readLine(parser, "parity", parity, false, error) ||
        !readLine(parser, "baudrate", baudrate, false, error) ||
        !readLine(parser, "stopbits", stopbits, false, error)) {
        return false;
    }
    mode.clear();
    return readLine(parser, "mode", mode, true, error) && readLine(parser, "protType", protType, false, error);
}

} // namespace _VELK
