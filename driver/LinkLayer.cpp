#include "driver/Protocol_VELK.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/link/Acknowledge.h"
#include "interfaces/HostServices.h"

#include <algorithm>

using _VELK::BlockFault;
using _VELK::ByteOrder;

namespace {

constexpr int kInterCharTimeout = 20; // milliseconds of silence that end a frame

constexpr char const* kAcknowledgeTimeout = "Timeout on Acknowledge";
constexpr char const* kWrongBlock = "Wrong checksum or wrong block number received";
constexpr char const* kWrongProtocolId = "Wrong Protocol ID received";

} // namespace

/** One exchange with one node. */
struct Protocol_VELK::Line {
    _VELK::NodeParams const* node = nullptr;
    ByteOrder order = ByteOrder::LittleEndian;
    bool routed = false;
    unsigned int lastDataRead = 0; ///< what the port answered to the last read of a response block

    [[nodiscard]] std::size_t headerLength() const { return routed ? _VELK::kRoutingHeaderLength : 0; }
};

unsigned int Protocol_VELK::doProtocolInner2(int requestLength, int* responseLength, _VELK::NodeParams const* node,
                                             bool bigEndian) {
    Line line;
    line.node = node;
    line.order = _VELK::byteOrderOf(bigEndian);
    if (!openLine(line, requestLength)) {
        return 0;
    }
    if (!sendRequest(line, std::span(txData_).first(static_cast<std::size_t>(std::max(requestLength, 0))))) {
        return 0;
    }
    sendAcknowledge(line, _VELK::kNoBlock); // turns the line round
    std::size_t total = 0;
    if (!receiveResponse(line, total) || !receiveAcknowledge(line, _VELK::kNoBlock, kWrongProtocolId)) {
        return 0;
    }
    if (responseLength != nullptr) {
        *responseLength = static_cast<int>(total);
    }
    return line.lastDataRead;
}

bool Protocol_VELK::openLine(Line& line, int requestLength) {
    if (port_ == nullptr) {
        return fail(kErrorState, _VELK::kNotStarted);
    }
    if (line.node == nullptr) {
        return fail(kErrorRequest, _VELK::kInvalidArgument);
    }
    std::string const& framing = paramManager_.getCommonParams()->protType;
    line.routed = framing == "ABB_RS232_AC";
    if (!line.routed && framing != "Serial_RS232") {
        return fail(kErrorRequest, "Protocol type not supported");
    }
    if (line.node->BlockSize < _VELK::kMinBlockSize || line.node->BlockSize > _VELK::kMaxBlockSize) {
        return fail(kErrorRequest, "parameter 'BlockSize' out of range");
    }
    if (requestLength > static_cast<int>(kDataLength)) {
        return fail(kErrorRequest, _VELK::kTxExceeded);
    }
    return true;
}

bool Protocol_VELK::sendRequest(Line const& line, std::span<unsigned char const> request) {
    std::size_t const blockPayload = static_cast<std::size_t>(line.node->BlockSize) - _VELK::kBlockHeaderLength;
    std::uint16_t number = _VELK::kFirstBlockNumber;
    while (!request.empty()) {
        std::span<unsigned char const> const payload = request.first(std::min(request.size(), blockPayload));
        request = request.subspan(payload.size());
        writeFrame(line, _VELK::writeBlockFrame(startFrame(line), payload, number, request.empty(), line.order));
        if (!receiveAcknowledge(line, number, "Wrong Ack message received")) {
            return false;
        }
        ++number;
    }
    return true;
}

void Protocol_VELK::sendAcknowledge(Line const& line, std::uint16_t number) {
    _VELK::writeAcknowledge(startFrame(line), number, line.order);
    writeFrame(line, _VELK::kAcknowledgeLength);
}

/** Puts the routing header, if there is one, into the frame; answers the room behind it. */
std::span<unsigned char> Protocol_VELK::startFrame(Line const& line) {
    std::span<unsigned char> const frame(txFrame_);
    if (line.routed) {
        _VELK::writeRoutingHeader(frame, *line.node);
    }
    return frame.subspan(line.headerLength());
}

