#include "driver/link/LinkExchange.h"

#include "driver/errors/ErrorSink.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/link/Acknowledge.h"
#include "interfaces/ErrorCodes.h"
#include "interfaces/HostServices.h"

#include <algorithm>

namespace _VELK {

namespace {

constexpr int kInterCharTimeout = 20; // milliseconds of silence that end a frame

constexpr char const* kAcknowledgeTimeout = "Timeout on Acknowledge";
constexpr char const* kTooShort = "Too short message received";
constexpr char const* kWrongBlock = "Wrong checksum or wrong block number received";
constexpr char const* kWrongProtocolId = "Wrong Protocol ID received";

} // namespace

LinkExchange::LinkExchange(ISerialPort& port, LinkBuffers& buffers, NodeParams const& node, ByteOrder order,
                           ErrorSink& errors)
    : port_(port), buffers_(buffers), node_(node), errors_(errors), order_(order) {}

unsigned int LinkExchange::run(std::string const& framing, int requestLength, int* responseLength) {
    if (!choose(framing, requestLength)) {
        return 0;
    }
    if (!sendRequest(std::span(buffers_.txData).first(static_cast<std::size_t>(std::max(requestLength, 0))))) {
        return 0;
    }
    sendAcknowledge(kNoBlock); // turns the line around
    if (!receiveResponse() || !receiveAcknowledge(kNoBlock, kWrongProtocolId)) {
        return 0;
    }
    if (responseLength != nullptr) {
        *responseLength = static_cast<int>(received_);
    }
    return lastDataRead_;
}

/** Chooses the framing, and refuses what cannot be exchanged with it. */
bool LinkExchange::choose(std::string const& framing, int requestLength) {
    routed_ = framing == "ABB_RS232_AC";
    if (!routed_ && framing != "Serial_RS232") {
        return errors_.fail(kErrorRequest, "Protocol type not supported");
    }
    if (node_.BlockSize < kMinBlockSize || node_.BlockSize > kMaxBlockSize) {
        return errors_.fail(kErrorRequest, "parameter 'BlockSize' out of range");
    }
    if (requestLength > static_cast<int>(kDataLength)) {
        return errors_.fail(kErrorRequest, kTxExceeded);
    }
    return true;
}

bool LinkExchange::sendRequest(std::span<unsigned char const> request) {
    std::size_t const blockPayload = static_cast<std::size_t>(node_.BlockSize) - kBlockHeaderLength;
    std::uint16_t number = kFirstBlockNumber;
    while (!request.empty()) {
        std::span<unsigned char const> const payload = request.first(std::min(request.size(), blockPayload));
        request = request.subspan(payload.size());
        writeFrame(writeBlockFrame(startFrame(), payload, number, request.empty(), order_));
        if (!receiveAcknowledge(number, "Wrong Ack message received")) {
            return false;
        }
        ++number;
    }
    return true;
}

void LinkExchange::sendAcknowledge(std::uint16_t number) {
    writeAcknowledge(startFrame(), number, order_);
    writeFrame(kAcknowledgeLength);
}

bool LinkExchange::receiveResponse() {
    for (unsigned number = kFirstBlockNumber; number <= kMaxBlockNumber; ++number) {
        auto const blockNumber = static_cast<std::uint16_t>(number);
        std::optional<ReceivedBlock> const block = receiveBlock(blockNumber);
        if (!block || !keepPayload(block->payload)) {
            return false;
        }
        sendAcknowledge(blockNumber);
        if (block->last) {
            return true;
        }
    }
    return errors_.fail(kErrorReply, kWrongBlock); // no block number is left
}

bool LinkExchange::receiveAcknowledge(std::uint16_t number, char const* mismatch) {
    std::optional<Frame> const frame = readFrame(kAcknowledgeTimeout);
    if (!frame) {
        return false;
    }
    if (frame->bytes.size() < headerLength() + kAcknowledgeLength) {
        return errors_.fail(kErrorReply, "Too short Ack message received");
    }
    if (couplerGaveUp(frame->bytes)) {
        return false;
    }
    return isAcknowledge(frame->bytes.subspan(headerLength()), number, order_) || errors_.fail(kErrorReply, mismatch);
}

std::optional<ReceivedBlock> LinkExchange::receiveBlock(std::uint16_t number) {
    std::optional<Frame> const frame = readFrame("Timeout on data receiving");
    if (!frame) {
        return std::nullopt;
    }
    lastDataRead_ = frame->portResult;
    if (frame->bytes.size() < headerLength()) {
        errors_.fail(kErrorReply, kTooShort);
        return std::nullopt;
    }
    if (couplerGaveUp(frame->bytes)) {
        return std::nullopt;
    }
    ReceivedBlock block;
    switch (parseBlockFrame(frame->bytes.subspan(headerLength()), number, order_, block)) {
    case BlockFault::None:
        return block;
    case BlockFault::TooShort:
        errors_.fail(kErrorReply, kTooShort);
        break;
    case BlockFault::WrongProtocolId:
        errors_.fail(kErrorReply, kWrongProtocolId);
        break;
    case BlockFault::WrongChecksumOrNumber:
        errors_.fail(kErrorReply, kWrongBlock);
        break;
    }
    return std::nullopt;
}

/** Appends a block's payload to the response. */
bool LinkExchange::keepPayload(std::span<unsigned char const> payload) {
    if (payload.size() > buffers_.rxData.size() - received_) {
        return errors_.fail(kErrorRequest, kRxExceeded);
    }
    std::copy(payload.begin(), payload.end(), buffers_.rxData.begin() + static_cast<std::ptrdiff_t>(received_));
    received_ += payload.size();
    return true;
}

/** Puts the routing header, if there is one, into the frame; returns the room after it. */
std::span<unsigned char> LinkExchange::startFrame() {
    std::span<unsigned char> const frame(buffers_.txFrame);
    if (routed_) {
        writeRoutingHeader(frame, node_);
    }
    return frame.subspan(headerLength());
}

/** Sends the frame with @p length bytes after the routing header. */
void LinkExchange::writeFrame(std::size_t length) {
    port_.Write(buffers_.txFrame.data(), static_cast<int>(headerLength() + length), 0);
}

/** Receives one frame; nothing after a fault of the port, or, reported as @p timeout, when no byte arrives. */
std::optional<LinkExchange::Frame> LinkExchange::readFrame(char const* timeout) {
    std::span<unsigned char> const buffer(buffers_.rxFrame);
    auto const maximum = static_cast<int>(buffer.size());
    int count = 0;
    int const result = port_.Read(buffer.data(), maximum, node_.Timeout, kInterCharTimeout, &count, 0);
    if (result == 0 || count < 0 || count > maximum) {
        errors_.fail(kErrorPort, "Generic error on receiving");
        return std::nullopt;
    }
    if (count == 0) {
        errors_.fail(kErrorTimeout, timeout);
        return std::nullopt;
    }
    return Frame{buffer.first(static_cast<std::size_t>(count)), static_cast<unsigned int>(result)};
}

bool LinkExchange::couplerGaveUp(std::span<unsigned char const> frame) const {
    return routed_ && routingStatus(frame) != 0;
}

} // namespace _VELK
