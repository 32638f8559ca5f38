#pragma once

#include "driver/config/ByteOrder.h"
#include "driver/link/BlockFrame.h"
#include "driver/link/LinkBuffers.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

class ISerialPort;

namespace _VELK {

class ErrorSink;
struct NodeParams;

/**
 * One exchange with one node: the request goes out in numbered blocks, an acknowledge after each; the line is turned
 * around; the blocks of the response arrive and are acknowledged; the node closes with an acknowledge.
 *
 * One attempt. Every failure ends it and is reported, except that of a coupler, which is deliberately silent.
 */
class LinkExchange {
public:
    LinkExchange(ISerialPort& port, LinkBuffers& buffers, NodeParams const& node, ByteOrder order, ErrorSink& errors);

    /** See SerialLink::exchange(). @p framing is the line's `protType`. */
    unsigned int run(std::string const& framing, int requestLength, int* responseLength);

private:
    /** The result of a read of the port. */
    struct Frame {
        std::span<unsigned char const> bytes; ///< at least one
        unsigned int portResult = 0;          ///< not 0
    };

    bool choose(std::string const& framing, int requestLength);
    bool sendRequest(std::span<unsigned char const> request);
    void sendAcknowledge(std::uint16_t number);
    bool receiveResponse();
    bool receiveAcknowledge(std::uint16_t number, char const* mismatch);
    std::optional<ReceivedBlock> receiveBlock(std::uint16_t number);
    bool keepPayload(std::span<unsigned char const> payload);

    std::span<unsigned char> startFrame();
    void writeFrame(std::size_t length);
    std::optional<Frame> readFrame(char const* timeout);
    [[nodiscard]] bool couplerGaveUp(std::span<unsigned char const> frame) const;
    [[nodiscard]] std::size_t headerLength() const { return routed_ ? kRoutingHeaderLength : 0; }

    ISerialPort& port_;
    LinkBuffers& buffers_;
    NodeParams const& node_;
    ErrorSink& errors_;
    ByteOrder order_;
    bool routed_ = false;
    std::size_t received_ = 0;      ///< bytes of the response so far
    unsigned int lastDataRead_ = 0; ///< the port's result of the last read of a response block
};

} // namespace _VELK
