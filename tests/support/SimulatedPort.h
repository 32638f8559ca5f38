#pragma once

#include "interfaces/HostServices.h"
#include "plc/line/Line.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>

namespace velktest {

/**
 * The panel's end of a simulated line: a serial port whose time is virtual.
 *
 * Writing takes no time. Reading advances the line until a frame has arrived or the time-out is over; nothing sleeps
 * and nothing reads a clock.
 */
class SimulatedPort : public ISerialPort {
public:
    explicit SimulatedPort(plc::Line& line) : line_(&line) {}

    plc::Micros now{0};
    bool pulledOut = false; ///< every read is a fault from now on
    long long reads = 0;
    long long writes = 0;
    long long purged = 0; ///< bytes dropped by Purge()

    /** Lets time pass while the panel does something else. */
    void Wait(plc::Micros time) {
        now += time;
        Take();
    }

    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "SimulatedPort"; }
    int GetImpVersion() const override { return 1; }
    int Open(int /*baud*/, int /*parity*/, int /*dataBits*/, int /*stopBits*/, int /*rs485*/) override { return 1; }
    void Close() override {}

    int Purge(unsigned char* /*buffer*/, int /*reserved1*/, int /*reserved2*/) override {
        Take();
        bool const removed = !waiting_.empty();
        purged += static_cast<long long>(waiting_.size());
        waiting_.clear();
        return removed ? 1 : 0;
    }

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        ++writes;
        line_->receive(plc::ByteView(bytes, static_cast<std::size_t>(length)), now);
        return length;
    }

    int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
             int /*reserved*/) override {
        ++reads;
        *count = 0;
        if (pulledOut) {
            return 0;
        }
        plc::Micros const silence = std::chrono::milliseconds(interCharTimeoutMs);
        plc::Micros limit = now + std::chrono::milliseconds(firstByteTimeoutMs);
        for (;;) {
            Take();
            int const taken = static_cast<int>(std::min(waiting_.size(), static_cast<std::size_t>(maximum - *count)));
            if (taken > 0) {
                std::copy(waiting_.begin(), waiting_.begin() + taken, buffer + *count);
                waiting_.erase(waiting_.begin(), waiting_.begin() + taken);
                *count += taken;
                limit = now + silence;
            }
            if (*count == maximum) {
                return 1;
            }
            std::optional<plc::Micros> const next = line_->nextDeadline();
            if (!next || *next >= limit) {
                now = limit;
                return 1;
            }
            now = *next;
        }
    }

private:
    void Take() {
        plc::Bytes const got = line_->takeOutput(now);
        waiting_.insert(waiting_.end(), got.begin(), got.end());
    }

    plc::Line* line_;
    plc::Bytes waiting_; ///< arrived, but not read yet
};

} // namespace velktest
