#pragma once

#include "host/serial/ByteLine.h"
#include "tests/host/FakeClock.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace hosttest {

using Bytes = std::vector<unsigned char>;

/** A byte line in virtual time: its events are scripted beforehand. */
class FakeLine final : public host::ByteLine {
public:
    enum class Event {
        Arrival,
        Interrupt, ///< a signal ends the wait
        WakeUp,    ///< ready without a byte
        HangUp,
    };

    explicit FakeLine(FakeClock& clock) : clock_(clock), start_(clock.now) {}

    /** Bytes that arrive @p milliseconds after the line was created. */
    void arrive(std::int64_t milliseconds, Bytes bytes) { add(milliseconds, Event::Arrival, std::move(bytes)); }
    void happen(std::int64_t milliseconds, Event event) { add(milliseconds, event, {}); }

    host::Wait waitForInput(std::int64_t microseconds) override {
        ++waits;
        longestWait = std::max(longestWait, microseconds);
        if (!arrived_.empty()) {
            return host::Wait::Ready;
        }
        std::int64_t const deadline = clock_.now + microseconds;
        if (script_.empty() || script_.front().at > deadline) {
            clock_.now = deadline;
            return host::Wait::TimedOut;
        }
        return next();
    }

    host::Transfer receive(std::span<unsigned char> room) override {
        std::size_t const count = std::min(room.size(), arrived_.size());
        std::copy_n(arrived_.begin(), count, room.begin());
        arrived_.erase(arrived_.begin(), arrived_.begin() + static_cast<std::ptrdiff_t>(count));
        return {count, false};
    }

    host::Wait waitForRoom(std::int64_t microseconds) override {
        ++waits;
        if (diesWaitingForRoom) {
            return host::Wait::Fault;
        }
        if (roomAfter > microseconds) {
            clock_.now += microseconds;
            return host::Wait::TimedOut;
        }
        clock_.now += roomAfter;
        room_ = roomAtOnce;
        return host::Wait::Ready;
    }

    host::Transfer send(std::span<unsigned char const> bytes) override {
        if (diesSending) {
            return {0, true};
        }
        std::size_t const count = std::min(bytes.size(), room_);
        room_ -= count;
        sent.insert(sent.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
        unsent_ += count;
        return {count, false};
    }

    std::size_t unsent() override { return unsent_; }

    bool pause(std::int64_t microseconds) override {
        ++pauses;
        if (diesPausing) {
            return false;
        }
        clock_.now += microseconds;
        std::int64_t const left = microseconds * bytesPerMillisecond / 1000;
        unsent_ -= std::min(unsent_, static_cast<std::size_t>(left));
        return true;
    }

    bool drain() override {
        drained = true;
        return !diesDraining;
    }

    void dropUnsent() override {
        dropped += unsent_;
        unsent_ = 0;
    }

    std::string faultText() const override { return "cable cut"; }

    void limitRoom(std::size_t room) { room_ = room; }

    Bytes sent;
    int waits = 0;
    int pauses = 0;
    std::int64_t longestWait = 0;
    std::size_t roomAtOnce = 64;          ///< room after a wait for it
    std::int64_t roomAfter = 1000;        ///< microseconds until there is room
    std::int64_t bytesPerMillisecond = 1; ///< how fast bytes are sent
    std::size_t dropped = 0;
    bool drained = false;
    bool diesSending = false;
    bool diesWaitingForRoom = false;
    bool diesPausing = false;
    bool diesDraining = false;

private:
    struct Step {
        std::int64_t at;
        Event event;
        Bytes bytes;
    };

    void add(std::int64_t milliseconds, Event event, Bytes bytes) {
        script_.push_back({start_ + milliseconds * 1000, event, std::move(bytes)});
    }

    host::Wait next() {
        Step const step = script_.front();
        script_.pop_front();
        clock_.now = std::max(clock_.now, step.at);
        switch (step.event) {
        case Event::Interrupt:
            return host::Wait::Interrupted;
        case Event::HangUp:
            return host::Wait::Fault;
        case Event::Arrival:
        case Event::WakeUp:
            break;
        }
        arrived_.insert(arrived_.end(), step.bytes.begin(), step.bytes.end());
        return host::Wait::Ready;
    }

    FakeClock& clock_;
    std::int64_t start_;
    std::deque<Step> script_;
    std::deque<unsigned char> arrived_;
    std::size_t room_ = 1'000'000;
    std::size_t unsent_ = 0;
};

} // namespace hosttest
