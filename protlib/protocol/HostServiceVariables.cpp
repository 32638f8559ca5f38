#include "protlib/protocol/HostServiceVariables.h"

#include "interfaces/HostServices.h"

IInterface* piMultiTask = nullptr;
IInterface* piSerialFactory = nullptr;
IInterface* piSocketFactory = nullptr;
IInterface* piCDSBuffer = nullptr;
IInterface* piDiag = nullptr;
IInterface* piPermanentStorage = nullptr;
IInterface* piDriverInterface = nullptr;
IInterface* piSmux = nullptr;
IInterface* piFastTimer = nullptr;

void yieldToHost() {
    if (piMultiTask != nullptr) {
        static_cast<IMultiTask2*>(piMultiTask)->Yield(1);
    }
}
