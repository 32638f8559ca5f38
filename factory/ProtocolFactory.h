#pragma once

#include "interfaces/IProtocolFactory.h"

/** Creates driver instances. Has no state. */
class ProtocolFactory final : public IProtocolFactory {
public:
    /** This object for "ProtocolFactory" and "IProtocolFactory", else null. */
    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override { return "ProtFactoryInDLL"; }
    [[nodiscard]] int GetImpVersion() const override { return 100; }

    /** A driver instance for "VELK", else null. Throws what its construction throws. */
    IProtocol* CreateProtocol(char const* name) override;

    void DeleteProtocol(IProtocol* protocol) override;
};
