#include "plc/line/Line.h"

#include "plc/frames/Text.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace plc {

namespace {

std::vector<FrameKey> frameKeys(LineDescription const& description) {
    std::vector<FrameKey> keys;
    for (StationDescription const& station : description.stations) {
        keys.push_back(frameKey(station));
    }
    return keys;
}

void checkPair(Framing framing, StationDescription const& left, StationDescription const& right) {
    if (left.name == right.name) {
        throw DescriptionError(textOf("two stations are named ", left.name), 0);
    }
    if (framing == Framing::kRouted && sameWay(frameKey(left).header, frameKey(right).header)) {
        throw DescriptionError(textOf("stations ", left.name, " and ", right.name, " have the same route"), 0);
    }
}

/// The description itself, after it was checked.
LineDescription const& checked(LineDescription const& description) {
    checkLine(description);
    return description;
}

std::optional<Micros> earlier(std::optional<Micros> left, std::optional<Micros> right) {
    return left && right ? std::min(left, right) : left ? left : right;
}

} // namespace

void checkLine(LineDescription const& description) {
    auto const& stations = description.stations;
    if (stations.empty() || (description.framing == Framing::kBare && stations.size() > 1)) {
        throw DescriptionError("a line has one station, and only with the routed framing more", 0);
    }
    if (description.frameSilence <= Micros::zero()) {
        throw DescriptionError("the silence that ends a frame must be above 0", 0);
    }
    for (auto station = stations.begin(); station != stations.end(); ++station) {
        checkStation(*station);
        for (auto other = stations.begin(); other != station; ++other) {
            checkPair(description.framing, *other, *station);
        }
    }
}

Line::Line(LineDescription const& description, LineObserver* observer)
    : reporter_(observer, checked(description).stations.size()),
      output_(description.bytesPerSecond, description.portPaces),
      reader_(description.framing, frameKeys(description), description.frameSilence, *this) {
    for (StationDescription const& station : description.stations) {
        StationReporter const reporter(reporter_, static_cast<int>(stations_.size()));
        stations_.push_back(std::make_unique<Station>(station, description.framing, output_, reporter));
    }
}

Line::~Line() = default;

void Line::receive(ByteView bytes, Micros now) {
    advance(now);
    if (!bytes.empty() && output_.isSending(now_)) {
        reporter_.report(kNoStation, Cause::kSpokeTooEarly, "the panel sent before it had received the answer");
    }
    reporter_.bytes(Direction::kFromPanel, bytes);
    reader_.receive(bytes, now_);
}

void Line::advance(Micros now) {
    Micros const end = std::max(now_, now);
    for (auto timer = nextTimer(); timer && *timer <= end; timer = nextTimer()) {
        advanceTo(std::max(now_, *timer));
    }
    advanceTo(end);
}

Bytes Line::takeOutput(Micros now) {
    advance(now);
    Bytes bytes = output_.take(now_);
    reporter_.bytes(Direction::kToPanel, bytes);
    return bytes;
}

std::optional<Micros> Line::nextDeadline() const {
    return earlier(nextTimer(), output_.nextDue());
}

Station& Line::station(std::size_t index) {
    return *stations_.at(index);
}

Station& Line::station(std::string_view name) {
    auto const found = std::find_if(stations_.begin(), stations_.end(),
                                    [name](auto const& station) { return station->name() == name; });
    if (found == stations_.end()) {
        throw std::out_of_range(textOf("there is no station ", name));
    }
    return **found;
}

void Line::onBlock(BlockReceived const& block, Micros now) {
    stations_[static_cast<std::size_t>(block.station)]->onBlock(block, now);
}

void Line::onAck(AckReceived const& ack, Micros now) {
    stations_[static_cast<std::size_t>(ack.station)]->onAck(ack, now);
}

void Line::onBadBytes(BadBytes const& bad, Micros /*now*/) {
    reporter_.report(bad.station, bad.cause, bad.text);
}

std::optional<Micros> Line::nextTimer() const {
    std::optional<Micros> next = reader_.deadline();
    for (auto const& station : stations_) {
        next = earlier(next, station->deadline());
    }
    return next;
}

void Line::advanceTo(Micros now) {
    now_ = now;
    reporter_.setTime(now);
    reader_.advance(now);
    for (auto const& station : stations_) {
        station->advance(now);
    }
}

} // namespace plc
