#include "factory/ProtocolFactory.h"

#include "driver/Protocol_VELK.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/text/InterfaceNames.h"

IInterface* ProtocolFactory::ConvertTo(char const* name) {
    return CompareInterface(name, "ProtocolFactory") || CompareInterface(name, "IProtocolFactory") ? this : nullptr;
}

IProtocol* ProtocolFactory::CreateProtocol(char const* name) {
    return CompareInterface(name, "VELK") ? CreateProtocol_VELK() : nullptr;
}

void ProtocolFactory::DeleteProtocol(IProtocol* protocol) {
    if (protocol != nullptr) {
        // Closes the host's port here: a cancelled thread can unwind from here, but not from a destructor.
        ProtUtilsN::contain([&] { protocol->Stop(); });
    }
    delete protocol;
}
