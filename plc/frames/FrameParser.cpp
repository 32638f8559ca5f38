#include "plc/frames/FrameParser.h"

#include "plc/frames/PlcFrame.h"
#include "plc/frames/Text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace plc {

namespace {

ParsedFrame bad(int station, Cause cause, std::string text) {
    return {.result = BadBytes{.station = station, .cause = cause, .text = std::move(text)}};
}

ParsedFrame incomplete(int station) {
    return {.result = IncompleteFrame{.station = station}};
}

std::size_t headerSize(Framing framing) {
    return framing == Framing::kRouted ? kRoutingHeaderSize : 0;
}

bool allAre(ByteView bytes, std::uint8_t mark) {
    return std::all_of(bytes.begin(), bytes.end(), [mark](std::uint8_t byte) { return byte == mark; });
}

bool canBeMark(ByteView bytes) {
    ByteView const mark = bytes.first(std::min<std::size_t>(bytes.size(), 2));
    return allAre(mark, kBlockMark) || allAre(mark, kAckMark);
}

int stationOnTheWay(std::span<FrameKey const> keys, ByteView header) {
    auto const found =
        std::find_if(keys.begin(), keys.end(), [header](FrameKey const& key) { return sameWay(key.header, header); });
    return found == keys.end() ? kNoStation : static_cast<int>(found - keys.begin());
}

/// The error in a header with the station's route, or nothing.
std::optional<ParsedFrame> headerFault(int station, FrameKey const& key, ByteView header) {
    for (std::size_t i = 0; i < kRoutingHeaderSize; ++i) {
        if (header[i] == key.header[i]) {
            continue;
        }
        bool const inBlockSize = i == 1 || i == 2;
        return bad(station, inBlockSize ? Cause::kRoutingBlockSize : Cause::kRoutingHeader,
                   textOf("byte ", i, " of the routing header is ", header[i], " instead of ", key.header[i]));
    }
    return std::nullopt;
}

std::optional<ParsedFrame> blockHeaderFault(int station, FrameKey const& key, BlockHeader const& header) {
    std::size_t const room = key.blockSize - kBlockHeaderSize;
    if (header.length > room) {
        return bad(station, Cause::kBlockTooLong,
                   textOf("the length field says ", header.length, " bytes, a block carries at most ", room));
    }
    return std::nullopt;
}

/// The error in a whole block frame, or nothing.
std::optional<ParsedFrame> blockFault(int station, FrameKey const& key, BlockHeader const& header, ByteView frame) {
    std::uint8_t const sum = blockChecksum(frame);
    if (sum != header.checksum) {
        return bad(station, Cause::kChecksum,
                   textOf("block ", header.number, " has the checksum ", header.checksum, " instead of ", sum));
    }
    if (header.lastFlag > 1) {
        return bad(station, Cause::kLastFlag,
                   textOf("block ", header.number, " has the last-block flag ", header.lastFlag));
    }
    std::size_t const room = key.blockSize - kBlockHeaderSize;
    if (header.length == 0 || (header.lastFlag == 0 && header.length < room)) {
        return bad(station, Cause::kBlockNotFull,
                   textOf("block ", header.number, " carries ", header.length, " bytes",
                          header.lastFlag == 0 ? " although it is not the last" : ""));
    }
    return std::nullopt;
}

ParsedFrame parseBlock(int station, FrameKey const& key, ByteView frame, std::size_t before) {
    if (frame.size() < kBlockHeaderSize) {
        return incomplete(station);
    }
    BlockHeader const header = decodeBlockHeader(frame, key.order);
    if (auto fault = blockHeaderFault(station, key, header)) {
        return *fault;
    }
    std::size_t const size = kBlockHeaderSize + header.length;
    if (frame.size() < size) {
        return incomplete(station);
    }
    if (auto fault = blockFault(station, key, header, frame.first(size))) {
        return *fault;
    }
    return {.result = BlockReceived{.station = station,
                                    .number = header.number,
                                    .last = header.lastFlag != 0,
                                    .payload = frame.subspan(kBlockHeaderSize, header.length)},
            .size = before + size};
}

ParsedFrame parseAck(int station, FrameKey const& key, ByteView frame, std::size_t before) {
    if (frame.size() < kAckSize) {
        return incomplete(station);
    }
    AckFields const ack = decodeAck(frame, key.order);
    if (ack.code != kAcknowledgeCode) {
        return bad(station, Cause::kAckCode, textOf("an acknowledge has the code ", ack.code));
    }
    return {.result = AckReceived{.station = station, .number = ack.number}, .size = before + kAckSize};
}

ParsedFrame parseBehindHeader(int station, FrameKey const& key, ByteView frame, std::size_t before) {
    if (frame.size() < 2) {
        return incomplete(station);
    }
    return frame[0] == kBlockMark ? parseBlock(station, key, frame, before) : parseAck(station, key, frame, before);
}

/// Whether the bytes are a block frame whose checksum is right but whose length field has another length.
bool onlyLengthIsWrong(FrameKey const& key, ByteView frame) {
    return frame.size() >= kBlockHeaderSize && frame[0] == kBlockMark &&
           decodeBlockHeader(frame, key.order).length != frame.size() - kBlockHeaderSize &&
           blockChecksum(frame) == frame[kChecksumOffset];
}

bool couldBeLength(Cause cause) {
    return cause == Cause::kChecksum || cause == Cause::kBlockTooLong;
}

} // namespace

