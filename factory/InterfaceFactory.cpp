#include "factory/InterfaceFactory.h"

#include "protlib/text/InterfaceNames.h"

IInterface* InterfaceFactory::CreateInterface(char const* name) {
    if (CompareInterface(name, "IProtocolFactory") || CompareInterface(name, "ProtocolFactory")) {
        return &protocolFactory_;
    }
    if (CompareInterface(name, "IProtModule") || CompareInterface(name, "ProtModule")) {
        return &module_;
    }
    return nullptr;
}

void InterfaceFactory::ReleaseInterface(IInterface* /*object*/) {}
