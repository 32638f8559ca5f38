#pragma once

#include "driver/session/Session.h"
#include "protlib/protocol/ProtocolBase.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/types/MemoryManager.h"

#include <span>

/**
 * One instance of the driver: a serial line and the PLCs on it.
 *
 * The interface to the host; all state beyond a call belongs to the parts of the session. Starts no threads and takes
 * no locks; the host serialises all calls. One exchange with a PLC is in flight at a time, and every exchange uses the
 * same buffers. Large, so it lives on the heap: see CreateProtocol_VELK(). Only the constructor throws.
 */
class Protocol_VELK final : public ProtocolBase {
public:
    /** Registers memory types and models, creates the symbol table. May throw std::bad_alloc. */
    Protocol_VELK();
    Protocol_VELK(Protocol_VELK const&) = delete;
    Protocol_VELK& operator=(Protocol_VELK const&) = delete;
    Protocol_VELK(Protocol_VELK&&) = delete;
    Protocol_VELK& operator=(Protocol_VELK&&) = delete;
    ~Protocol_VELK() override = default;

    // Identity
    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override { return "Protocol_VELK"; }
    [[nodiscard]] int GetImpVersion() const override { return 100; }
    [[nodiscard]] char const* GetName() const override { return "VELK"; }
    [[nodiscard]] char const* GetProtocolName() const override { return "Velk Serial Link"; }
    [[nodiscard]] int GetProtocolVersion() const override { return 144; }
    [[nodiscard]] int GetProtocolType() const override { return 277; }
    [[nodiscard]] char const* GetXml() const override;

    // Lifecycle
    bool Config(char const* configuration) override;
    bool Start() override;
    bool Stop() override;
    TagBase* CreateTagBase(char const* address) override;

    // Planning: no traffic
    bool CanBeOptimized(ITag const* a, ITag const* b, bool write) const override; ///< false
    bool CanWriteDatagrams(ITag const* tag) const override;                       ///< true
    int GetNodeID(ITag const* tag) const override;
    int GetMaxTm(ITag const* tag) const override; ///< 0
    int MaxDatagramItems(ITag const* tag) const override;
    int MaxDatagramLength(ITag const* tag) const override;
    bool CanCoexistInDatagram(ITag const* a, ITag const* b) const override;
    bool CanAddToWriteDatagram(ITag const* const* tags, int count, ITag const* tag) const override;

    // Reading and writing: tags[0] is used even when there are no tags
    bool Read(ITag const* tag, unsigned char* value) override;
    bool ReadBlock(ITag const* tag, unsigned char* bytes, int length) override;
    bool ReadDatagram(ITag const* const* tags, int count, unsigned char* values) override;
    bool ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                idal_error_t* status) override;
    bool Write(ITag const* tag, unsigned char const* value) override;
    bool WriteDatagram(ITag const* const* tags, int count, unsigned char const* values);
    bool WriteDatagramWithStatus(ITag const* const* tags, int count, unsigned char const* values,
                                 idal_error_t* status) override;

    /** The console of ProtocolBase; "help" gets two more lines. */
    bool DoCommand(char const* command, char* reply, int size) override;

    // The steps of a read or write, from the outermost to the innermost. They may throw std::bad_alloc.

    /**
     * Reads the tags in the PLC's representation: PackedLen() bytes each, one after the other. Repeats as configured.
     */
    bool doReadDatagram(ITag const* const* tags, int count, std::span<unsigned char> image);

    /**
     * Reads or writes a list of variables on the node of tags[0]. One attempt, including the login and the symbols that
     * it needs.
     *
     * @param n number of tags; tags[0] must exist even when @p n is 0
     * @param data an image: for each tag PackedLen() bytes in the PLC's representation, one after the other
     * @param len when not 0, the size that is requested and copied instead of PackedLen(); for one tag only
     * @return false with the reason as the last error
     */
    bool doProtocolInner(bool write, ITag const* const* tags, int n, unsigned char* data, int len);

    /** SerialLink::exchange(): one request for one response. No login. */
    unsigned int doProtocolInner2(int requestLength, int* responseLength, _VELK::NodeParams const* node,
                                  bool bigEndian);

    /** SymbolUpload::fetch(): copies the PLC's file to a local one. */
    unsigned int readFileFromPLC(char const* plcFileName, char const* localPath, _VELK::NodeParams const* node,
                                 bool bigEndian);

    auto txData() { return session_.link.txData(); }
    [[nodiscard]] auto rxData() const { return session_.link.rxData(); }
    [[nodiscard]] _VELK::ParamManager const& getParamManager() const { return session_.params; }
    MemoryManager& getMemoryManager() { return memoryManager_; }
    _VELK::Session& session() { return session_; }

private:
    /** Runs @p step and returns its result; false, and the reason as the last error, when it throws. */
    template <typename Step>
    bool guarded(Step&& step);
    bool reportOutcome(ProtUtilsN::Outcome outcome);

    static void record(void* driver, int code, char const* text);

    MemoryManager memoryManager_;
    _VELK::Session session_;
};

/** Creates a driver instance; the caller deletes it. Throws what the constructor throws. */
IProtocol* CreateProtocol_VELK();
