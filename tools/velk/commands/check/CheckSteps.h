#pragma once

#include <array>
#include <string_view>

namespace velk {

/** The steps from the port to a value, in their order. */
enum class CheckStep {
    Port,       ///< the port opens
    Bytes,      ///< bytes come back at all
    LinkCheck,  ///< the PLC answers the link check
    Login,      ///< the PLC accepts the login
    SymbolFile, ///< the symbol file exists and is valid
    Read,       ///< a variable is read
};

inline constexpr std::array kCheckSteps{CheckStep::Port,  CheckStep::Bytes,      CheckStep::LinkCheck,
                                        CheckStep::Login, CheckStep::SymbolFile, CheckStep::Read};

/** "the port opens", "bytes come back" and so on. */
std::string_view stepText(CheckStep step);

} // namespace velk
