#include "tools/velk/commands/check/CheckSteps.h"

namespace velk {

std::string_view stepText(CheckStep step) {
    switch (step) {
    case CheckStep::Port:
        return "the port opens";
    case CheckStep::Bytes:
        return "bytes come back";
    case CheckStep::LinkCheck:
        return "the link check is answered";
    case CheckStep::Login:
        return "the login is accepted";
    case CheckStep::SymbolFile:
        return "the symbol file is there";
    case CheckStep::Read:
        break;
    }
    return "a variable is read";
}

} // namespace velk
