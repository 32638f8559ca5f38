#include "factory/ProtModule.h"

#include "interfaces/IInterfaceFactory.h"
#include "protlib/protocol/HostServiceVariables.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/text/InterfaceNames.h"

#include <array>
#include <cstddef>
#include <utility>

namespace {

/** A service of the host, and the variable that keeps it. */
struct Service {
    IInterface** variable;
    char const* name;
};

/** A service that the module needs, and the error text when the host lacks it. */
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

// In the order in which they are released.
constexpr std::array<IInterface**, 9> kReleaseOrder{
    &piFastTimer, &piSmux,          &piDriverInterface, &piDiag,      &piPermanentStorage,
    &piMultiTask, &piSerialFactory, &piSocketFactory,   &piCDSBuffer,
};

ProtUtilsN::Outcome acquire(IInterfaceFactory& host, Service const& service) {
    return ProtUtilsN::contain([&] { *service.variable = host.CreateInterface(service.name); });
}

/** The service counts as released even when the host throws. */
void giveBack(IInterfaceFactory& host, IInterface* service) {
    ProtUtilsN::contain([&] { host.ReleaseInterface(service); });
}

} // namespace

ProtModule::~ProtModule() {
    releaseAll();
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
    releaseAll(); // left by a call whose thread was cancelled
    host_ = host;
    if (!acquireRequired()) {
        return false;
    }
    for (Service const& service : kOptional) {
        acquire(*host_, service);
    }
    initCount_ = 1;
    return true;
}

/**
 * A failure releases what was acquired; the variables keep their stale values, because the host then uses the module no
 * further.
 */
bool ProtModule::acquireRequired() {
    for (std::size_t acquired = 0; acquired < kRequired.size(); ++acquired) {
        RequiredService const& service = kRequired[acquired];
        ProtUtilsN::Outcome const outcome = acquire(*host_, service);
        if (*service.variable == nullptr) {
            lastError_ =
                outcome == ProtUtilsN::Outcome::HostException ? ProtUtilsN::kHostExceptionText : service.missing;
            IInterfaceFactory& host = *std::exchange(host_, nullptr);
            for (std::size_t i = 0; i < acquired; ++i) {
                giveBack(host, *kRequired[i].variable);
            }
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
        IInterface* const service = std::exchange(*variable, nullptr);
        if (host_ != nullptr && service != nullptr) {
            giveBack(*host_, service);
        }
    }
    host_ = nullptr;
}
