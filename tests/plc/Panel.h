#pragma once

#include "plc/line/Line.h"
#include "tests/support/Bytes.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

/** The panel's end of a simulated line, and an observer of the line. */
namespace plctest {

using namespace std::chrono_literals;
using velktest::Hex;
using velktest::operator+;

/** The bytes as "55 55 0A", so that a comparison shows them. */
inline std::string Show(plc::ByteView bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (std::uint8_t const byte : bytes) {
        text += text.empty() ? "" : " ";
        text += kDigits[byte / 16];
        text += kDigits[byte % 16];
    }
    return text;
}

inline plc::Bytes Zeros(std::size_t count) {
    return plc::Bytes(count);
}

/** Keeps every event. */
class Recorder final : public plc::LineObserver {
public:
    void onEvent(plc::LineEvent const& event) override { events.push_back(event); }
    void onBytes(plc::Direction direction, plc::ByteView bytes, plc::Micros /*time*/) override {
        traffic += direction == plc::Direction::kFromPanel ? "> " : "< ";
        traffic += Show(bytes) + "\n";
    }

    /** The last event, "" when there was none. */
    [[nodiscard]] std::string lastText() const { return events.empty() ? "" : events.back().text; }
    [[nodiscard]] std::vector<plc::Cause> causes() const {
        std::vector<plc::Cause> all;
        for (plc::LineEvent const& event : events) {
            all.push_back(event.cause);
        }
        return all;
    }

    std::vector<plc::LineEvent> events;
    std::string traffic;
};

/** Sends literal bytes and receives what comes at once, in virtual time. */
class Panel {
public:
    explicit Panel(plc::Line& line) : line_(line) {}

    std::string say(plc::Bytes const& bytes) {
        line_.receive(bytes, now);
        return hear();
    }
    std::string say(std::string_view hex) { return say(Hex(hex)); }
    std::string hear() { return Show(line_.takeOutput(now)); }
    std::string hearAfter(plc::Micros pause) {
        now += pause;
        return hear();
    }

    plc::Micros now{0};

private:
    plc::Line& line_;
};

/** A station with a counter at the start of area M; project identifier 1. */
inline plc::StationDescription OneStation(plc::ByteOrder order = plc::ByteOrder::kLittle) {
    plc::StationDescription station;
    station.byteOrder = order;
    station.program.variables = {{.name = "PLC_PRG.Counter", .type = "INT"}};
    return station;
}

inline plc::LineDescription BareLine(plc::StationDescription station = OneStation()) {
    plc::LineDescription line;
    line.stations = {std::move(station)};
    return line;
}

inline plc::LineDescription BareLine(plc::StationDescription station, plc::FaultRule fault) {
    station.faults.push_back(std::move(fault));
    return BareLine(std::move(station));
}

// Frames of bare framing with little-endian numbers.
inline constexpr std::string_view kLinkCheck = "AA AA 09 00 01 00 52 01 | 42 E0 20 26 29 00 00 5D 05";
inline constexpr std::string_view kLogin = "AA AA 0E 00 01 00 6D 01 | 01 02 00 00 00 06 00 00 00 00 00 00 00 00";
inline constexpr std::string_view kLogout = "AA AA 01 00 01 00 59 01 | 02";
inline constexpr std::string_view kAck0 = "55 55 0A 00 00 00";
inline constexpr std::string_view kAck1 = "55 55 0A 00 01 00";
inline constexpr std::string_view kAck2 = "55 55 0A 00 02 00";
inline constexpr std::string_view kStatusDone = "AA AA 02 00 01 00 58 01 00 00";
inline constexpr std::string_view kLoginAccepted = "AA AA 02 00 01 00 43 01 E8 03";

/** A list without items with project identifier 1, and its reply. */
inline constexpr std::string_view kEmptyRead = "AA AA 0A 00 01 00 8F 01 | 2E 00 00 00 00 00 01 00 00 00";
inline constexpr std::string_view kEmptyReadReply = "AA AA 06 00 01 00 5C 01 00 00 00 00 00 00";

/** Exchanges one request block for one response block; returns the response block. */
inline std::string Exchange(Panel& panel, std::string_view request) {
    if (panel.say(request) != kAck1) {
        return "no acknowledge";
    }
    std::string const reply = panel.say(kAck0);
    return panel.say(kAck1) == kAck0 ? reply : reply + ", no closing acknowledge";
}

} // namespace plctest
