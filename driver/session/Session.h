#pragma once

#include "driver/config/ParamManager.h"
#include "driver/errors/ErrorSink.h"
#include "driver/link/SerialLink.h"
#include "driver/session/Login.h"
#include "driver/session/SymbolStore.h"
#include "driver/session/SymbolUpload.h"

namespace _VELK {

/** What one instance of the driver remembers, each part with one owner. Stays where it was made. */
struct Session {
    /** @p driver and @p record as for ErrorSink, @p factory as for SerialLink. May throw std::bad_alloc. */
    Session(void* driver, ErrorSink::Record record, ISerialFactory* factory)
        : errors(driver, record), upload(link, login, errors), symbols(errors),
          link(factory, *params.getCommonParams(), errors) {}

    // The large parts last: what lies behind them is reached by longer code.
    ErrorSink errors;
    ParamManager params;
    Login login;
    SymbolUpload upload;
    SymbolStore symbols;
    SerialLink link;
};

} // namespace _VELK
