#include "plc/station/StationDescription.h"

#include "plc/frames/PlcFrame.h"
#include "plc/frames/Text.h"

namespace plc {

namespace {

void require(bool right, StationDescription const& station, std::string_view what) {
    if (!right) {
        throw DescriptionError(textOf("station ", station.name, ": ", what), 0);
    }
}

} // namespace

void checkStation(StationDescription const& station) {
    require(station.blockSize >= kSmallestBlockSize && station.blockSize <= kLargestBlockSize, station,
            "the block size must be 128 to 1460");
    require(station.route.levels >= 0 && station.route.levels <= 2, station, "the routing levels must be 0 to 2");
    for (RouteLevel const& level : station.route.level) {
        require(level.coupler >= 0, station, "a coupler must not be negative");
        require(level.channel >= 0 && level.channel <= 19, station, "a channel must be 0 to 19");
    }
    require(station.filePieceSize >= 1 && station.filePieceSize <= 0xFFFF, station,
            "the file piece size must be 1 to 65535");
    require(station.mismatchWord == 0x48 || station.mismatchWord == 0x33, station,
            "the mismatch word must be 0x48 or 0x33");
    require(station.exchangeTimeout > Micros::zero(), station, "the exchange time-out must be above 0");
    require(station.ackDelay >= Micros::zero() && station.answerDelay >= Micros::zero(), station,
            "a delay must not be negative");
}

FrameKey frameKey(StationDescription const& station) {
    return {.order = station.byteOrder,
            .blockSize = station.blockSize,
            .header = encodeRoutingHeader(station.route, station.blockSize)};
}

} // namespace plc