bool canBeginFrame(Framing framing, ByteView bytes) {
    if (framing == Framing::kBare) {
        return canBeMark(bytes);
    }
    return bytes.empty() || (bytes[0] == kRoutingMark &&
                             (bytes.size() <= kRoutingHeaderSize || canBeMark(bytes.subspan(kRoutingHeaderSize))));
}

ParsedFrame parseFrame(Framing framing, std::span<FrameKey const> keys, ByteView bytes) {
    if (!canBeginFrame(framing, bytes)) {
        return bad(kNoStation, Cause::kGarbage, textOf(bytes.size(), " bytes that are not a frame"));
    }
    if (framing == Framing::kBare) {
        return parseBehindHeader(0, keys[0], bytes, 0);
    }
    if (bytes.size() < kRoutingHeaderSize) {
        return incomplete(kNoStation);
    }
    ByteView const header = bytes.first(kRoutingHeaderSize);
    int const station = stationOnTheWay(keys, header);
    if (station == kNoStation) {
        return bad(kNoStation, Cause::kUnknownStation, "the routing header is not the route to any station");
    }
    FrameKey const& key = keys[static_cast<std::size_t>(station)];
    if (auto fault = headerFault(station, key, header)) {
        return *fault;
    }
    return parseBehindHeader(station, key, bytes.subspan(kRoutingHeaderSize), kRoutingHeaderSize);
}

BadBytes explainRest(Framing framing, std::span<FrameKey const> keys, ByteView bytes, ParsedFrame const& parsed) {
    auto const* const fault = std::get_if<BadBytes>(&parsed.result);
    auto const* const half = std::get_if<IncompleteFrame>(&parsed.result);
    int const station = fault != nullptr ? fault->station : half != nullptr ? half->station : kNoStation;
    ByteView const frame = bytes.subspan(std::min(bytes.size(), headerSize(framing)));
    if (station != kNoStation && (half != nullptr || couldBeLength(fault->cause)) &&
        onlyLengthIsWrong(keys[static_cast<std::size_t>(station)], frame)) {
        FrameKey const& key = keys[static_cast<std::size_t>(station)];
        return {.station = station,
                .cause = Cause::kLengthField,
                .text = textOf("the length field says ", decodeBlockHeader(frame, key.order).length, " bytes, ",
                               frame.size() - kBlockHeaderSize, " came")};
    }
    if (fault != nullptr) {
        return *fault;
    }
    if (half != nullptr) {
        return {.station = station,
                .cause = Cause::kTruncatedFrame,
                .text = textOf("a frame stops after ", bytes.size(), " bytes")};
    }
    std::size_t const surplus = bytes.size() - parsed.size;
    if (auto const* const block = std::get_if<BlockReceived>(&parsed.result)) {
        return {.station = block->station,
                .cause = Cause::kLengthField,
                .text = textOf("the length field says ", block->payload.size(), " bytes, ",
                               block->payload.size() + surplus, " came")};
    }
    return {.cause = Cause::kGarbage, .text = textOf(surplus, " bytes follow an acknowledge and begin no frame")};
}

} // namespace plc
