#pragma once

#include "base/Result.h"

#include <memory>
#include <string>

class IInterfaceFactory;
class IProtModule;
class IProtocol;
class IProtocol3;
class IProtocolFactory;
class ITag;

namespace host {

/**
 * One driver instance, from the module's Init() to its Close().
 *
 * The module counts its Init() calls, so there may be several instances; all of them use the host services that the
 * first one was created with. Destroying it stops the driver, deletes it with all its tags and closes the module.
 */
class DriverInstance {
public:
    /**
     * @param module the module's factory (LoadedModule::factory())
     * @param hostServices the host's factory
     * @param driver the driver's name
     *
     * Both factories must outlive the instance.
     */
    static base::Result<DriverInstance> create(IInterfaceFactory& module, IInterfaceFactory& hostServices,
                                               char const* driver = "VELK");

    ~DriverInstance();
    DriverInstance(DriverInstance&&) noexcept;
    DriverInstance& operator=(DriverInstance&&) = delete;
    DriverInstance(DriverInstance const&) = delete;
    DriverInstance& operator=(DriverInstance const&) = delete;

    /** Names the instance in permanent storage. */
    void setIdent(std::string const& ident);

    base::Outcome configure(std::string const& configuration);

    /** Opens the serial port. When that fails, the serial factory has the reason. */
    base::Outcome start();

    /** Closes the serial port; start() opens it again, after a fault for example. */
    base::Outcome stop();

    /** A tag that the instance owns. */
    base::Result<ITag*> createTag(std::string const& address);

    /** Destroys a tag of this instance. */
    void freeTag(ITag* tag);

    [[nodiscard]] IProtocol3& protocol() const { return *protocol_; }

private:
    /** Undoes an Init(). */
    struct ModuleCloser {
        void operator()(IProtModule* module) const;
    };
    struct ProtocolDeleter {
        IProtocolFactory* factory;
        void operator()(IProtocol* protocol) const;
    };
    using OpenModule = std::unique_ptr<IProtModule, ModuleCloser>;
    using OwnedProtocol = std::unique_ptr<IProtocol, ProtocolDeleter>;

    static base::Result<OpenModule> openModule(IInterfaceFactory& module, IInterfaceFactory& hostServices);
    static base::Result<OwnedProtocol> createProtocol(IInterfaceFactory& module, char const* driver);

    DriverInstance(OpenModule module, OwnedProtocol owned, IProtocol3* protocol);

    // The order matters: the driver is deleted before the module is closed.
    OpenModule module_;
    OwnedProtocol owned_;
    IProtocol3* protocol_; ///< owned_ as its latest interface
};

} // namespace host