/** Sends the frame with @p length bytes behind the routing header. */
void Protocol_VELK::writeFrame(Line const& line, std::size_t length) {
    port_->Write(txFrame_.data(), static_cast<int>(line.headerLength() + length), 0);
}

/** Receives one frame with at least one byte; false after a fault of the port or, as @p timeout, when none comes. */
bool Protocol_VELK::readFrame(Line const& line, char const* timeout, std::span<unsigned char const>& frame,
                              unsigned int& portResult) {
    int count = 0;
    int const result = port_->Read(rxFrame_.data(), static_cast<int>(rxFrame_.size()), line.node->Timeout,
                                   kInterCharTimeout, &count, 0);
    if (result == 0 || count < 0 || count > static_cast<int>(rxFrame_.size())) {
        return fail(kErrorPort, "Generic error on receiving");
    }
    if (count == 0) {
        return fail(kErrorTimeout, timeout);
    }
    frame = std::span(rxFrame_).first(static_cast<std::size_t>(count));
    portResult = static_cast<unsigned int>(result);
    return true;
}

bool Protocol_VELK::receiveAcknowledge(Line const& line, std::uint16_t number, char const* mismatch) {
    std::span<unsigned char const> frame;
    unsigned int portResult = 0;
    if (!readFrame(line, kAcknowledgeTimeout, frame, portResult)) {
        return false;
    }
    if (frame.size() < line.headerLength() + _VELK::kAcknowledgeLength) {
        return fail(kErrorReply, "Too short Ack message received");
    }
    if (line.routed && _VELK::routingStatus(frame) != 0) {
        return false; // a coupler gave up; deliberately without an error
    }
    return _VELK::isAcknowledge(frame.subspan(line.headerLength()), number, line.order) || fail(kErrorReply, mismatch);
}

bool Protocol_VELK::receiveResponse(Line& line, std::size_t& total) {
    for (unsigned number = _VELK::kFirstBlockNumber; number <= _VELK::kMaxBlockNumber; ++number) {
        auto const blockNumber = static_cast<std::uint16_t>(number);
        _VELK::ReceivedBlock block;
        if (!receiveBlock(line, blockNumber, block) || !keepPayload(block.payload, total)) {
            return false;
        }
        sendAcknowledge(line, blockNumber);
        if (block.last) {
            return true;
        }
    }
    return fail(kErrorReply, kWrongBlock); // there is no number for one more block
}

bool Protocol_VELK::receiveBlock(Line& line, std::uint16_t number, _VELK::ReceivedBlock& block) {
    std::span<unsigned char const> frame;
    if (!readFrame(line, "Timeout on data receiving", frame, line.lastDataRead)) {
        return false;
    }
    if (frame.size() < line.headerLength()) {
        return fail(kErrorReply, "Too short message received");
    }
    if (line.routed && _VELK::routingStatus(frame) != 0) {
        return false; // a coupler gave up; deliberately without an error
    }
    switch (_VELK::parseBlockFrame(frame.subspan(line.headerLength()), number, line.order, block)) {
    case BlockFault::None:
        return true;
    case BlockFault::TooShort:
        return fail(kErrorReply, "Too short message received");
    case BlockFault::WrongProtocolId:
        return fail(kErrorReply, kWrongProtocolId);
    case BlockFault::WrongChecksumOrNumber:
        break;
    }
    return fail(kErrorReply, kWrongBlock);
}

/** Appends a block's payload to the response. */
bool Protocol_VELK::keepPayload(std::span<unsigned char const> payload, std::size_t& total) {
    if (payload.size() > rxData_.size() - total) {
        return fail(kErrorRequest, _VELK::kRxExceeded);
    }
    std::copy(payload.begin(), payload.end(), rxData_.begin() + static_cast<std::ptrdiff_t>(total));
    total += payload.size();
    return true;
}
