#pragma once

#include "interfaces/IInterface.h"

class IInterfaceFactory;

/** The module as a whole. Slots: 0 to 4 IInterface, 5 Init, 6 Close, 7 GetLastError. */
class IProtModule : public IInterface {
public:
    /**
     * Acquires the host's services from @p host, which must stay valid until the matching Close().
     * Further calls are only counted. False when the host lacks a required service, or throws: see GetLastError().
     */
    virtual bool Init(IInterfaceFactory* host) = 0;

    /** Undoes one Init(); the last one releases the host's services, as unloading the module does. */
    virtual void Close() = 0;

    /**
     * Why Init() failed; empty when it never failed. A later success does not clear it; valid until the next failure.
     */
    virtual char const* GetLastError() const = 0;
};
