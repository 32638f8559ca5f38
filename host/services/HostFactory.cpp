#include "host/services/HostFactory.h"

#include "host/services/InterfaceNames.h"
#include "host/services/NoThrow.h"

namespace host {

IInterface* IdleService::ConvertTo(char const* name) {
    return isOneOf(name, {interfaceName_}) ? this : nullptr;
}

HostFactory::HostFactory(IMultiTask2& scheduler, ISerialFactory& serial, IPermanentStorage* storage) {
    offer("IMultiTask2", scheduler);
    offer("ISerialFactory", serial);
    offer("ISocketFactory", socketFactory_);
    offer("ICDSBuffer", cdsBuffer_);
    offer("IDiag", diag_);
    if (storage != nullptr) {
        offer("IPermanentStorage", *storage);
    }
}

void HostFactory::offer(std::string const& name, IInterface& service) {
    offered_[name] = &service;
}

void HostFactory::withdraw(std::string const& name) {
    offered_.erase(name);
}

IInterface* HostFactory::CreateInterface(char const* name) {
    if (name == nullptr) {
        return nullptr;
    }
    return noThrow(
        [&]() -> IInterface* {
            auto const found = offered_.find(name);
            if (found == offered_.end()) {
                return nullptr;
            }
            ++held_[found->second];
            return found->second;
        },
        nullptr);
}

void HostFactory::ReleaseInterface(IInterface* object) {
    auto const found = held_.find(object);
    if (found != held_.end() && --found->second == 0) {
        held_.erase(found);
    }
}

int HostFactory::held() const {
    int total = 0;
    for (auto const& [service, count] : held_) {
        total += count;
    }
    return total;
}

} // namespace host
