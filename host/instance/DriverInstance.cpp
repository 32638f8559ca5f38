#include "host/instance/DriverInstance.h"

#include "host/instance/DriverFailure.h"
#include "interfaces/IInterfaceFactory.h"
#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"

#include <exception>
#include <utility>

namespace host {

namespace {

/** The module's object called @p name. Interfaces share the address of their object, so the cast is the contract. */
template <typename Interface>
Interface* find(IInterfaceFactory& module, char const* name) {
    return static_cast<Interface*>(module.CreateInterface(name));
}

} // namespace

void DriverInstance::ModuleCloser::operator()(IProtModule* module) const {
    module->Close();
}

void DriverInstance::ProtocolDeleter::operator()(IProtocol* protocol) const {
    factory->DeleteProtocol(protocol);
}

base::Result<DriverInstance::OpenModule> DriverInstance::openModule(IInterfaceFactory& module,
                                                                    IInterfaceFactory& hostServices) {
    auto* const found = find<IProtModule>(module, "IProtModule");
    if (found == nullptr) {
        return base::Failure{base::FailureKind::Module, "the driver module has no IProtModule"};
    }
    if (!found->Init(&hostServices)) {
        char const* const reason = found->GetLastError();
        return base::Failure{base::FailureKind::Module,
                             "the driver module cannot be initialised: " +
                                 std::string(reason != nullptr ? reason : "no reason given")};
    }
    return OpenModule(found);
}

base::Result<DriverInstance::OwnedProtocol> DriverInstance::createProtocol(IInterfaceFactory& module,
                                                                           char const* driver) {
    auto* const factory = find<IProtocolFactory>(module, "IProtocolFactory");
    if (factory == nullptr) {
        return base::Failure{base::FailureKind::Module, "the driver module has no IProtocolFactory"};
    }
    try { // the one operation of a module that may throw
        OwnedProtocol protocol(factory->CreateProtocol(driver), ProtocolDeleter{factory});
        if (protocol) {
            return protocol;
        }
    } catch (std::exception const& error) {
        return base::Failure{base::FailureKind::Module,
                             "the driver '" + std::string(driver) + "' cannot be created: " + error.what()};
    }
    return base::Failure{base::FailureKind::Module, "the driver module has no driver '" + std::string(driver) + "'"};
}

base::Result<DriverInstance> DriverInstance::create(IInterfaceFactory& module, IInterfaceFactory& hostServices,
                                                    char const* driver) {
    auto opened = openModule(module, hostServices);
    if (!opened.ok()) {
        return opened.failure();
    }
    auto created = createProtocol(module, driver);
    if (!created.ok()) {
        return created.failure();
    }
    auto* const latest = static_cast<IProtocol3*>(created.value()->ConvertTo("IProtocol3"));
    if (latest == nullptr) {
        return base::Failure{base::FailureKind::Module,
                             "the driver '" + std::string(driver) + "' is too old: it has no IProtocol3"};
    }
    return DriverInstance(std::move(opened.value()), std::move(created.value()), latest);
}

DriverInstance::DriverInstance(OpenModule module, OwnedProtocol owned, IProtocol3* protocol)
    : module_(std::move(module)), owned_(std::move(owned)), protocol_(protocol) {}

DriverInstance::~DriverInstance() {
    if (owned_) {
        owned_->Stop();
    }
}

DriverInstance::DriverInstance(DriverInstance&&) noexcept = default;

void DriverInstance::setIdent(std::string const& ident) {
    protocol_->SetIdent(ident.c_str());
}

base::Outcome DriverInstance::configure(std::string const& configuration) {
    return protocol_->Config(configuration.c_str()) ? base::Outcome() : base::Outcome(driverFailure(*protocol_));
}

base::Outcome DriverInstance::start() {
    return protocol_->Start() ? base::Outcome() : base::Outcome(driverFailure(*protocol_));
}

base::Outcome DriverInstance::stop() {
    return protocol_->Stop() ? base::Outcome() : base::Outcome(driverFailure(*protocol_));
}

base::Result<ITag*> DriverInstance::createTag(std::string const& address) {
    ITag* const tag = protocol_->CreateTag(address.c_str());
    if (tag == nullptr) {
        return driverFailure(*protocol_);
    }
    return tag;
}

void DriverInstance::freeTag(ITag* tag) {
    protocol_->FreeTag(tag);
}

} // namespace host
