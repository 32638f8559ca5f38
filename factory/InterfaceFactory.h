#pragma once

#include "factory/ProtModule.h"
#include "factory/ProtocolFactory.h"
#include "interfaces/IInterfaceFactory.h"

/** Hands out the module's two objects, which are parts of it. The interface has no destructor among its slots. */
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class InterfaceFactory final : public IInterfaceFactory {
public:
    InterfaceFactory() = default;
    InterfaceFactory(InterfaceFactory const&) = delete;
    InterfaceFactory& operator=(InterfaceFactory const&) = delete;
    InterfaceFactory(InterfaceFactory&&) = delete;
    InterfaceFactory& operator=(InterfaceFactory&&) = delete;
    ~InterfaceFactory() = default;

    /** The same object on every call for one name; null for an unknown one. */
    IInterface* CreateInterface(char const* name) override;

    void ReleaseInterface(IInterface* object) override; ///< does nothing

private:
    ProtocolFactory protocolFactory_;
    ProtModule module_;
};
