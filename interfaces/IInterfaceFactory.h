#pragma once

class IInterface;

/**
 * Hands out interfaces by name. The module has one (see ModuleEntry.h), and the host gives the module its own.
 *
 * Not derived from IInterface, and without a destructor slot. Slots: 0 CreateInterface, 1 ReleaseInterface.
 */
class IInterfaceFactory {
public:
    /** Returns the interface called @p name, or null when the name is unknown. @p name is never null. */
    virtual IInterface* CreateInterface(char const* name) = 0;

    /** Gives back an interface that CreateInterface() of the same factory returned. */
    virtual void ReleaseInterface(IInterface* object) = 0;

protected:
    IInterfaceFactory() = default;
    ~IInterfaceFactory() = default;
    IInterfaceFactory(IInterfaceFactory const&) = default;
    IInterfaceFactory& operator=(IInterfaceFactory const&) = default;
};
