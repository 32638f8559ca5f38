#include "host/serial/ObservedPort.h"

#include "host/serial/PortReport.h"
#include "host/serial/TrafficMeter.h"
#include "tests/host/MemoryPort.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>

namespace hosttest {
namespace {

using Bytes = std::vector<unsigned char>;

/** Records what it observes, one line per event. */
class Diary final : public host::PortObserver {
public:
    void onFrame(host::PortFrame const& frame) override {
        std::string line = frame.direction == host::FrameDirection::Sent ? "sent" : "received";
        for (unsigned char const byte : frame.bytes) {
            line += " " + std::to_string(byte);
        }
        lines.push_back(line + " @" + std::to_string(frame.firstByteAt) + ".." + std::to_string(frame.lastByteAt));
    }
    void onTimeout(std::int64_t at) override { lines.push_back("timeout @" + std::to_string(at)); }
    void onDropped(std::span<unsigned char const> bytes, std::int64_t at) override {
        lines.push_back("dropped " + std::to_string(bytes.size()) + " @" + std::to_string(at));
    }
    void onUnsent(std::span<unsigned char const> bytes) override {
        lines.push_back("unsent " + std::to_string(bytes.size()));
    }
    void onFault(std::string_view reason, std::int64_t at) override {
        lines.push_back("fault '" + std::string(reason) + "' @" + std::to_string(at));
    }

    std::vector<std::string> lines;
};

class ObservedPort : public testing::Test {
protected:
    ObservedPort() { clock.now = 0; }

    int read(int maximum = 8) { return port.Read(buffer.data(), maximum, 100, 20, &count, 0); }

    FakeClock clock;
    MemoryPort memory{clock};
    Diary diary;
    host::ObservedPort port{memory, diary, clock};
    std::array<unsigned char, 1460> buffer{};
    int count = -1;
};

TEST_F(ObservedPort, ShowsFramesInBothDirectionsWithTheirTimes) {
    memory.frames = {Bytes{7, 8}};
    Bytes const frame{1, 2, 3};
    EXPECT_EQ(port.Write(frame.data(), 3, 0), 3);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(buffer[1], 8);
    EXPECT_EQ(memory.written, (std::vector<Bytes>{{1, 2, 3}}));
    EXPECT_EQ(diary.lines, (std::vector<std::string>{"sent 1 2 3 @0..1000", "received 7 8 @1000..6000"}));
}

TEST_F(ObservedPort, TakesTheTimesOfReceivedBytesFromThePortsReport) {
    host::PortReport const report{{}, {}, 2500, 2700};
    host::ObservedPort exact(memory, diary, clock, &report);
    memory.frames = {Bytes{7}};
    exact.Read(buffer.data(), 8, 100, 20, &count, 0);
    EXPECT_EQ(diary.lines, (std::vector<std::string>{"received 7 @2500..2700"}));
}

TEST_F(ObservedPort, ShowsTimeOutsFaultsAndDroppedBytes) {
    host::PortReport const report{{}, base::Failure{base::FailureKind::PortDied, "adapter gone"}, 0, 0};
    host::ObservedPort reported(memory, diary, clock, &report);
    memory.frames = {};
    memory.stray = Bytes(5, 0xFF);
    EXPECT_EQ(reported.Purge(buffer.data(), 0, 0), 5);
    EXPECT_EQ(reported.Purge(buffer.data(), 0, 0), 0);
    EXPECT_EQ(reported.Read(buffer.data(), 8, 100, 20, &count, 0), 1);
    memory.frames = {std::nullopt};
    EXPECT_EQ(reported.Read(buffer.data(), 8, 100, 20, &count, 0), 0);
    EXPECT_EQ(diary.lines,
              (std::vector<std::string>{"dropped 5 @0", "timeout @105000", "fault 'adapter gone' @110000"}));
}

TEST_F(ObservedPort, AFailedWriteIsAFaultAndNoFrame) {
    memory.writeWorks = false;
    Bytes const frame{1};
    EXPECT_EQ(port.Write(frame.data(), 1, 0), 0);
    EXPECT_EQ(diary.lines, (std::vector<std::string>{"unsent 1", "fault '' @1000"}));
}

TEST_F(ObservedPort, PassesOpeningAndClosingOn) {
    memory.openResult = 77;
    EXPECT_EQ(port.Open(19200, 1, 8, 2, 1), 77);
    EXPECT_EQ(memory.opened, (std::vector<int>{19200, 1, 8, 2, 1}));
    port.Close();
    EXPECT_EQ(memory.closed, 1);
    EXPECT_EQ(port.ConvertTo("ISerialPort"), &port);
    EXPECT_EQ(port.ConvertTo("MemoryPort"), nullptr);
}

TEST_F(ObservedPort, WhatAnObserverThrowsGoesNoFurther) {
    class Clumsy final : public host::PortObserver {
    public:
        void onFrame(host::PortFrame const& /*frame*/) override { throw std::runtime_error("disk full"); }
    } clumsy;
    host::ObservedPort watched(memory, clumsy, clock);
    memory.frames = {Bytes{1}};
    EXPECT_EQ(watched.Read(buffer.data(), 8, 100, 20, &count, 0), 1);
    EXPECT_EQ(count, 1);
}

TEST_F(ObservedPort, ACountOutsideTheBufferIsNotFollowed) {
    class Liar final : public ISerialPort {
    public:
        IInterface* ConvertTo(char const*) override { return nullptr; }
        char const* GetImpName() const override { return "Liar"; }
        int GetImpVersion() const override { return 1; }
        int Open(int, int, int, int, int) override { return 1; }
        void Close() override {}
        int Purge(unsigned char*, int, int) override { return 1'000'000; }
        int Write(unsigned char const*, int, int) override { return 1; }
        int Read(unsigned char*, int, int, int, int* count, int) override {
            *count = 1'000'000;
            return 1;
        }
    } liar;
    host::ObservedPort watched(liar, diary, clock);
    watched.Purge(buffer.data(), 0, 0);
    watched.Read(buffer.data(), 2, 100, 20, &count, 0);
    EXPECT_EQ(diary.lines, (std::vector<std::string>{"dropped 1460 @0", "received 0 0 @0..0"}));
}

TEST(TrafficMeter, CountsBytesFramesAndExchanges) {
    host::TrafficMeter meter;
    Bytes const bytes{1, 2, 3};
    auto const sent = [&] { meter.onFrame({host::FrameDirection::Sent, bytes, 0, 0}); };
    auto const received = [&] { meter.onFrame({host::FrameDirection::Received, bytes, 0, 0}); };
    sent();
    received();
    received(); // a second frame without a request
    sent();
    meter.onTimeout(0);
    received(); // too late for the request that timed out
    meter.onDropped(bytes, 0);
    meter.onFault("", 0);
    auto const& traffic = meter.traffic();
    EXPECT_EQ(traffic.bytesSent, 6U);
    EXPECT_EQ(traffic.bytesReceived, 9U);
    EXPECT_EQ(traffic.framesSent, 2U);
    EXPECT_EQ(traffic.framesReceived, 3U);
    EXPECT_EQ(traffic.exchanges, 1U);
    EXPECT_EQ(traffic.timeouts, 1U);
    EXPECT_EQ(traffic.bytesDropped, 3U);
    EXPECT_EQ(traffic.faults, 1U);
}

} // namespace
} // namespace hosttest
