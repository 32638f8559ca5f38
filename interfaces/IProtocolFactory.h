#pragma once

#include "interfaces/IInterface.h"

class IProtocol;

/** Creates and deletes driver instances. Slots: 0 to 4 IInterface, 5 CreateProtocol, 6 DeleteProtocol. */
class IProtocolFactory : public IInterface {
public:
    /**
     * Creates one driver instance; @p name is "VELK". Null for any other name.
     *
     * The module must be initialised. No other operation of the module throws; this one may throw std::bad_alloc.
     */
    virtual IProtocol* CreateProtocol(char const* name) = 0;

    /** Deletes a driver instance together with all of its tags. Null is ignored. */
    virtual void DeleteProtocol(IProtocol* protocol) = 0;
};
