#pragma once

/**
 * Root of every interface that has a name.
 *
 * Slots: 0 complete destructor, 1 deleting destructor, 2 ConvertTo, 3 GetImpName, 4 GetImpVersion.
 * All inheritance below it is single, so the address of an interface is the address of its object.
 */
class IInterface {
public:
    virtual ~IInterface() = default;

    /** Returns this object as the interface called @p name (compared byte for byte), or null. */
    virtual IInterface* ConvertTo(char const* name) = 0;

    /** Name of the implementing class, zero-terminated, valid as long as the object. */
    virtual char const* GetImpName() const = 0;

    /** Version of the implementing class. */
    virtual int GetImpVersion() const = 0;

protected:
    IInterface() = default;
    IInterface(IInterface const&) = default;
    IInterface& operator=(IInterface const&) = default;
};
