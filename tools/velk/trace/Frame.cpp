#include "tools/velk/trace/Frame.h"

#include "plc/frames/PlcFrame.h"
#include "plc/frames/PlcRouting.h"

#include <fmt/format.h>

#include <algorithm>

namespace velk::trace {
namespace {

using plc::ByteOrder;
using plc::ByteView;

constexpr std::size_t kMarkSize = 2;
constexpr std::size_t kLengthOffset = 2;
constexpr std::size_t kNumberOffset = 4;
constexpr std::array<std::size_t, 2> kHopOffsets{4, 10};

bool hasMark(ByteView bytes, std::uint8_t mark) {
    return bytes.size() >= kMarkSize && bytes[0] == mark && bytes[1] == mark;
}

bool isRouted(ByteView bytes) {
    return !bytes.empty() && bytes[0] == plc::kRoutingMark;
}

Routing decodeRouting(ByteView header) {
    Routing routing;
    routing.blockSize = plc::loadOrdered<std::uint16_t>(header, 1, ByteOrder::kLittle);
    routing.levels = header[3] >> 4U;
    for (std::size_t level = 0; level < kHopOffsets.size(); ++level) {
        std::size_t const at = kHopOffsets[level];
        routing.hop[level] = header[at];
        ByteView const address = header.subspan(at + 1, routing.address[level].size());
        std::copy(address.begin(), address.end(), routing.address[level].begin());
    }
    routing.status = header[plc::kRoutingStatusOffset];
    return routing;
}

/** The order in which the numbers at an offset make @p wanted, when only one of the two does. */
std::optional<ByteOrder> orderThatGives(ByteView bytes, std::size_t offset, std::size_t wanted) {
    bool const little = plc::loadOrdered<std::uint16_t>(bytes, offset, ByteOrder::kLittle) == wanted;
    bool const big = plc::loadOrdered<std::uint16_t>(bytes, offset, ByteOrder::kBig) == wanted;
    if (little == big) {
        return std::nullopt;
    }
    return little ? ByteOrder::kLittle : ByteOrder::kBig;
}

/** Blocks are counted from 1: of two readings the smaller one is the likelier. */
ByteOrder orderOfSmallNumber(ByteView block) {
    auto const little = plc::loadOrdered<std::uint16_t>(block, kNumberOffset, ByteOrder::kLittle);
    auto const big = plc::loadOrdered<std::uint16_t>(block, kNumberOffset, ByteOrder::kBig);
    return big < little ? ByteOrder::kBig : ByteOrder::kLittle;
}

void setOrder(Frame& frame, std::optional<ByteOrder> told, ByteOrder otherwise) {
    frame.order = told.value_or(otherwise);
    frame.orderIsCertain = told.has_value();
}

void decodeBlock(Frame& frame, ByteView bytes, std::optional<ByteOrder> usual) {
    if (bytes.size() < plc::kBlockHeaderSize) {
        frame.faults.push_back(fmt::format("the header of a block stops after {} bytes", bytes.size()));
        return;
    }
    frame.kind = FrameKind::Block;
    frame.payload = bytes.subspan(plc::kBlockHeaderSize);
    setOrder(frame, orderThatGives(bytes, kLengthOffset, frame.payload.size()),
             usual.value_or(orderOfSmallNumber(bytes)));
    plc::BlockHeader const header = plc::decodeBlockHeader(bytes, frame.order);
    frame.length = header.length;
    frame.number = header.number;
    frame.last = header.lastFlag != 0;
    frame.checksum = header.checksum;
    frame.rightChecksum = plc::blockChecksum(bytes);
    if (frame.checksum != frame.rightChecksum) {
        frame.faults.push_back(
            fmt::format("wrong checksum: {:02X} instead of {:02X}", frame.checksum, frame.rightChecksum));
    }
    if (frame.length != frame.payload.size()) {
        frame.faults.push_back(
            fmt::format("the length field says {} bytes, {} received", frame.length, frame.payload.size()));
    }
}

void decodeAcknowledge(Frame& frame, ByteView bytes, Way way, std::optional<ByteOrder> usual) {
    if (bytes.size() < plc::kAckSize) {
        frame.faults.push_back(fmt::format("an acknowledge stops after {} bytes", bytes.size()));
        return;
    }
    setOrder(frame, orderThatGives(bytes, kLengthOffset, plc::kAcknowledgeCode), usual.value_or(ByteOrder::kLittle));
    plc::AckFields const fields = plc::decodeAck(bytes, frame.order);
    frame.code = fields.code;
    frame.number = fields.number;
    FrameKind const atZero = way == Way::ToPlc ? FrameKind::Turnaround : FrameKind::Closing;
    frame.kind = frame.number == 0 ? atZero : FrameKind::Acknowledge;
    if (frame.code != plc::kAcknowledgeCode) {
        frame.faults.push_back(fmt::format("the acknowledge code is {} instead of 10", frame.code));
    }
    if (bytes.size() > plc::kAckSize) {
        frame.faults.push_back(fmt::format("{} more bytes follow without a pause", bytes.size() - plc::kAckSize));
    }
}

/** Removes a routing header from the bytes. False when nothing is left to decode. */
bool takeRouting(Frame& frame, ByteView& bytes, Way way) {
    if (bytes.size() < plc::kRoutingHeaderSize) {
        frame.faults.push_back(fmt::format("a routing header stops after {} bytes", bytes.size()));
        return false;
    }
    frame.routing = decodeRouting(bytes.first(plc::kRoutingHeaderSize));
    bytes = bytes.subspan(plc::kRoutingHeaderSize);
    if (way == Way::FromPlc && frame.routing->status != 0) {
        frame.faults.push_back(fmt::format("routing status {}{}", frame.routing->status,
                                           frame.routing->levels > 0 ? ": a coupler could not pass the frame on"
                                                                     : ", and no coupler is on the way"));
    }
    if (bytes.empty()) {
        frame.faults.emplace_back("nothing follows the routing header");
    }
    return !bytes.empty();
}

} // namespace

std::string_view orderText(ByteOrder order) {
    return order == ByteOrder::kLittle ? "little-endian" : "big-endian";
}

Frame decodeFrame(ByteView bytes, Way way, std::optional<ByteOrder> usual) {
    Frame frame;
    if (isRouted(bytes) && !takeRouting(frame, bytes, way)) {
        return frame;
    }
    if (hasMark(bytes, plc::kBlockMark)) {
        decodeBlock(frame, bytes, usual);
    } else if (hasMark(bytes, plc::kAckMark)) {
        decodeAcknowledge(frame, bytes, way, usual);
    } else {
        frame.faults.push_back(fmt::format("{} bytes that are not a frame", bytes.size()));
    }
    return frame;
}

} // namespace velk::trace
