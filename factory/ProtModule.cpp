#include "factory/ProtModule.h"

#include "interfaces/IInterfaceFactory.h"
#include "protlib/HostServiceVariables.h"
#include "protlib/InterfaceNames.h"

#include <array>
#include <cstddef>

namespace {

/** A service of the host, and the variable that keeps it. */
struct Service {
    IInterface** variable;
    char const* name;
};

/** A service that must be there, and what is said when it is not. */
struct RequiredService : Service {
    char const* missing;
};

// In the order in which they are acquired. The last text deliberately names the variable, not the interface.
constexpr std::array<RequiredService, 4> kRequired{{
    {{&piMultiTask, "IMultiTask2"}, "IMultiTask2 not created"},
    {{&piSerialFactory, "ISerialFactory"}, "ISerialFactory not created"},
    {{&piSocketFactory, "ISocketFactory"}, "ISocketFactory not created"},
    {{&piCDSBuffer, "ICDSBuffer"}, "piCDSBuffer not created"},
}};

constexpr std::array<Service, 5> kOptional{{
    {&piDiag, "IDiag"},
    {&piPermanentStorage, "IPermanentStorage"},
    {&piDriverInterface, "IDriverInterface"},
    {&piSmux, "ISmux"},
    {&piFastTimer, "IFastTimer"},
}};

// In the order in which they are given back.
constexpr std::array<IInterface**, 9> kReleaseOrder{
    &piFastTimer, &piSmux,          &piDriverInterface, &piDiag,      &piPermanentStorage,
    &piMultiTask, &piSerialFactory, &piSocketFactory,   &piCDSBuffer,
};

} // namespace

ProtModule::~ProtModule() {
    ProtModule::Close();
}

IInterface* ProtModule::ConvertTo(char const* name) {
    return CompareInterface(name, "ProtModule") || CompareInterface(name, "IProtModule") ? this : nullptr;
}

bool ProtModule::Init(IInterfaceFactory* host) {
    if (initCount_ != 0) {
        ++initCount_;
        return true;
    }
    if (host == nullptr) {
        lastError_ = kRequired.front().missing;
        return false;
    }
    if (!acquireRequired(*host)) {
        return false;
    }
    for (Service const& service : kOptional) {
        *service.variable = host->CreateInterface(service.name);
    }
    host_ = host;
    initCount_ = 1;
    return true;
}

/** On failure what was acquired is given back; the variables keep their stale values, for the host stops here. */
bool ProtModule::acquireRequired(IInterfaceFactory& host) {
    for (std::size_t acquired = 0; acquired < kRequired.size(); ++acquired) {
        RequiredService const& service = kRequired[acquired];
        *service.variable = host.CreateInterface(service.name);
        if (*service.variable == nullptr) {
            for (std::size_t i = 0; i < acquired; ++i) {
                host.ReleaseInterface(*kRequired[i].variable);
            }
            lastError_ = service.missing;
            return false;
        }
    }
    return true;
}

void ProtModule::Close() {
    if (initCount_ == 1) {
        releaseAll();
    }
    if (initCount_ != 0) {
        --initCount_;
    }
}

void ProtModule::releaseAll() {
    for (IInterface** const variable : kReleaseOrder) {
        if (*variable != nullptr) {
            host_->ReleaseInterface(*variable);
        }
        *variable = nullptr;
    }
    host_ = nullptr;
}
