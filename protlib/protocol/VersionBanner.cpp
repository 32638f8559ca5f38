#include "interfaces/IInterface.h"
#include "protlib/protocol/HostServiceVariables.h"
#include "protlib/protocol/ProtocolBase.h"
#include "protlib/safety/BoundedText.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/types/DataTypes.h"

namespace {

constexpr int kBaseVersion = 100;

void appendVersion(BoundedText& banner, int version) {
    banner.append(" v.");
    banner.appendNumber(version);
    banner.append("\n");
}

void appendImplementation(BoundedText& banner, IInterface const& object) {
    banner.appendName(object.GetImpName());
    appendVersion(banner, object.GetImpVersion());
}

void appendServices(BoundedText& banner) {
    for (auto const* service : {piMultiTask, piSerialFactory, piSocketFactory}) {
        if (service != nullptr) {
            appendImplementation(banner, *service);
        }
    }
}

} // namespace

int ProtocolBase::GetInfo(char* text, int size) const {
    BoundedText banner(text, size);

    banner.append("Protocol: ");
    banner.appendName(GetName());
    banner.append(" (");
    banner.appendNumber(GetProtocolType());
    banner.append(")");
    appendVersion(banner, GetProtocolVersion());

    banner.append("Implementation: ");
    appendImplementation(banner, *this);

    banner.append("ProtocolBase");
    appendVersion(banner, kBaseVersion);

    banner.append("ProtLib");
    appendVersion(banner, ProtUtilsN::GetVersion());

    if (!IsConverted()) {
        // A service that throws ends the banner; what is there stays.
        ProtUtilsN::noThrow([&] { appendServices(banner); });
    }
    return banner.length();
}
