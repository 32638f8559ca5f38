#pragma once

#include "plc/frames/LineObserver.h"

#include <string>
#include <utility>
#include <vector>

namespace plc {

/// Counts events and passes them to the observer, stamped with the line's time.
class EventReporter {
public:
    EventReporter(LineObserver* observer, std::size_t stations) : observer_(observer), stations_(stations) {}

    void setTime(Micros now) { now_ = now; }
    [[nodiscard]] Micros time() const { return now_; }
    void report(int station, Cause cause, std::string text);
    void bytes(Direction direction, ByteView bytes) const;

    [[nodiscard]] EventCounters const& all() const { return all_; }
    [[nodiscard]] EventCounters const& of(std::size_t station) const { return stations_.at(station); }

private:
    LineObserver* observer_;
    std::vector<EventCounters> stations_;
    EventCounters all_;
    Micros now_{};
};

/// The reporter for one station.
class StationReporter {
public:
    StationReporter(EventReporter& reporter, int station) : reporter_(&reporter), station_(station) {}

    void report(Cause cause, std::string text) const { reporter_->report(station_, cause, std::move(text)); }
    /// The line's time.
    [[nodiscard]] Micros time() const { return reporter_->time(); }

private:
    EventReporter* reporter_;
    int station_;
};

} // namespace plc
