#pragma once

#include "interfaces/ErrorCodes.h"
#include "interfaces/IProtocol.h"
#include "protlib/tag/TagRegistry.h"

#include <string>

/**
 * The part common to all drivers: the registry of tags, the last error, the ident, the console, and a default result
 * for everything that a protocol need not support.
 *
 * A driver derives from it and overrides what it supports. Left abstract: GetImpName, GetImpVersion, Config,
 * CanBeOptimized, Write, ReadBlock, GetName, GetProtocolVersion, GetProtocolType, GetProtocolName, GetNodeID,
 * CreateTagBase and GetMaxTm. The class adds no slots to those of IProtocol3.
 *
 * The host serialises its calls. No operation throws.
 */
class ProtocolBase : public IProtocol3 {
public:
    ProtocolBase() = default;
    ~ProtocolBase() override;
    ProtocolBase(ProtocolBase const&) = delete;
    ProtocolBase& operator=(ProtocolBase const&) = delete;

    /** This object for "ProtocolBase", "IProtocol3", "IProtocol2" and "IProtocol", else null. */
    IInterface* ConvertTo(char const* name) override;

    /** Gets the tag from CreateTagBase() and keeps it; null when CreateTagBase() refused the address. */
    ITag* CreateTag(char const* address) override;

    /** Forgets every registration of @p tag and destroys it, registered or not. Null is ignored. */
    void FreeTag(ITag* tag) override;

    bool Start() override; ///< true
    bool Stop() override;  ///< true

    /**
     * Reads one value, through ReadBitBlock() when the driver supports that, else through ReadBlock(), and converts it.
     *
     * @param value room for the tag's GetVarLength() bytes
     */
    bool Read(ITag const* tag, unsigned char* value) override;

    bool WriteBlock(ITag const* tag, unsigned char const* bytes, int length) override;     ///< not supported
    int MaxDatagramItems(ITag const* tag) const override;                                  ///< 0
    int MaxDatagramLength(ITag const* tag) const override;                                 ///< 0
    bool CanCoexistInDatagram(ITag const* a, ITag const* b) const override;                ///< false
    bool ReadDatagram(ITag const* const* tags, int count, unsigned char* values) override; ///< false
    [[nodiscard]] char const* GetNextInstanceName() const override;                        ///< GetName()
    [[nodiscard]] int GetLastError() const override;                                       ///< 1 until an error is set
    [[nodiscard]] char const* GetLastErrorString() const override; ///< valid until the next error

    /**
     * The version banner, one item a line: at most @p size bytes, no zero added. Returns the number of bytes written.
     */
    int GetInfo(char* text, int size) const override;

    [[nodiscard]] char const* GetXml() const override;   ///< null
    [[nodiscard]] bool IsConverted() const override;     ///< false
    [[nodiscard]] char const* GetIdent() const override; ///< GetName() while the ident is empty
    void SetIdent(char const* ident) override;

    /**
     * Runs one line of the service console: "help", "info", "xml", "lasterror", "read <address>",
     * "write <address> <hexadecimal digits>", "getmaxtm" or "deletetags".
     *
     * The reply is cut at @p size bytes; a zero follows it where there is room. Nothing is written when @p reply is
     * null or @p size is not positive. A command that fails says so in the reply.
     *
     * @return false for an unknown command; the reply is then untouched
     */
    bool DoCommand(char const* command, char* reply, int size) override;

    int Extend(int what, void* argument) override; ///< 0

    /** True when @p tag may share a datagram with tags[0] and neither limit of the driver is exceeded. */
    bool CanAddToDatagram(ITag const* const* tags, int count, ITag const* tag) override;

    /** ReadDatagram(); every status is good when that succeeded, else the statuses are unchanged. */
    bool ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                idal_error_t* status) override;

    [[nodiscard]] bool MultipleReadSupported() const override;                   ///< false
    bool MultipleRead(IMultiRead* request) override;                             ///< false
    [[nodiscard]] bool MultipleWriteSupported() const override;                  ///< false
    bool MultipleWrite(IMultiWrite* request) override;                           ///< false
    bool CanReadBitBlock(ITag const* tag) const override;                        ///< false
    bool ReadBitBlock(ITag const* tag, unsigned char* bytes, int bits) override; ///< false
    void* GetInterface(char const* name) override;                               ///< null
    int MaxUnusedGap(ITag const* tag) const override;                            ///< 16,777,215 bytes
    bool IsBefore(ITag const* a, ITag const* b) const override;                  ///< by byte offset, unsigned
    bool IsAdjacent(ITag const* a, ITag const* b) const override;                ///< a begins where b ends
    bool NeedsReadBeforeWrite(ITag const* tag) const override;                   ///< false
    bool CanWriteDatagrams(ITag const* tag) const override;                      ///< false
    bool CanAddToWriteDatagram(ITag const* const* tags, int count, ITag const* tag) const override; ///< false
    bool WriteDatagramWithStatus(ITag const* const* tags, int count, unsigned char const* values,
                                 idal_error_t* status) override;                        ///< false
    bool CanWriteBitBlock(ITag const* tag) const override;                              ///< false
    bool WriteBitBlock(ITag const* tag, unsigned char const* bytes, int bits) override; ///< false

    /** Replaces the last error. The text is empty when @p text is null or there is no memory for it. */
    void SetError(int code, char const* text);

    /** Makes the error of a refused tag the last error: -1, "Tag URI error: <address> - <the tag's error text>". */
    void SetTagError(TagBase const* tag);

    /** Destroys every registered tag. */
    void DeleteTags();

private:
    TagRegistry tags_; // owned
    int errorCode_ = kErrorNone;
    std::string errorText_;
    std::string ident_;
};
