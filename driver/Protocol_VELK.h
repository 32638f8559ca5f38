#pragma once

#include "driver/config/ByteOrder.h"
#include "driver/config/ParamManager.h"
#include "driver/link/BlockFrame.h"
#include "driver/link/RoutingHeader.h"
#include "protlib/MemoryManager.h"
#include "protlib/NoThrow.h"
#include "protlib/ProtocolBase.h"
#include "symbols/RtsSym.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

class ISerialFactory;
class ISerialPort;
class Tag_VELK;

/**
 * One instance of the driver: a serial line and the PLCs on it.
 *
 * Starts no threads and takes no locks; the host serialises all calls. One exchange with a PLC is in flight at a
 * time, and every exchange uses the same buffers. Large, so it lives on the heap: see CreateProtocol_VELK(). Only the
 * constructor throws.
 */
class Protocol_VELK final : public ProtocolBase {
public:
    static constexpr std::size_t kDataLength = 75'000;
    static constexpr std::size_t kTxFrameLength = _VELK::kRoutingHeaderLength + std::size_t{_VELK::kMaxBlockSize};
    static constexpr std::size_t kRxFrameLength = 1'460;

    /** Registers memory types and models, makes the symbol table. May throw std::bad_alloc. */
    Protocol_VELK();
    Protocol_VELK(Protocol_VELK const&) = delete;
    Protocol_VELK& operator=(Protocol_VELK const&) = delete;
    Protocol_VELK(Protocol_VELK&&) = delete;
    Protocol_VELK& operator=(Protocol_VELK&&) = delete;
    ~Protocol_VELK() override;

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

    // Reading and writing: tags[0] is looked at even when there are no tags
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

    /**
     * Reads or writes a list of variables on the node of tags[0]: logs in, makes sure of the node's symbols, binds
     * the tags, exchanges the list.
     *
     * @param n number of tags; tags[0] must be there even when it is 0
     * @param data an image: for each tag PackedLen() bytes as the PLC has them, one behind the other
     * @param len when not 0, the size that is asked for and copied instead of PackedLen(); for one tag only
     * @return false with the reason as the last error
     */
    bool doProtocolInner(bool write, ITag const* const* tags, int n, unsigned char* data, int len);

    /**
     * Exchanges the first @p requestLength bytes of txData() for a response in rxData(). One attempt, no login.
     *
     * @param responseLength written on success only
     * @return not 0 on success
     */
    unsigned int doProtocolInner2(int requestLength, int* responseLength, _VELK::NodeParams const* node,
                                  bool bigEndian);

    /**
     * Fetches the PLC's file @p plcFileName into the local file @p localPath, which is made or overwritten when the
     * first piece has come.
     *
     * @return not 0 on success
     */
    unsigned int readFileFromPLC(char const* plcFileName, char const* localPath, _VELK::NodeParams const* node,
                                 bool bigEndian);

    [[nodiscard]] _VELK::ParamManager const& getParamManager() const { return paramManager_; }
    MemoryManager& getMemoryManager() { return memoryManager_; }
    [[nodiscard]] MemoryManager const& getMemoryManager() const { return memoryManager_; }
    _VELK::RtsSym& symbolTable() { return *symbolTable_; }

    /**
     * Declares that the configured addresses of a node were resolved against the project @p identifier: its tags go
     * out with them, and no symbol file is needed until the PLC reports another project. 0 declares nothing.
     */
    void declareProject(int node, std::uint32_t identifier);

    // State of a node, 0 and false for an unknown one
    [[nodiscard]] std::uint32_t projectIdentifier(int node) const; ///< of the node's symbol file, or declared; 0 none
    [[nodiscard]] std::uint32_t confirmedProjectIdentifier(int node) const;
    [[nodiscard]] bool usesDefaultAddresses(int node) const;

    [[nodiscard]] bool isPortOpen() const { return portOpen_; }
    [[nodiscard]] bool isLoggedIn() const { return loggedIn_; }
    [[nodiscard]] std::uint32_t loginNode() const { return loginNode_; } ///< 0 when not logged in, but 0 is also a node
    [[nodiscard]] bool hasCommunicationFault() const { return communicationFault_; }

    std::span<unsigned char, kDataLength> txData() { return txData_; }
    [[nodiscard]] std::span<unsigned char const, kDataLength> rxData() const { return rxData_; }

private:
    static constexpr int kNoNode = -1;

    /** What the driver knows of one node. */
    struct NodeState {
        bool downloadRequested = false; ///< set by nothing yet: a hook to have the symbol file fetched anew
        std::uint32_t confirmedProjectIdentifier = 0;
        std::uint32_t projectIdentifier = 0;
        bool useDefaultAddresses = false;
    };

    struct FileCloser {
        void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
    };

    struct ListCall;
    struct Line;
    struct BlockPlace;

    /** Records the reason of a failure; always false. */
    bool fail(int code, char const* text) {
        SetError(code, text);
        return false;
    }

    /** Runs @p step and answers its result; false when memory runs out on the way. */
    template <typename Step>
    bool guarded(Step&& step) noexcept {
        bool result = false;
        return ProtUtilsN::noThrow([&] { result = step(); }) ? result : fail(kErrorPort, "Out of memory");
    }

