#pragma once

#include "plc/frames/Bytes.h"
#include "plc/frames/EventReporter.h"
#include "plc/frames/FrameReader.h"
#include "plc/frames/OutputQueue.h"
#include "plc/line/LineSpeed.h"
#include "plc/station/Station.h"
#include "plc/station/StationDescription.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace plc {

/// A serial line with the stations on it.
struct LineDescription {
    Framing framing = Framing::kBare;
    std::vector<StationDescription> stations{}; ///< exactly one with bare framing, at least one with routed framing
    Micros frameSilence{std::chrono::milliseconds(20)}; ///< a pause this long ends a frame
    std::uint32_t bytesPerSecond = 0; ///< the pace of the bytes to the panel; 0 sends a frame in no time
    bool portPaces = false;           ///< the port has that pace itself, so it gets whole frames
    LineSpeed speed{};                ///< for the opener of the port; in a description file it sets the pace, too
};

/// Throws DescriptionError when the line is not valid. The programs are not checked.
void checkLine(LineDescription const& description);

/**
 * The stations' end of a serial line, driven by bytes and by the caller's time.
 *
 * Time never runs by itself: every call gives the time (one before an earlier time counts as that earlier time). Bytes
 * may arrive split or merged in any way. A panel's side in memory is written like this:
 *
 *     line.receive(request, now);                       // write
 *     for (;;) {                                        // read, waiting until `limit`
 *         plc::Bytes const got = line.takeOutput(now);
 *         if (!got.empty()) { ... }
 *         auto const next = line.nextDeadline();
 *         if (!next || *next > limit) { now = limit; break; }
 *         now = *next;
 *     }
 *
 * After takeOutput(now), nextDeadline() is always later than `now`. Not thread-safe.
 */
class Line final : private FrameHandler {
public:
    /// Throws DescriptionError. The observer may be null and must outlive the line.
    explicit Line(LineDescription const& description, LineObserver* observer = nullptr);
    Line(Line const&) = delete;
    Line& operator=(Line const&) = delete;
    ~Line() override;

    /// Bytes from the panel, all arriving at `now`.
    void receive(ByteView bytes, Micros now);

    /// Does everything that depends on time alone: ends of frames by silence, time-outs, ticks.
    void advance(Micros now);

    /// Calls advance(), then takes the bytes that are due for the panel, in order.
    [[nodiscard]] Bytes takeOutput(Micros now);

    /// When there is something to do next: a byte is due, a silence or a time-out ends, a tick is due. Nothing means
    /// never, unless the panel sends.
    [[nodiscard]] std::optional<Micros> nextDeadline() const;

    [[nodiscard]] std::size_t stationCount() const { return stations_.size(); }
    /// Stations by position in the description or by name; std::out_of_range when there is none.
    [[nodiscard]] Station& station(std::size_t index = 0);
    [[nodiscard]] Station& station(std::string_view name);

    /// The events so far, on the whole line or at one station.
    [[nodiscard]] EventCounters const& counters() const { return reporter_.all(); }
    [[nodiscard]] EventCounters const& counters(std::size_t station) const { return reporter_.of(station); }

private:
    void onBlock(BlockReceived const& block, Micros now) override;
    void onAck(AckReceived const& ack, Micros now) override;
    void onBadBytes(BadBytes const& bad, Micros now) override;

    [[nodiscard]] std::optional<Micros> nextTimer() const;
    void advanceTo(Micros now);

    EventReporter reporter_;
    OutputQueue output_;
    std::vector<std::unique_ptr<Station>> stations_;
    FrameReader reader_;
    Micros now_{Micros::min()};
};

} // namespace plc
