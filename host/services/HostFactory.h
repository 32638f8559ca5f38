#pragma once

#include "interfaces/HostServices.h"
#include "interfaces/IInterfaceFactory.h"

#include <map>
#include <string>

namespace host {

/** A service that exists and does nothing: the module only acquires and releases it. */
class IdleService final : public IInterface {
public:
    /** @p interfaceName has to be a literal. */
    explicit IdleService(char const* interfaceName) : interfaceName_(interfaceName) {}

    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override { return interfaceName_; }
    [[nodiscard]] int GetImpVersion() const override { return 100; }

private:
    char const* interfaceName_;
};

/**
 * Hands the host's services to the module, by name.
 *
 * Must outlive the module's Init() and Close(). For one thread at a time.
 */
// Interface factories have no virtual destructor: none is deleted through its interface.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor)
class HostFactory final : public IInterfaceFactory {
public:
    /**
     * Offers "IMultiTask2", "ISerialFactory", "IPermanentStorage" (unless it is null) and, idle, "ISocketFactory",
     * "ICDSBuffer" and "IDiag". All arguments must outlive the factory.
     */
    HostFactory(IMultiTask2& scheduler, ISerialFactory& serial, IPermanentStorage* storage);
    HostFactory(HostFactory const&) = delete;
    HostFactory& operator=(HostFactory const&) = delete;

    /** Offers @p service, which must outlive the factory, under @p name from now on. */
    void offer(std::string const& name, IInterface& service);

    /** No longer offers the service @p name. One that is held already stays valid. */
    void withdraw(std::string const& name);

    IInterface* CreateInterface(char const* name) override;

    /** Ignores anything that is not a held service. */
    void ReleaseInterface(IInterface* object) override;

    /** How many services the module holds now. */
    [[nodiscard]] int held() const;

private:
    IdleService socketFactory_{"ISocketFactory"};
    IdleService cdsBuffer_{"ICDSBuffer"};
    IdleService diag_{"IDiag"};
    std::map<std::string, IInterface*> offered_;
    std::map<IInterface*, int> held_; ///< how often each is held
};

} // namespace host