    // Protocol_VELK.cpp
    bool failNaming(char const* before, char const* name, char const* after);
    bool takeLineSettings();
    void releasePort();
    [[nodiscard]] NodeState const* nodeState(int node) const;

    // EntryPoints.cpp
    bool doReadDatagram(ITag const* const* tags, int count, std::span<unsigned char> image);
    bool exchangeAttempts(bool write, ITag const* const* tags, int count, unsigned char* image, int length);
    bool readDatagramImage(ITag const* const* tags, int count, unsigned char* values, idal_error_t* status);
    bool readBlockImage(ITag const* tag, unsigned char* bytes, int length);
    bool writeValueImage(ITag const* tag, unsigned char const* value);
    bool writeDatagramImage(ITag const* const* tags, int count, unsigned char const* values);
    bool fillBlock(ITag const* tag, std::span<unsigned char> image, int length);
    bool convertToHost(Tag_VELK const& tag, unsigned char const* image, unsigned char* value);
    idal_error_t reportStatus(Tag_VELK const& tag);
    bool refuseImage(ITag const* const* tags, int count, std::int64_t length, bool write);
    bool requireStarted();
    bool requireItemLimit(ITag const* const* tags, int count);
    void emptyPort();

    // Sequencer.cpp
    bool runList(ListCall& call);
    bool checkCall(ListCall const& call);
    bool addressNode(ListCall& call);
    bool leaveOtherNode(ListCall const& call);
    bool checkLink(ListCall const& call);
    bool login(ListCall const& call);
    bool buildRequest(ListCall const& call, int& length);
    bool resolveTag(ListCall const& call, Tag_VELK const& tag);
    bool bindTag(ListCall const& call, Tag_VELK const& tag);
    bool exchangeList(ListCall const& call, int length, std::span<unsigned char const>& reply);
    bool takeWriteReply(ListCall const& call, std::span<unsigned char const> reply);
    bool takeReadReply(ListCall const& call, std::span<unsigned char const> reply);
    bool takeValues(ListCall const& call, std::span<unsigned char const> reply);
    bool exchange(int length, _VELK::NodeParams const& node, std::span<unsigned char const>& reply);
    bool refuseTag(Tag_VELK const& tag);
    bool fault(int code, char const* text);
    void doubtLogin() { loginDoubted_ = true; }
    void trustLogin();
    void settleLogin();
    void forgetLogin();

    // NodeSymbols.cpp
    void findSymbolFile(ListCall& call) const;
    bool provideSymbols(ListCall const& call);
    bool loadSymbols(ListCall const& call);
    bool fallBackToConfirmedProject(ListCall const& call, char const* reason);
    bool provideSymbolTable(ListCall const& call);
    [[nodiscard]] bool needsLookup(ListCall const& call) const;
    void recoverFromOtherProject(ListCall const& call);

    // LinkLayer.cpp
    bool openLine(Line& line, int requestLength);
    bool sendRequest(Line const& line, std::span<unsigned char const> request);
    void sendAcknowledge(Line const& line, std::uint16_t number);
    bool receiveAcknowledge(Line const& line, std::uint16_t number, char const* mismatch);
    bool receiveResponse(Line& line, std::size_t& total);
    bool receiveBlock(Line& line, std::uint16_t number, _VELK::ReceivedBlock& block);
    bool keepPayload(std::span<unsigned char const> payload, std::size_t& total);
    bool readFrame(Line const& line, char const* timeout, std::span<unsigned char const>& frame,
                   unsigned int& portResult);
    std::span<unsigned char> startFrame(Line const& line);
    void writeFrame(Line const& line, std::size_t length);

    // SymbolUpload.cpp
    bool keepPiece(std::span<unsigned char const> bytes, char const* localPath);
    unsigned int refusePiece();

    bool portOpen_ = false;
    std::array<NodeState, _VELK::kNodeCount> nodes_{};
    _VELK::ParamManager paramManager_;
    MemoryManager memoryManager_;
    std::array<unsigned char, kDataLength> txData_{};
    std::array<unsigned char, kDataLength> rxData_{};
    std::array<unsigned char, kTxFrameLength> txFrame_{};
    std::array<unsigned char, kRxFrameLength> rxFrame_{};

    std::uint32_t loginNode_ = 0;
    _VELK::NodeParams const* loginParams_; // never null
    bool loggedIn_ = false;                // decides; the login node's number does not, for node 0 is a node
    bool loginDoubted_ = false;
    int failedCalls_ = 0; // in a row, with the present login

    bool communicationFault_ = false;
    std::unique_ptr<_VELK::RtsSym> symbolTable_;
    int tableNode_ = kNoNode;       // the node whose file the symbol table holds
    std::uint32_t symbolLoads_ = 0; // numbers the loads of symbol files
    std::unique_ptr<std::FILE, FileCloser> uploadFile_;

    std::string portName_;
    int baudRate_ = 0;
    int dataBits_ = 8;
    int stopBits_ = 0;
    int parity_ = 0;
    int rs485_ = 0;
    ISerialPort* port_ = nullptr;
    ISerialFactory* serialFactory_;
};

/** Makes a driver instance; the caller deletes it. Throws what the constructor throws. */
IProtocol* CreateProtocol_VELK();
