#include "plc/frames/PlcFrame.h"

namespace plc {

std::uint8_t blockChecksum(ByteView frame) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < frame.size(); ++i) {
        sum += i == kChecksumOffset ? 0U : frame[i];
    }
    return static_cast<std::uint8_t>(sum);
}

Bytes encodeBlock(BlockFields const& fields, ByteOrder order) {
    Bytes frame(fields.mark.begin(), fields.mark.end());
    frame.reserve(kBlockHeaderSize + fields.payload.size());
    appendOrdered(frame, order, fields.length);
    appendOrdered(frame, order, fields.number);
    frame.push_back(0);
    frame.push_back(fields.lastFlag);
    frame.insert(frame.end(), fields.payload.begin(), fields.payload.end());
    frame[kChecksumOffset] = blockChecksum(frame);
    return frame;
}

Bytes encodeAck(AckFields const& fields, ByteOrder order) {
    Bytes frame(fields.mark.begin(), fields.mark.end());
    appendOrdered(frame, order, fields.code);
    appendOrdered(frame, order, fields.number);
    return frame;
}

BlockHeader decodeBlockHeader(ByteView frame, ByteOrder order) {
    return {.length = loadOrdered<std::uint16_t>(frame, 2, order),
            .number = loadOrdered<std::uint16_t>(frame, 4, order),
            .checksum = frame[kChecksumOffset],
            .lastFlag = frame[7]};
}

AckFields decodeAck(ByteView frame, ByteOrder order) {
    return {.mark = {frame[0], frame[1]},
            .code = loadOrdered<std::uint16_t>(frame, 2, order),
            .number = loadOrdered<std::uint16_t>(frame, 4, order)};
}

} // namespace plc
