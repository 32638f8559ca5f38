#pragma once

#include "driver/config/ParamManager.h"
#include "driver/errors/ErrorSink.h"
#include "driver/link/SerialLink.h"
#include "driver/session/Login.h"
#include "driver/session/SymbolStore.h"
#include "driver/session/SymbolUpload.h"

namespace _VELK {

/**
 * The state of one driver instance, each part with one owner. Must stay where it was created, because its parts refer
 * to each other.
 */
struct Session {
    /** @p driver and @p record as for ErrorSink, @p factory as for SerialLink. May throw std::bad_alloc. */
    Session(void* driver, ErrorSink::Record record, ISerialFactory* factory)
        : errors(driver, record), upload(link, login, errors), symbols(errors),
          link(factory, *params.getCommonParams(), errors) {}

    // The large parts last: access to anything after them needs longer code.
    ErrorSink errors;
    ParamManager params;
    Login login;
    SymbolUpload upload;
    SymbolStore symbols;
    SerialLink link;
};

} // namespace _VELK
