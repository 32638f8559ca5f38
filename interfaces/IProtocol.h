#pragma once

#include "interfaces/IInterface.h"
#include "interfaces/ItemStatus.h"

class IMultiRead;  // belongs to the host; never used by this module
class IMultiWrite; // belongs to the host; never used by this module
class ITag;
class TagBase; // derives from ITag by single inheritance; opaque to the host

/**
 * A driver instance: configuration, tags, single values and plain datagrams.
 *
 * Slots 0 to 4 are IInterface's; the operations follow from slot 5 to 32 in the order in which they are declared. A
 * false, zero or null result is a failure; GetLastError() and GetLastErrorString() then hold the reason. The host
 * serialises all calls on one instance. No operation throws.
 *
 * tags[0] decides the node of a whole list. In a list with tags of several nodes, which the planning operations refuse,
 * the others are read from and written to the wrong PLC without an error.
 */
class IProtocol : public IInterface {
public:
    virtual bool Config(char const* configuration) = 0; ///< slot 5
    virtual ITag* CreateTag(char const* address) = 0;   ///< slot 6; the protocol owns the tag
    virtual void FreeTag(ITag* tag) = 0;                ///< slot 7; destroys the tag
    virtual bool CanBeOptimized(ITag const* a, ITag const* b, bool write) const = 0; ///< slot 8
    virtual bool Start() = 0;                                                        ///< slot 9; opens the serial port
    virtual bool Stop() = 0;                                             ///< slot 10; closes the serial port
    virtual bool Read(ITag const* tag, unsigned char* value) = 0;        ///< slot 11; value: GetVarLength() bytes
    virtual bool Write(ITag const* tag, unsigned char const* value) = 0; ///< slot 12; value: GetVarLength() bytes
    virtual bool ReadBlock(ITag const* tag, unsigned char* bytes, int length) = 0;        ///< slot 13; the PLC's bytes
    virtual bool WriteBlock(ITag const* tag, unsigned char const* bytes, int length) = 0; ///< slot 14
    virtual int MaxDatagramItems(ITag const* tag) const = 0;                              ///< slot 15
    virtual int MaxDatagramLength(ITag const* tag) const = 0;                             ///< slot 16; bytes
    virtual bool CanCoexistInDatagram(ITag const* a, ITag const* b) const = 0;            ///< slot 17
    virtual bool ReadDatagram(ITag const* const* tags, int count, unsigned char* values) = 0; ///< slot 18
    virtual char const* GetName() const = 0;                                                  ///< slot 19
    virtual char const* GetNextInstanceName() const = 0;                                      ///< slot 20
    virtual int GetLastError() const = 0;                                                     ///< slot 21
    virtual char const* GetLastErrorString() const = 0;                                       ///< slot 22
    virtual int GetProtocolVersion() const = 0;                                               ///< slot 23
    virtual int GetProtocolType() const = 0;                                                  ///< slot 24
    virtual char const* GetProtocolName() const = 0;                                          ///< slot 25
    virtual int GetInfo(char* text, int size) const = 0; ///< slot 26; characters written, no zero added
    virtual char const* GetXml() const = 0;              ///< slot 27; "compressedXML=<bytes>", a zero, the zlib stream
    virtual bool IsConverted() const = 0;                ///< slot 28
    virtual char const* GetIdent() const = 0;            ///< slot 29
    virtual void SetIdent(char const* ident) = 0;        ///< slot 30; names the instance in permanent storage
    virtual bool DoCommand(char const* command, char* reply, int size) = 0; ///< slot 31
    virtual int Extend(int what, void* argument) = 0;                       ///< slot 32
};

/** Datagrams with a status for each item. Slots 33 to 38. */
class IProtocol2 : public IProtocol {
public:
    virtual bool CanAddToDatagram(ITag const* const* tags, int count, ITag const* tag) = 0; ///< slot 33
    virtual bool ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                        idal_error_t* status) = 0; ///< slot 34
    virtual bool MultipleReadSupported() const = 0;                ///< slot 35
    virtual bool MultipleRead(IMultiRead* request) = 0;            ///< slot 36
    virtual bool MultipleWriteSupported() const = 0;               ///< slot 37
    virtual bool MultipleWrite(IMultiWrite* request) = 0;          ///< slot 38
};

/** Nodes, bit blocks, planning details and written datagrams. Slots 39 to 53. */
class IProtocol3 : public IProtocol2 {
public:
    virtual int GetNodeID(ITag const* tag) const = 0;                                                  ///< slot 39
    virtual bool CanReadBitBlock(ITag const* tag) const = 0;                                           ///< slot 40
    virtual bool ReadBitBlock(ITag const* tag, unsigned char* bytes, int bits) = 0;                    ///< slot 41
    virtual void* GetInterface(char const* name) = 0;                                                  ///< slot 42
    virtual int MaxUnusedGap(ITag const* tag) const = 0;                                               ///< slot 43
    virtual bool IsBefore(ITag const* a, ITag const* b) const = 0;                                     ///< slot 44
    virtual bool IsAdjacent(ITag const* a, ITag const* b) const = 0;                                   ///< slot 45
    virtual bool NeedsReadBeforeWrite(ITag const* tag) const = 0;                                      ///< slot 46
    virtual bool CanWriteDatagrams(ITag const* tag) const = 0;                                         ///< slot 47
    virtual bool CanAddToWriteDatagram(ITag const* const* tags, int count, ITag const* tag) const = 0; ///< slot 48
    virtual bool WriteDatagramWithStatus(ITag const* const* tags, int count, unsigned char const* values,
                                         idal_error_t* status) = 0;                        ///< slot 49
    virtual bool CanWriteBitBlock(ITag const* tag) const = 0;                              ///< slot 50
    virtual bool WriteBitBlock(ITag const* tag, unsigned char const* bytes, int bits) = 0; ///< slot 51
    virtual TagBase* CreateTagBase(char const* address) = 0; ///< slot 52; the driver's tag factory, not the host's
    virtual int GetMaxTm(ITag const* tag) const = 0;         ///< slot 53; milliseconds
};
