#pragma once

#include "driver/Protocol_VELK.h"
#include "driver/tag/Tag_VELK.h"
#include "tests/support/DriverTest.h"

#include <cstdint>

namespace velktest {

/** A driver on a scripted port, with access to its state. */
class VelkTest : public DriverTest {
protected:
    Protocol_VELK& Velk() { return *static_cast<Protocol_VELK*>(driver); }
    _VELK::SymbolStore& Symbols() { return Velk().session().symbols; }
    _VELK::Login const& LoginState() { return Velk().session().login; }
    bool HasFault() { return Velk().session().errors.hasCommunicationFault(); }
    bool IsPortOpen() { return Velk().session().link.isOpen(); }
};

} // namespace velktest
