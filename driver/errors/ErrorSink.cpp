#include "driver/errors/ErrorSink.h"

#include "interfaces/ErrorCodes.h"
#include "protlib/safety/NoThrow.h"

#include <string>

namespace _VELK {

void ErrorSink::report(int code, char const* text) const {
    record_(driver_, code, text);
}

void ErrorSink::reportNaming(char const* before, char const* name, char const* after) const {
    std::string text;
    bool const named = ProtUtilsN::noThrow([&] { text.append(before).append(name).append(after); });
    report(kErrorRequest, named ? text.c_str() : after);
}

} // namespace _VELK
