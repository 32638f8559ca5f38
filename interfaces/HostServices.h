#pragma once

#include "interfaces/IInterface.h"

/**
 * The services that the host offers to the module. The module requests each by its class name when it is initialised.
 *
 * Slots 0 to 4 of each are IInterface's. ISocketFactory, ICDSBuffer (required), IDiag, IDriverInterface, ISmux and
 * IFastTimer (optional) are acquired and released only, so they are not declared here: any IInterface will do.
 *
 * When a service throws, the module's call that needed it fails. The unwinding of a cancelled thread passes through.
 */

/** The host's scheduler. Required. */
class IMultiTask2 : public IInterface {
public:
    virtual void HostSlot5() = 0; ///< slots 5 to 8 belong to the host; the module never calls them
    virtual void HostSlot6() = 0;
    virtual void HostSlot7() = 0;
    virtual void HostSlot8() = 0;

    /** Slot 9: gives the processor to the host's other tasks. The module passes 1. */
    virtual void Yield(int amount) = 0;
};

/** One serial port. */
class ISerialPort : public IInterface {
public:
    /**
     * Slot 5: configures and opens the port.
     *
     * @param baud bit/s
     * @param parity 0 none, 1 even, 2 odd, 3 mark
     * @param dataBits always 8 from this module
     * @param stopBits as configured, not checked by the driver: only 1 and 2 are useful
     * @param rs485 1 when the port has to switch the direction of an RS-485 line, else 0
     * @return non-zero on success
     */
    virtual int Open(int baud, int parity, int dataBits, int stopBits, int rs485) = 0;

    /** Slot 6: the module never calls it; ISerialFactory::ReleasePort() closes the port. */
    virtual void Close() = 0;

    /** Slot 7: drops received bytes. @p buffer is room for at least 1,460. Non-zero while it removed something. */
    virtual int Purge(unsigned char* buffer, int reserved1, int reserved2) = 0;

    /** Slot 8: sends @p length bytes. The module does not look at the result. */
    virtual int Write(unsigned char const* bytes, int length, int reserved) = 0;

    /**
     * Slot 9: receives one frame.
     *
     * Waits up to @p firstByteTimeoutMs for a first byte, then collects bytes until @p interCharTimeoutMs pass without
     * one or @p maximum have arrived. @p count receives the number of bytes, which is 0 after a time-out.
     *
     * @return 0 on a fault of the port, else non-zero (a time-out is not a fault)
     */
    virtual int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
                     int reserved) = 0;
};

/** Creates serial ports. Required. */
class ISerialFactory : public IInterface {
public:
    /** Slot 5: a closed port by its configured name ("com1"), or null when there is no such port. */
    virtual ISerialPort* CreatePort(char const* name) = 0;

    /** Slot 6: closes and frees the port. */
    virtual void ReleasePort(ISerialPort* port) = 0;
};

/** Permanent storage. Optional. ConvertTo("IPermanentStorage2") returns an IPermanentStorage2, or null. */
class IPermanentStorage : public IInterface {};

/** Where an instance keeps its files. */
class IPermanentStorage2 : public IInterface {
public:
    /**
     * Slot 5: the full path of the file @p name of the driver instance @p instance (IProtocol::GetIdent()).
     *
     * Writes a zero-terminated path of at most @p size bytes, the zero included. False when there is no path.
     */
    virtual bool GetFullPath(char const* instance, char const* name, char* path, int size) = 0;
};
