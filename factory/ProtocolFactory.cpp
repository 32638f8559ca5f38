#include "factory/ProtocolFactory.h"

#include "driver/Protocol_VELK.h"
#include "protlib/InterfaceNames.h"

#include <memory>

IInterface* ProtocolFactory::ConvertTo(char const* name) {
    return CompareInterface(name, "ProtocolFactory") || CompareInterface(name, "IProtocolFactory") ? this : nullptr;
}

IProtocol* ProtocolFactory::CreateProtocol(char const* name) {
    return CompareInterface(name, "VELK") ? CreateProtocol_VELK() : nullptr;
}

void ProtocolFactory::DeleteProtocol(IProtocol* protocol) {
    std::unique_ptr<IProtocol>(protocol).reset();
}
